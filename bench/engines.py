#!/usr/bin/env python3
"""The spectral engine and the equalizer: how fast, beside their limits and beside the same nine filters in sox, and how exact.

The release build; ten minutes of stereo at 44.1 kHz in memory-backed storage for the comparison with sox, whole processes that
read, filter and write the same file.

usage: bench/engines.py [--runs N]
"""
import argparse
import subprocess
import tempfile
from pathlib import Path

from speed import MINUTES, ROOT, build, compare, install_peers, make_sound

ENGINES = ROOT / "build/release/bench/engines/kiv_engines"
KIV = ROOT / "build/release/kiv"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    install_peers()
    build("kiv", "kiv_engines")
    subprocess.run([ENGINES], check=True)
    words, filters = subprocess.run([ENGINES, "--words"], check=True, capture_output=True, text=True).stdout.splitlines()
    with tempfile.TemporaryDirectory(dir="/dev/shm", prefix="kiv-engines-") as name:
        sound, ours, theirs = (Path(name) / part for part in ("ten.wav", "ours.wav", "theirs.wav"))
        make_sound(sound, MINUTES)
        compare("equalizer, nine filters / sox", [KIV, "edit", sound, f"eq {words}", "applyEq", "-o", ours],
                ["sox", "-D", sound, theirs, *filters.split()], 5, options.runs)
    subprocess.run([ENGINES, "--tables"], check=True)


main()
