#!/usr/bin/env python3
"""Checks that every playback sample sounds the pitch its name says.

A sample name is an open string plus an optional "p<fret>": "Ep6" is the low E
string at fret 6, "Elittle" the high E string, "bassAp15" the bass A string at
fret 15. Strings are tuned E2 A2 D3 G3 B3 E4 (guitar) and E1 A1 D2 G2 (bass),
equal temperament with A4 = 440 Hz.

The fundamental is estimated with YIN on a few windows from 100 ms after the
onset, searching the whole 35-1400 Hz range rather than around the expected
note, so a sample of the wrong note or octave shows up as such.

Usage: tools/check_sample_pitch.py [--tolerance CENTS] [DIR]
Exit status 1 if a sample is missing, unreadable, or off by more than the
tolerance (default 15 cents).
"""

import argparse
import math
import operator
import os
import re
import statistics
import sys
import wave

GUITAR_OPEN = {"E": 40, "A": 45, "D": 50, "G": 55, "B": 59, "Elittle": 64}
BASS_OPEN = {"E": 28, "A": 33, "D": 38, "G": 43}

EXPECTED_NAMES = [
    "E", "Ep6", "Ep12", "A", "Ap6", "Ap12", "D", "Dp6", "Dp12",
    "G", "Gp6", "Gp12", "B", "Bp6", "Bp12", "Elittle", "Elittlep6", "Elittlep12",
    "bassE", "bassEp3", "bassEp6", "bassEp9",
    "bassA", "bassAp3", "bassAp6", "bassAp9", "bassAp15",
    "bassD", "bassDp3", "bassDp6", "bassDp9",
    "bassG", "bassGp6", "bassGp9", "bassGp12",
]

NOTE_NAMES = ["C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"]

RATE = 44100
MIN_HZ, MAX_HZ = 35.0, 1400.0
DECIMATE = 4                 # coarse search runs at 11025 Hz
COARSE_WINDOW = 1024         # decimated samples, ~93 ms: two periods of E1
FINE_WINDOW = 4096           # full-rate samples
YIN_THRESHOLD = 0.15
WINDOW_STARTS = (0.10, 0.20, 0.30)   # seconds after onset
MIN_PEAK = 328               # -40 dBFS


def midi_for_name(name):
    m = re.fullmatch(r"(bass)?(Elittle|[EADGB])(?:p(\d+))?", name)
    if not m:
        raise ValueError(f"not a sample name: {name}")
    table = BASS_OPEN if m.group(1) else GUITAR_OPEN
    if m.group(2) not in table:
        raise ValueError(f"no such string: {name}")
    return table[m.group(2)] + int(m.group(3) or 0)


def midi_hz(midi):
    return 440.0 * 2.0 ** ((midi - 69) / 12.0)


def note_label(midi):
    return f"{NOTE_NAMES[midi % 12]}{midi // 12 - 1}"


def read_mono16(path):
    with wave.open(path, "rb") as w:
        fmt = (w.getnchannels(), w.getsampwidth(), w.getframerate())
        if fmt != (1, 2, RATE):
            raise ValueError(f"want mono 16-bit {RATE} Hz, got "
                             f"{fmt[0]} ch, {8 * fmt[1]}-bit, {fmt[2]} Hz")
        raw = w.readframes(w.getnframes())
    count = len(raw) // 2
    return list(memoryview(raw).cast("h")[:count]) if sys.byteorder == "little" \
        else [int.from_bytes(raw[2 * i:2 * i + 2], "little", signed=True)
              for i in range(count)]


def difference(x, start, window, lag):
    a = x[start:start + window]
    b = x[start + lag:start + lag + window]
    return (sum(map(operator.mul, a, a)) + sum(map(operator.mul, b, b))
            - 2 * sum(map(operator.mul, a, b)))


