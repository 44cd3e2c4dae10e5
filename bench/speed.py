#!/usr/bin/env python3
"""Times the command line editor as a whole process against its peers on the same work, and prints each as a ratio.

Ten minutes of 16-bit stereo at 44.1 kHz, files in memory-backed storage, the release build. Ours and the peer run in turn, so
that a machine that slows down slows both; the figures are medians, the ratio is taken pair by pair.

usage: bench/speed.py [--runs N] [--kiv PATH] [--window PATH] [--no-window]
"""
import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from array import array
from pathlib import Path
import wave

ROOT = Path(__file__).resolve().parent.parent
RATE, MINUTES = 44100, 10


def install_peers():
    missing = [package for package in ("ffmpeg", "sox", "soundstretch") if not shutil.which(package)]
    if missing:
        sudo = [] if os.getuid() == 0 else ["sudo"]
        subprocess.run(sudo + ["apt-get", "install", "-y", "-qq", "--no-install-recommends"] + missing, check=True)


def build(*targets):
    """The release build of what is timed; nothing is done when it stands."""
    for command in (["cmake", "--preset", "release"], ["cmake", "--build", "build/release", "-j2", "--target", *targets]):
        subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.DEVNULL)


def make_sound(path, minutes, seed=1):
    """Noise with an envelope, loudest sample below full scale: nothing that a peer could take a short way through."""
    state, block = seed, array("h")
    for i in range(RATE * 2 * 4):  # four seconds, then repeated
        state = (state * 1103515245 + 12345) & 0x7FFFFFFF
        block.append(int(((state >> 8) % 40000 - 20000) * (0.2 + 0.8 * ((i % 44100) / 44100))))
    with wave.open(str(path), "wb") as out:
        out.setnchannels(2)
        out.setsampwidth(2)
        out.setframerate(RATE)
        out.setnframes(minutes * 60 * RATE)
        for _ in range(minutes * 15):
            out.writeframesraw(block.tobytes())


def run(command):
    """Seconds on the clock and kilobytes at the peak of one run of a command, from the kernel's own account of it."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    message = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} failed: {message.decode(errors='replace')}")
    return seconds, usage.ru_maxrss


def compare(title, ours, peer, wanted, runs, faster=True):
    """Runs both in turn. `wanted`: how many times as fast we must be, or (faster=False) how many times the peer's time we may take."""
    pairs, memory = [], 0
    for i in range(runs + 1):
        (a, kilobytes), (b, _) = run(ours), run(peer)
        if i > 0:  # the first pair warms caches
            pairs.append((a, b))
            memory = max(memory, kilobytes)
    mine, theirs = (statistics.median(column) * 1000 for column in zip(*pairs))
    ratio = statistics.median((b / a if faster else a / b) for a, b in pairs)
    met = ratio >= wanted if faster else ratio <= wanted
    relation = f"{ratio:5.2f} times as fast (wanted {wanted:g})" if faster else f"{ratio:5.2f} times its time (at most {wanted:g})"
    print(f"{title:34} {mine:8.1f} ms   peer {theirs:8.1f} ms   {relation} {'met' if met else 'NOT MET'}", flush=True)
    return met, memory


def command_line(kiv, folder, runs):
    sound, copy, out = folder / "ten.wav", folder / "copy.wav", folder / "out.wav"
    make_sound(sound, MINUTES)
    shutil.copy(sound, copy)
    samples = MINUTES * 60 * RATE * 2

    rows = [
        ("gain -3 / ffmpeg volume", [kiv, "edit", copy, "gain -3", "-o", folder / "a.wav"],
         ["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-i", sound, "-af", "volume=-3dB", out], 2, True),
        ("gain -3 / sox gain", [kiv, "edit", copy, "gain -3", "-o", folder / "a.wav"],
         ["sox", sound, out, "gain", "-3"], 4, True),
        ("normalize -1 / sox norm", [kiv, "edit", copy, "normalize -1", "-o", folder / "a.wav"],
         ["sox", sound, out, "norm", "-1"], 5, True),
        ("open and save / cp", [kiv, "edit", copy], ["cp", sound, out], 3, False),
    ]
    results = [compare(*row[:3], row[3], runs, row[4]) for row in rows]
    peak = max(memory for _, memory in results) * 1024 / (samples * 4)
    met = peak <= 2.8
    print(f"{'peak memory':34} {peak:8.2f} times the float samples (at most 2.8) {'met' if met else 'NOT MET'}")
    return met and all(ok for ok, _ in results)


