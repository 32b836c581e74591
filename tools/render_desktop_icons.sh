#!/bin/sh
# Renders the PNG sizes of the desktop icons from their SVGs. The PNGs are committed; run this
# after changing an SVG (needs rsvg-convert from librsvg2-bin).
set -eu
dir=$(cd "$(dirname "$0")/../assets/desktop/icons" && pwd)
for svg in "$dir"/*.svg; do
    name=$(basename "$svg" .svg)
    for size in 48 128 256; do
        mkdir -p "$dir/${size}x${size}"
        rsvg-convert --width "$size" --height "$size" --format png \
            --output "$dir/${size}x${size}/$name.png" "$svg"
    done
done