def coarse_period(x, start):
    """YIN lag, in decimated samples, of the window at `start` (decimated)."""
    rate = RATE / DECIMATE
    min_lag = int(rate / MAX_HZ)
    max_lag = int(rate / MIN_HZ) + 1
    if start + COARSE_WINDOW + max_lag + 1 > len(x):
        raise ValueError("sample too short to analyse")
    d = [0.0] + [difference(x, start, COARSE_WINDOW, lag)
                 for lag in range(1, max_lag + 2)]
    cmnd = [1.0] * len(d)
    running = 0.0
    for lag in range(1, len(d)):
        running += d[lag]
        cmnd[lag] = d[lag] * lag / running if running else 1.0
    # First dip under the threshold, followed down to its bottom. Taking the
    # first rather than the deepest keeps a strong subharmonic from winning.
    for lag in range(min_lag, max_lag):
        if cmnd[lag] < YIN_THRESHOLD:
            while lag + 1 <= max_lag and cmnd[lag + 1] < cmnd[lag]:
                lag += 1
            return lag
    return min(range(min_lag, max_lag + 1), key=cmnd.__getitem__)


def fine_period(x, start, guess):
    """Refines a full-rate lag near `guess` with a parabola through the minimum."""
    lo = max(2, int(guess * 0.96) - 2)
    hi = int(guess * 1.04) + 3
    if start + FINE_WINDOW + hi + 1 > len(x):
        raise ValueError("sample too short to analyse")
    d = {lag: difference(x, start, FINE_WINDOW, lag) for lag in range(lo - 1, hi + 2)}
    best = min(range(lo, hi + 1), key=d.__getitem__)
    y0, y1, y2 = d[best - 1], d[best], d[best + 1]
    denom = y0 - 2 * y1 + y2
    return best + (0.5 * (y0 - y2) / denom if denom > 0 else 0.0)


def estimate_hz(samples):
    peak = max(map(abs, samples), default=0)
    if peak < MIN_PEAK:
        raise ValueError("silent (peak below -40 dBFS)")
    onset = next(i for i, v in enumerate(samples) if abs(v) >= 0.1 * peak)
    # Box-filter before decimating: enough to keep the fundamental region clean.
    dec = [sum(samples[i:i + DECIMATE]) for i in range(0, len(samples) - DECIMATE, DECIMATE)]
    estimates = []
    for offset in WINDOW_STARTS:
        start = onset + int(offset * RATE)
        lag = coarse_period(dec, start // DECIMATE)
        estimates.append(RATE / fine_period(samples, start, lag * DECIMATE))
    return statistics.median(estimates), estimates


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    default_dir = os.path.join(os.path.dirname(os.path.abspath(__file__)),
                               "..", "assets", "samples")
    parser.add_argument("directory", nargs="?", default=os.path.normpath(default_dir))
    parser.add_argument("--tolerance", type=float, default=15.0, metavar="CENTS")
    args = parser.parse_args()

    failures = 0
    worst = 0.0
    print(f"{'sample':<12} {'note':<5} {'want Hz':>8} {'got Hz':>8} {'cents':>7}  spread")
    for name in EXPECTED_NAMES:
        midi = midi_for_name(name)
        want = midi_hz(midi)
        path = os.path.join(args.directory, name + ".wav")
        try:
            hz, estimates = estimate_hz(read_mono16(path))
        except (OSError, EOFError, ValueError, wave.Error) as e:
            print(f"{name:<12} {note_label(midi):<5} {want:8.2f}  FAIL: {str(e) or type(e).__name__}")
            failures += 1
            continue
        cents = 1200.0 * math.log2(hz / want)
        spread = 1200.0 * math.log2(max(estimates) / min(estimates))
        worst = max(worst, abs(cents))
        bad = abs(cents) > args.tolerance
        failures += bad
        print(f"{name:<12} {note_label(midi):<5} {want:8.2f} {hz:8.2f} {cents:+7.1f}"
              f"  {spread:5.1f}{'  FAIL' if bad else ''}")

    extra = sorted(set(f[:-4] for f in os.listdir(args.directory) if f.endswith(".wav"))
                   - set(EXPECTED_NAMES)) if os.path.isdir(args.directory) else []
    if extra:
        print("not a known sample: " + ", ".join(extra))
    print(f"{len(EXPECTED_NAMES) - failures}/{len(EXPECTED_NAMES)} within "
          f"{args.tolerance:g} cents; worst {worst:.1f} cents")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
