#!/usr/bin/env python3
"""Writes afx-demo-input.wav: 2.5 s of a small synthesised stereo phrase
(plucked bass, a bell-like arpeggio, a soft noise hat) as 16-bit PCM at 44.1 kHz.
Deterministic: the same bytes on every run. Usage: make-demo-input.py [OUTPUT]"""
import math
import struct
import sys
import wave

RATE = 44100
SECONDS = 2.5
FRAMES = int(RATE * SECONDS)


def pluck(t, freq, decay):
    # A few harmonics with a faster decay for the upper ones.
    if t < 0.0:
        return 0.0
    value = 0.0
    for harmonic, weight in ((1, 1.0), (2, 0.45), (3, 0.25), (5, 0.1)):
        value += weight * math.sin(2.0 * math.pi * freq * harmonic * t) * math.exp(-t * decay * harmonic)
    return value


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else "afx-demo-input.wav"
    bass_notes = [(0.0, 55.0), (0.625, 65.41), (1.25, 49.0), (1.875, 55.0)]
    bell_notes = [(0.0 + 0.15625 * k, f) for k, f in enumerate([440.0, 554.37, 659.26, 880.0] * 4)]
    seed = 12345
    left = []
    right = []
    for i in range(FRAMES):
        t = i / RATE
        bass = sum(pluck(t - start, f, 3.0) for start, f in bass_notes if t >= start)
        bell = 0.0
        bell_pan = 0.0
        for k, (start, f) in enumerate(bell_notes):
            if t >= start:
                v = pluck(t - start, f, 6.0)
                bell += v
                bell_pan += v * (1.0 if k % 2 else -1.0)
        # Linear congruential noise, gated every eighth of a second.
        seed = (seed * 1103515245 + 12345) & 0x7FFFFFFF
        noise = (seed / 0x3FFFFFFF - 1.0) * math.exp(-((t % 0.3125) * 40.0))
        l_value = 0.30 * bass + 0.10 * bell + 0.06 * bell_pan + 0.05 * noise
        r_value = 0.30 * bass + 0.10 * bell - 0.06 * bell_pan + 0.05 * noise
        left.append(max(-32768, min(32767, round(l_value * 32767.0))))
        right.append(max(-32768, min(32767, round(r_value * 32767.0))))
    with wave.open(path, "wb") as out:
        out.setnchannels(2)
        out.setsampwidth(2)
        out.setframerate(RATE)
        out.writeframes(b"".join(struct.pack("<hh", a, b) for a, b in zip(left, right)))


if __name__ == "__main__":
    main()
