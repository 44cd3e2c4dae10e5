#!/usr/bin/env python3
"""Slices that the transients mode finds, against onsets that are known: drums made at every tempo from 60 to 200.

    bench/slices.py KIV [SENSITIVITY …]

Prints for each sensitivity and group of tempi the hits found (a slice's start, less the pre-roll, within 20 ms), missed and
false ones, and how far off the found ones are. Each pattern holds kicks, snares and hats of its own levels in a room of noise
at −60 dB; hats fall on eighths, the quietest 24 dB under the kicks."""
import math
import random
import sys
import tempfile
from pathlib import Path

from sounds import told, write

RATE = 44100


def hit(kind, level):
    """A drum: a falling tone, a tone and noise, or bright noise."""
    length = {"kick": 0.25, "snare": 0.18, "hat": 0.06}[kind]
    last, sound = 0.0, []
    for i in range(int(length * RATE)):
        t = i / RATE
        noise = random.uniform(-1, 1)
        bright, last = noise - last, noise
        value = {"kick": math.sin(2 * math.pi * (50 * t + 8 * (1 - math.exp(-t * 35)))),
                 "snare": 0.5 * math.sin(2 * math.pi * 190 * t) + 0.7 * noise, "hat": 0.6 * bright}[kind]
        sound.append(level * value * math.exp(-5 * t / length) * min(i / 30, 1))
    return sound


def pattern(bpm, bars=2):
    """samples, and the onset of each hit."""
    eighth, onsets = 30 / bpm, []
    sound = [random.uniform(-0.001, 0.001) for _ in range(int((bars * 8 * eighth + 1) * RATE))]
    for k in range(bars * 8):
        at = int((0.3 + k * eighth) * RATE) + random.randrange(-200, 200)
        kinds = [("hat", random.uniform(0.05, 0.2))]
        if k % 4 == 0:
            kinds.append(("kick", random.uniform(0.6, 0.8)))
        if k % 4 == 2:
            kinds.append(("snare", random.uniform(0.4, 0.7)))
        for kind, level in kinds:
            for i, value in enumerate(hit(kind, level)):
                sound[at + i] += value
        onsets.append(at)
    return sound, onsets


def slices(kiv, sound, sensitivity, folder):
    path = Path(folder, "drums.wav")
    write(path, sound, RATE)
    return [start for start, _ in told(kiv, "slices", path, f"sensitivity={sensitivity}", "preRollMs=0")]


def scored(starts, onsets):
    errors, free = [], list(starts)
    for onset in onsets:
        near = min(free, key=lambda start: abs(start - onset), default=None)
        if near is not None and abs(near - onset) <= 0.02 * RATE:
            errors.append((near - onset) / RATE * 1000)
            free.remove(near)
    return errors, len(onsets) - len(errors), len(free)


kiv, sensitivities = sys.argv[1], [int(s) for s in sys.argv[2:]] or [30, 50, 70, 90]
print("sensitivity     tempi   hits  found missed  false   error ms: median    95 %  worst")
with tempfile.TemporaryDirectory() as folder:
    for sensitivity in sensitivities:
        for first in range(60, 201, 20):
            random.seed(first)
            errors, missed, false = [], 0, 0
            for bpm in range(first, min(first + 20, 201)):
                sound, onsets = pattern(bpm)
                e, m, f = scored(slices(kiv, sound, sensitivity, folder), onsets)
                errors, missed, false = errors + e, missed + m, false + f
            off = sorted(abs(e) for e in errors) or [math.nan]
            print(f"{sensitivity:11d} {first:5d}–{min(first + 19, 200):3d} {len(errors) + missed:6d} {len(errors):6d} {missed:6d} "
                  f"{false:6d} {off[len(off) // 2]:18.2f} {off[int(len(off) * 0.95)]:7.2f} {off[-1]:6.2f}", flush=True)
