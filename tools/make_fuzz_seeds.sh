#!/usr/bin/env bash
# Writes the fuzz targets' seed corpora again from the program's writers and the fixtures,
# into tests/fuzz/corpus/<target>/ (files of the same name are replaced, others kept).
#   tools/make_fuzz_seeds.sh [BUILD_DIR]     default build/release
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
cmake --build "$build" --target fuzz_make_seeds
"$build/tests/fuzz/fuzz_make_seeds" "$root/tests/fuzz/corpus"
