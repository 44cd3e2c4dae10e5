#!/usr/bin/env python3
"""Loops that Find Loops takes, against those that the makers of instruments set by hand, and in sounds that loop badly.

    bench/loops.py KIV [SOUNDFONT.sf2 [COUNT]]

A SoundFont with looped samples is, for instance, TimGM6mb.sf2 of Debian's timgm6mb-soundfont. For each of COUNT samples (every
so many of those with a loop of at least 50 ms) prints, for the hand-set loop and for the first proposal:
  match   how much alike the 10 ms up to both points are, in percent, by the search's measure. What follows is left out, for
          samples are often cut off right behind the loop's end
  step    the jump at the joint over the usual difference between neighbouring samples (1: as any other)
  click   how far the highs (second difference) of the 2 ms about the joint stand above the loop's own, in dB (0: unheard)
Then the same of proposals in noise, a chord and a vibrato, which have no hand-set loop."""
import math
import random
import struct
import sys
import tempfile
from pathlib import Path

from sounds import told, write


def chunks(data, start, end):
    while start + 8 <= end:
        name, size = data[start:start + 4], struct.unpack_from("<I", data, start + 4)[0]
        yield name, start + 8, start + 8 + size
        start += 8 + size + size % 2


def soundfont_samples(path):
    """name, rate, samples and loop of every looped sample of a SoundFont 2 file."""
    data = Path(path).read_bytes()
    found = {}
    for name, lo, hi in chunks(data, 12, len(data)):
        if name == b"LIST":
            found.update({inner: (a, b) for inner, a, b in chunks(data, lo + 4, hi)})
    pool = found[b"smpl"][0]
    for at in range(found[b"shdr"][0], found[b"shdr"][1] - 46, 46):
        title, start, end, loop_start, loop_end, rate = struct.unpack_from("<20sIIIII", data, at)
        if not start <= loop_start < loop_end <= end:
            continue
        samples = struct.unpack_from(f"<{end - start}h", data, pool + 2 * start)
        yield title.split(b"\0")[0].decode("latin-1"), rate, [s / 32768 for s in samples], loop_start - start, loop_end - start


def find_loops(kiv, samples, rate, folder):
    path = Path(folder, "sound.wav")
    write(path, samples, rate)
    return told(kiv, "loops", path)


def match(x, rate, start, end):
    w = max(int(rate * 0.01), 8)
    at = lambda i: x[i] if 0 <= i < len(x) else 0.0
    difference = both = 0.0
    for i in range(w):
        a, b = at(start - w + i), at(end - w + i)
        weight = (1 - abs(i - w + 0.5) / w) if 0 <= start - w + i < len(x) else 0
        difference += weight * (a - b) ** 2
        both += weight * (a * a + b * b)
    return 100 * max(0.0, 1 - difference / max(both, 1e-20))


def rms(values):
    return math.sqrt(sum(v * v for v in values) / max(len(values), 1))


def joint(x, rate, start, end):
    """step and click of the joint of a loop, cycled."""
    side = max(int(rate * 0.002), 4)
    cycled = (x[start:end] * (2 + 4 * side // (end - start)))
    highs = lambda v: [v[i - 1] - 2 * v[i] + v[i + 1] for i in range(1, len(v) - 1)]
    body = x[start:end]
    usual = rms([b - a for a, b in zip(body, body[1:])]) or 1e-9
    step = abs(x[start] - x[end - 1]) / usual
    lo = (end - start) * ((side // (end - start)) + 1)
    around = rms(highs(cycled[lo - side:lo + side]))
    return step, 20 * math.log10(max(around, 1e-9) / max(rms(highs(body)), 1e-9))


def row(name, x, rate, loop):
    step, click = joint(x, rate, *loop)
    return f"{match(x, rate, *loop):7.2f} {step:6.2f} {click:6.1f} {(loop[1] - loop[0]) / rate * 1000:8.1f}"


def made_sounds(rate=44100, seconds=3):
    random.seed(1)
    frames = range(rate * seconds)
    sine = lambda hertz, t: math.sin(2 * math.pi * hertz * t)
    yield "tone", [0.5 * sine(220, t / rate) for t in frames]
    yield "chord", [0.2 * sum(sine(h, t / rate) for h in (220, 277.18, 329.63)) for t in frames]
    yield "vibrato", [0.5 * math.sin(2 * math.pi * 330 * t / rate + 5 * math.sin(2 * math.pi * 5.5 * t / rate)) for t in frames]
    yield "decaying", [0.5 * math.exp(-1.5 * t / rate) * sine(220, t / rate) for t in frames]
    yield "noise", [random.uniform(-0.5, 0.5) for _ in frames]


def compare(kiv, soundfont, count, folder):
    usable = [s for s in soundfont_samples(soundfont) if s[4] - s[3] >= 0.05 * s[1]]
    print(f"{'':22s}{'by hand':>30s}   {'found':>30s}\n{'sample':22s}" + 2 * "  match   step  click       ms   ")
    better = found = 0
    pairs = []
    for name, rate, x, start, end in usable[::max(len(usable) // count, 1)][:count]:
        proposals = find_loops(kiv, x, rate, folder)
        first = (proposals[0]["start"], proposals[0]["end"]) if proposals else None
        print(f"{name[:20]:22s}{row(name, x, rate, (start, end))}   {row(name, x, rate, first) if first else 'none':>30s}")
        if first:
            found += 1
            pairs.append((match(x, rate, start, end), match(x, rate, *first), joint(x, rate, start, end), joint(x, rate, *first)))
    middle = lambda values: sorted(values)[len(values) // 2]
    print(f"found in {found} of {min(count, len(usable))}; medians: match {middle([p[0] for p in pairs]):.2f} by hand, "
          f"{middle([p[1] for p in pairs]):.2f} found; click {middle([p[2][1] for p in pairs]):.1f} and "
          f"{middle([p[3][1] for p in pairs]):.1f} dB; the better match is ours in {sum(p[1] >= p[0] for p in pairs)}")


kiv = sys.argv[1]
with tempfile.TemporaryDirectory() as folder:
    if len(sys.argv) > 2:
        compare(kiv, sys.argv[2], int(sys.argv[3]) if len(sys.argv) > 3 else 40, folder)
    print(f"\n{'made sound':22s}  match   step  click       ms   (the first proposal)")
    for name, x in made_sounds():
        proposals = find_loops(kiv, x, 44100, folder)
        print(f"{name:22s}{row(name, x, 44100, (proposals[0]['start'], proposals[0]['end'])) if proposals else '   none'}")
