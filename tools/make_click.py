#!/usr/bin/env python3
"""Writes the metronome's two clicks, our own sound: a short wood-block-like tick, the accent
on the first beat of a measure a little higher and louder.

Usage: tools/make_click.py [output-dir]     (default: assets/samples/metronome)
"""

import math
import os
import struct
import sys
import wave

RATE = 44100


def click(hz, gain, seconds=0.045):
    frames = []
    n = int(RATE * seconds)
    for i in range(n):
        t = i / RATE
        # A fast attack and an exponential decay; a second partial gives the wooden edge.
        envelope = min(1.0, i / 40.0) * math.exp(-t * 95.0)
        value = math.sin(2 * math.pi * hz * t) + 0.45 * math.sin(2 * math.pi * hz * 2.76 * t)
        frames.append(gain * envelope * value / 1.45)
    return frames


def write(path, frames):
    with wave.open(path, "wb") as out:
        out.setnchannels(1)
        out.setsampwidth(2)
        out.setframerate(RATE)
        out.writeframes(b"".join(struct.pack("<h", int(round(f * 32000))) for f in frames))


def main():
    repo = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    out_dir = sys.argv[1] if len(sys.argv) > 1 else os.path.join(repo, "assets", "samples", "metronome")
    os.makedirs(out_dir, exist_ok=True)
    write(os.path.join(out_dir, "click.wav"), click(1500.0, 0.7))
    write(os.path.join(out_dir, "clickaccent.wav"), click(2000.0, 0.95))
    print("wrote click.wav and clickaccent.wav into", out_dir)


if __name__ == "__main__":
    main()
