#!/usr/bin/env bash
# Renders the single-note WAV samples that playback pitch-shifts from.
#
# Source instrument: the FluidR3 General MIDI sound font (MIT licence), as
# shipped by Debian. Guitar samples use GM program 25 (Acoustic Guitar,
# steel), bass samples GM program 33 (Electric Bass, finger), both 0-based.
#
# Needs the Debian packages: fluidsynth fluid-soundfont-gm sox python3
#   apt-get install fluidsynth fluid-soundfont-gm sox
#
# Usage: tools/render_samples.sh [output-dir]     (default: assets/samples)
#
# Output is byte-for-byte reproducible with the same fluidsynth, sox and
# sound font: reverb, chorus and dither are off, and the render is offline.
# After changing anything here, run tools/check_sample_pitch.py.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
repo="$(cd "$here/.." && pwd)"
out_dir="${1:-$repo/assets/samples}"
sf2="${SF2:-/usr/share/sounds/sf2/FluidR3_GM.sf2}"

die() { echo "render_samples: $*" >&2; exit 1; }

missing=()
command -v fluidsynth >/dev/null || missing+=(fluidsynth)
command -v sox >/dev/null || missing+=(sox)
command -v python3 >/dev/null || missing+=(python3)
[[ -r "$sf2" ]] || missing+=(fluid-soundfont-gm)
if ((${#missing[@]})); then
    die "missing: ${missing[*]} -- install with: apt-get install ${missing[*]}"
fi

readonly RATE=44100
readonly GUITAR_PROGRAM=25
readonly BASS_PROGRAM=33
# Key held for this long; the sample is then cut to the ring it needs.
readonly GUITAR_HOLD=1.5 GUITAR_LENGTH=2.0
readonly BASS_HOLD=1.8 BASS_LENGTH=2.0
# The fade-in only smooths the cut at the onset; it is far shorter than the pluck.
readonly FADE_IN=0.003 FADE=0.05
readonly PEAK_DB=-3

# name  MIDI note  (string + fret on E2 A2 D3 G3 B3 E4 / bass E1 A1 D2 G2)
guitar_notes=(
    "E 40"          "Ep6 46"        "Ep12 52"
    "A 45"          "Ap6 51"        "Ap12 57"
    "D 50"          "Dp6 56"        "Dp12 62"
    "G 55"          "Gp6 61"        "Gp12 67"
    "B 59"          "Bp6 65"        "Bp12 71"
    "Elittle 64"    "Elittlep6 70"  "Elittlep12 76"
)
bass_notes=(
    "bassE 28"      "bassEp3 31"    "bassEp6 34"    "bassEp9 37"
    "bassA 33"      "bassAp3 36"    "bassAp6 39"    "bassAp9 42"   "bassAp15 48"
    "bassD 38"      "bassDp3 41"    "bassDp6 44"    "bassDp9 47"
    "bassG 43"      "bassGp6 49"    "bassGp9 52"    "bassGp12 55"
)

# Fine tuning in cents, sent as pitch bend before the note. Like a real
# plucked string, these recordings start sharp and fall 5-15 cents during the
# first second, settling within a few cents of pitch. 100-300 ms after the
# onset, where tools/check_sample_pitch.py looks, most read about +3. Only the
# outliers are pulled in line with the rest, so the tail stays in tune too.
declare -A TUNE_CENTS=(
    [E]=-4 [B]=-2 [Gp6]=-2 [bassE]=-4
)

tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT

# Writes a one-note Standard MIDI File: format 0, 960 ticks per second.
# Bend range is set to 2 semitones explicitly so the bend value means the
# same on any synth.
write_midi() { # file program note hold_seconds cents
    python3 - "$@" <<'PY'
import struct, sys

path, program, note, hold, cents = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), float(sys.argv[4]), float(sys.argv[5])
TICKS_PER_QUARTER = 480          # at the default 120 bpm: 960 ticks/s
ch = 0

def vlq(n):
    out = [n & 0x7F]
    n >>= 7
    while n:
        out.append(0x80 | (n & 0x7F))
        n >>= 7
    return bytes(reversed(out))

bend = 8192 + round(cents / 200.0 * 8192)
if not 0 <= bend <= 16383:
    sys.exit(f"tuning {cents} cents is outside the bend range")

hold_ticks = round(hold * 960)
tail_ticks = 2 * 960             # let the release ring out before the end
events = [
    (0, bytes([0xC0 | ch, program])),
    (0, bytes([0xB0 | ch, 101, 0])), (0, bytes([0xB0 | ch, 100, 0])),
    (0, bytes([0xB0 | ch, 6, 2])), (0, bytes([0xB0 | ch, 38, 0])),
    (0, bytes([0xE0 | ch, bend & 0x7F, bend >> 7])),
    (0, bytes([0x90 | ch, note, 100])),
    (hold_ticks, bytes([0x80 | ch, note, 0])),
    (tail_ticks, b"\xFF\x2F\x00"),
]
track = b"".join(vlq(dt) + ev for dt, ev in events)
with open(path, "wb") as f:
    f.write(b"MThd" + struct.pack(">IHHH", 6, 0, 1, TICKS_PER_QUARTER))
    f.write(b"MTrk" + struct.pack(">I", len(track)) + track)
PY
}

render() { # name program note hold length
    local name=$1 program=$2 note=$3 hold=$4 length=$5
    local cents="${TUNE_CENTS[$name]:-0}"
    write_midi "$tmp/$name.mid" "$program" "$note" "$hold" "$cents"
    # Float output keeps fluidsynth from dithering (and from clipping).
    fluidsynth -q -ni -R 0 -C 0 \
        -o synth.reverb.active=0 -o synth.chorus.active=0 \
        -o synth.cpu-cores=1 \
        -g 0.5 -r "$RATE" -O float -T wav \
        -F "$tmp/$name.raw.wav" "$sf2" "$tmp/$name.mid" >/dev/null \
        || die "fluidsynth failed on $name"
    # -R: repeatable; -D: no dither, so the bytes don't depend on a seed.
    # Normalise first so the silence threshold is relative to the note's peak
    # (the attack, which trimming and fading never touch).
    sox -R -D -V1 "$tmp/$name.raw.wav" -b 16 -e signed-integer -c 1 -r "$RATE" \
        "$out_dir/$name.wav" \
        remix 1,2 \
        gain -n "$PEAK_DB" \
        silence 1 0 -60d \
        trim 0 "$length" \
        fade t "$FADE_IN" "$length" "$FADE" \
        || die "sox failed on $name"
}

mkdir -p "$out_dir"
for entry in "${guitar_notes[@]}"; do
    read -r name note <<<"$entry"
    render "$name" "$GUITAR_PROGRAM" "$note" "$GUITAR_HOLD" "$GUITAR_LENGTH"
done
for entry in "${bass_notes[@]}"; do
    read -r name note <<<"$entry"
    render "$name" "$BASS_PROGRAM" "$note" "$BASS_HOLD" "$BASS_LENGTH"
done

count=$(( ${#guitar_notes[@]} + ${#bass_notes[@]} ))
echo "rendered $count samples into $out_dir"
