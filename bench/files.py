#!/usr/bin/env python3
"""Times reading and writing of FLAC and MP3 by the command line editor against the programs people use for that, and its start.

Ten minutes of 16-bit stereo at 44.1 kHz, files in memory-backed storage, the release build. Both run in turn; the figures are
medians, the ratio is taken pair by pair.

usage: bench/files.py [--runs N] [--kiv PATH]
"""
import argparse
import shutil
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

import speed


def start(kiv, small, runs):
    """Milliseconds from the start of the process to its end with nothing, and with next to nothing, to do."""
    met = True
    for title, command in (("start", [kiv, "--version"]), ("info of a small file", [kiv, "info", small])):
        took = statistics.median(speed.run(command)[0] * 1000 for _ in range(5 * runs))
        met &= took < 15
        print(f"{title:34} {took:8.1f} ms (below 15) {'met' if took < 15 else 'NOT MET'}")
    return met


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--kiv", type=Path, default=speed.ROOT / "build/release/kiv")
    options = parser.parse_args()
    missing = [program for program in ("flac", "ffmpeg") if not shutil.which(program)]
    if missing:
        sys.exit(f"needed: {' '.join(missing)}")
    speed.build("kiv")
    with tempfile.TemporaryDirectory(dir="/dev/shm", prefix="kiv-files-") as name:
        folder, kiv = Path(name), options.kiv
        sound, flac, mp3, small = (folder / each for each in ("ten.wav", "ten.flac", "ten.mp3", "small.wav"))
        ours, theirs = folder / "a", folder / "b.wav"
        speed.make_sound(sound, speed.MINUTES)
        small.write_bytes(sound.read_bytes()[:44 + 4000])
        encode = ["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-i"]
        subprocess.run(["flac", "--silent", "-f", "-o", flac, sound], check=True)
        subprocess.run([*encode, sound, "-b:a", "192k", mp3], check=True)
        save = lambda path, form: [kiv, "edit", path, "--save-as", form, ours]
        rows = [
            ("write FLAC / flac -0", save(sound, "flac16"), ["flac", "--silent", "-0", "-f", "-o", folder / "b.flac", sound], 3),
            ("read FLAC / flac -d", save(flac, "wav16"), ["flac", "--silent", "-d", "-f", "-o", theirs, flac], 1),
            ("read MP3 / ffmpeg", save(mp3, "wav16"), [*encode, mp3, theirs], 1),
        ]
        met = all([speed.compare(*row, options.runs)[0] for row in rows])
        met &= start(kiv, small, options.runs)
    print("all met" if met else "some not met")


if __name__ == "__main__":
    main()
