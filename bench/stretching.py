#!/usr/bin/env python3
"""Stretches and shifts sounds of known content and measures what has become of them: length, pitch, level, attacks.

A tone, a sweep, spoken words, drums and a full mix, all made here, to 50, 80, 120 and 200 % and by ±3 and ±12 semitones. Prints a
row each; with --pictures FOLDER also draws spectrograms of what went in and what came out. The mode s950, which jumps from cycle
to cycle as they come, has no one pitch to measure.

usage: bench/stretching.py [--kiv PATH] [--pictures FOLDER]
"""
import argparse
import subprocess
import tempfile
import wave
from itertools import product
from pathlib import Path

import numpy as np

from sounds import write

ROOT = Path(__file__).resolve().parent.parent
RATE = 44100
BEAT = 0.25  # seconds between drum hits
MODES = {"clean": "", "s950": " auto"}
CHANGES = [(50, 0), (80, 0), (120, 0), (200, 0), (100, 3), (100, -3), (100, 12), (100, -12)]


def seconds(length):
    return np.arange(int(length * RATE)) / RATE


def tone():
    return 0.5 * np.sin(2 * np.pi * 440 * seconds(4))


def sweep():
    t, low, high, length = seconds(6), 50, 10000, 6
    return 0.5 * np.sin(2 * np.pi * low * length / np.log(high / low) * (np.exp(t / length * np.log(high / low)) - 1))


def hit(t, random, kick):
    """One stroke: a click of noise at once, and under it a body that falls in pitch."""
    noise = random.standard_normal(len(t)) * np.exp(-t * (60 if kick else 25)) * (0.15 if kick else 0.35)
    body = np.sin(2 * np.pi * (45 * t - 6 * np.exp(-t * 30))) * np.exp(-t * 12) * (0.7 if kick else 0.1)
    return noise + body


def drums():
    random, beats = np.random.default_rng(1), 16
    return np.concatenate([hit(seconds(BEAT), random, beat % 2 == 0) for beat in range(beats)])


def mix():
    t = seconds(BEAT * 16)
    roots = 110 * 2 ** (np.array([0, 5, 7, 3])[np.minimum(t // (BEAT * 4), 3).astype(int)] / 12)
    phase = 2 * np.pi * np.cumsum(roots) / RATE
    chord = sum(np.sin(h * k * phase) / h for h in range(1, 6) for k in (1, 1.26, 1.498)) * 0.06
    return 0.6 * drums() + chord + 0.15 * np.sin(phase / 2)


def speech(folder):
    path = folder / "words.wav"
    subprocess.run(["espeak-ng", "-w", path, "-s", "150", "The quick brown fox jumps over the lazy dog; every good voice knows it by heart."],
                   check=True)
    words, rate = read(path)
    return np.interp(np.arange(0, len(words) - 1, rate / RATE), np.arange(len(words)), words)


def read(path):
    with wave.open(str(path)) as file:
        return np.frombuffer(file.readframes(file.getnframes()), "<i2") / 32768, file.getframerate()


def crossings(x):
    up = np.flatnonzero((x[:-1] < 0) & (x[1:] >= 0))
    return up - x[up] / (x[up + 1] - x[up])


def tone_hertz(x):
    up = crossings(x[2000:-2000])
    return (len(up) - 1) / (up[-1] - up[0]) * RATE


def pitch_of(x, shift=1.0):
    """The middle fundamental of what is voiced, by autocorrelation of a few periods at a time, looked for about where `shift` puts it."""
    found, window = [], int(0.06 * RATE / min(shift, 1))
    for at in range(0, len(x) - window, window // 4):
        part = x[at:at + window] * np.hanning(window)
        r = np.fft.irfft(np.abs(np.fft.rfft(part, 2 * window)) ** 2)[:window]
        low, high = int(RATE / 160 / shift), int(RATE / 70 / shift)
        lag = low + int(np.argmax(r[low:high]))
        if r[0] > 1e-3 and r[lag] > 0.4 * r[0] and low < lag < high - 1:
            found.append(RATE / lag)
    return float(np.median(found)) if found else float("nan")


def levels(x, length=0.05):
    size = int(length * RATE)
    middle = x[2000:-2000]
    power = (middle[:len(middle) // size * size].reshape(-1, size) ** 2).mean(axis=1)
    return 10 * np.log10(power + 1e-12)


def attack_errors(x, factor, start=0.0):
    """How many milliseconds each stroke is from where it belongs: where the sound, listened to in half milliseconds, jumps most."""
    size = RATE // 2000
    loud = np.abs(x[:len(x) // size * size]).reshape(-1, size).max(axis=1) + 1e-4
    rise = np.diff(np.log(np.concatenate([[1e-4], loud])))
    errors = []
    for beat in range(16):
        place = (start + beat * BEAT) * factor * 2000
        lo, hi = max(int(place) - 50, 0), int(place) + 50
        errors.append((lo + int(np.argmax(rise[lo:hi])) - place) / 2)
    return np.array(errors)


def measured(mode, name, before, after, percent, semitones):
    words = [f"length {len(after) - round(len(before) * percent / 100):+d}"]
    shift = 2 ** (semitones / 12)
    if name == "tone" and mode == "clean":
        words.append(f"pitch {1200 * np.log2(tone_hertz(after) / tone_hertz(before) / shift):+.2f} cents")
    if name == "speech" and mode == "clean":
        words.append(f"pitch {1200 * np.log2(pitch_of(after, shift) / pitch_of(before) / shift):+.1f} cents")
    if name in ("tone", "sweep"):
        words.append(f"ripple {np.ptp(levels(after)):.2f} dB (of {np.ptp(levels(before)):.2f})")
    words.append(f"level {10 * np.log10((after ** 2).mean() / (before ** 2).mean()):+.2f} dB")
    if name in ("drums", "mix"):
        errors = attack_errors(after, percent / 100)
        words.append(f"attacks: first {errors[0]:+.1f} ms, median {np.median(np.abs(errors)):.1f}, worst {np.abs(errors).max():.1f} ms")
    return ", ".join(words)


def picture(path, folder):
    subprocess.run(["sox", path, "-n", "spectrogram", "-x", "700", "-y", "257", "-z", "90", "-t", path.stem,
                    "-o", folder / (path.stem + ".png")], check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--kiv", type=Path, default=ROOT / "build/release/kiv")
    parser.add_argument("--pictures", type=Path)
    options = parser.parse_args()
    if options.pictures:
        options.pictures.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for sound, samples in (("tone", tone()), ("sweep", sweep()), ("speech", speech(folder)), ("drums", drums()), ("mix", mix())):
            source = folder / f"{sound}.wav"
            write(source, samples, RATE)
            if options.pictures:
                picture(source, options.pictures)
            for (mode, cycle), (percent, semitones) in product(MODES.items(), CHANGES):
                made = folder / f"{sound}_{mode}_{percent}_{semitones:+d}.wav"
                change = f"timeStretch {mode} {percent} {semitones} 0{cycle}"
                subprocess.run([options.kiv, "edit", source, change, "-o", made], check=True)
                print(f"{mode:5} {sound:6} {percent:4} % {semitones:+3d}: {measured(mode, sound, read(source)[0], read(made)[0], percent, semitones)}")
                if options.pictures:
                    picture(made, options.pictures)


main()