def processing(kiv, folder, runs):
    """What works on every sample: stretches, shifts, conversions of rate, fades, reversal, silence."""
    sound, copy, out, ours = (folder / name for name in ("ten.wav", "copy.wav", "out.wav", "a.wav"))
    at48 = folder / "at48.wav"
    with wave.open(str(at48), "wb") as short:
        short.setnchannels(2), short.setsampwidth(2), short.setframerate(48000)
        short.writeframes(bytes(8))
    step = lambda *steps: [kiv, "edit", copy, *steps, "-o", ours]
    sox = lambda *effect: ["sox", sound, out, *effect]
    soundstretch = lambda option: ["soundstretch", sound, out, option]
    longer, higher = step("timeStretch clean 120 0 0"), step("timeStretch clean 100 3 0")
    rows = [
        ("120 % / soundstretch", longer, soundstretch("-tempo=-16.666667"), 2),
        ("120 % / sox tempo", longer, sox("tempo", "0.8333333333"), 5),
        ("+3 semitones / soundstretch", higher, soundstretch("-pitch=3"), 1.5),
        ("44.1 to 48 kHz / sox rate -v", [kiv, "edit", at48, f"load {sound}", "paste", "-o", ours],
         ["sox", sound, "-r", "48000", out, "rate", "-v"], 2.5),
        ("reverse / sox reverse", step("reverse"), sox("reverse"), 3),
        ("fade in / sox fade q", step("fadeIn"), sox("fade", "q", f"{MINUTES * 60}"), 3),
        ("fade out / sox fade q", step("fadeOut"), sox("fade", "q", "0", f"{MINUTES * 60}", f"{MINUTES * 60}"), 3),
        ("silence / sox vol 0", step("silence"), sox("vol", "0"), 3),
    ]
    return all([compare(*row, runs)[0] for row in rows])


def painted(program, path, env):
    """What the window says it has painted, and when that was heard: milliseconds on the clock since it was started."""
    start = time.perf_counter()
    process = subprocess.Popen([program, "--paint-report", path], env=env, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               text=True)
    heard = [(line.split(" ")[0], (time.perf_counter() - start) * 1000) for line in process.stderr]
    if process.wait() != 0:
        sys.exit(f"{program} ended with {process.returncode}")
    return heard


def edits(program, folder):
    """Edits in the window of an hour's file, painted without a screen."""
    report = subprocess.run([program, folder / "hour.wav"], env={**os.environ, "QT_QPA_PLATFORM": "offscreen"},
                            capture_output=True, text=True)
    print(report.stdout, end="")
    return report.returncode == 0 and "NOT MET" not in report.stdout


def window(program, folder, runs):
    """First paint and complete waveform of a small and of an hour's file, on a screen of the script's own."""
    from contextlib import ExitStack
    small, hour = folder / "small.wav", folder / "hour.wav"
    with wave.open(str(small), "wb") as out:
        out.setnchannels(2), out.setsampwidth(2), out.setframerate(RATE)
        out.writeframes(bytes(RATE * 4 * 3))
    make_sound(hour, 60)
    with ExitStack() as stack:
        display = f":{90 + os.getpid() % 100}"
        for command in (["Xvfb", display, "-screen", "0", "1280x800x24"], ["openbox"]):
            child = subprocess.Popen(command, env={**os.environ, "DISPLAY": display}, stdout=subprocess.DEVNULL,
                                     stderr=subprocess.DEVNULL)
            stack.callback(child.wait)
            stack.callback(child.terminate)
            time.sleep(1)
        env = {**os.environ, "DISPLAY": display, "QT_QPA_PLATFORM": "xcb", "XDG_CONFIG_HOME": str(folder / "config")}
        ok = True
        for name, path, limits in (("small file", small, {"first-paint": 150}), ("an hour", hour, {"first-paint": 250, "complete": 2000})):
            figures = {}
            for i in range(runs + 1):
                for word, value in painted(program, path, env):
                    if word in limits and i > 0:
                        figures.setdefault(word, []).append(value)
            for word, limit in limits.items():
                if word not in figures:
                    sys.exit(f"the window said nothing of {word}")
                value = statistics.median(figures[word])
                ok &= value <= limit
                print(f"{'window, ' + name + ': ' + word:34} {value:8.1f} ms (at most {limit}) {'met' if value <= limit else 'NOT MET'}")
        return ok


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--runs", type=int, default=7)
    parser.add_argument("--kiv", type=Path, default=ROOT / "build/release/kiv")
    parser.add_argument("--window", type=Path, default=ROOT / "build/release/kiv-audio-editor")
    parser.add_argument("--edits", type=Path, default=ROOT / "build/release/bench/edits/kiv_edits")
    parser.add_argument("--no-window", action="store_true")
    options = parser.parse_args()
    install_peers()
    build("kiv", *([] if options.no_window else ["kiv-audio-editor", "kiv_edits"]))
    with tempfile.TemporaryDirectory(dir="/dev/shm", prefix="kiv-speed-") as name:
        folder = Path(name)
        ok = command_line(options.kiv, folder, options.runs)
        ok &= processing(options.kiv, folder, options.runs)
        if not options.no_window:
            ok &= window(options.window, folder, options.runs)
            ok &= edits(options.edits, folder)
    print("all met" if ok else "some not met")


if __name__ == "__main__":
    main()
