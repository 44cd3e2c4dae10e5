"""Takes pictures of the window in the situations that its design shows, to be looked at beside it.

pictures.py PROGRAM FOLDER [SITUATION …] writes SITUATION-THEME-SCALE.png for both themes at scale 1 and 2. A situation is a
function of the open editor, with the file it opens and the settings that it starts with."""
import array
import functools
import math
import os
import random
import struct
import subprocess
import sys
import time
from pathlib import Path

from desktop import GUTTER, Desktop, Editor, chunk, wait_for

RATE = 48000


# Sounds: interleaved floats, −1 … 1.

def hit(length, pitch, fall, noise, seed):
    """A drum: a tone that sinks and dies away, with noise that dies as fast."""
    chance = random.Random(seed)
    samples, phase = [], 0.0
    for i in range(round(length * RATE)):
        t = i / RATE
        phase += pitch * (1 + 2 * math.exp(-t * 40)) / RATE
        tone = math.sin(2 * math.pi * phase) * math.exp(-t * fall)
        samples.append((1 - noise) * tone + noise * chance.uniform(-1, 1) * math.exp(-t * fall))
    return samples


def drum_break(seconds=7.385):
    """Hits in a pattern of two bars, a silence, and hits again; the right channel is a little softer and later."""
    drums = [hit(0.6, 55, 4, 0.12, 1), hit(0.6, 190, 5, 0.75, 2), hit(0.3, 900, 9, 0.95, 3), hit(0.6, 80, 3.5, 0.2, 4)]
    frames = round(seconds * RATE)
    left, right = [0.0] * (frames + RATE), [0.0] * (frames + RATE)
    pattern = [(0.0, 0, 0.7), (0.35, 3, 0.75), (0.43, 2, 0.3), (0.78, 0, 0.72), (1.07, 1, 0.8), (1.4, 2, 0.4),
               (1.65, 0, 0.85), (2.08, 2, 0.6), (2.23, 1, 0.85), (2.52, 3, 0.7), (3.1, 0, 0.62), (3.25, 3, 0.7),
               (3.38, 1, 0.83), (3.68, 2, 0.55), (3.96, 0, 0.87), (4.32, 3, 0.6), (4.54, 1, 0.85), (4.96, 0, 0.72),
               (5.3, 1, 0.6), (5.7, 3, 0.66), (6.1, 0, 0.8), (6.5, 1, 0.75), (6.9, 0, 0.7)]
    for start, which, gain in pattern:
        at = round((start + 0.07) * RATE)
        for i, value in enumerate(drums[which]):
            left[at + i] += gain * value
            right[at + i + 12] += 0.93 * gain * value
    return [value for pair in zip(left[:frames], right[:frames]) for value in pair]


def smooth_noise(frames):
    """Loud noise without its highest notes, a little different in each channel."""
    chance = random.Random(3)
    slow, fast, samples = [0.0, 0.0], [0.0, 0.0], []
    for _ in range(frames):
        common = chance.gauss(0, 1)
        for side in (0, 1):
            fast[side] += 0.5 * (common + 0.1 * chance.gauss(0, 1) - fast[side])
            slow[side] += 0.6 * (fast[side] - slow[side])
            samples.append(0.9 * math.tanh(1.1 * slow[side]))
    return samples


def long_talk(seconds=1200):
    """Speech-like noise whose loudness wanders, with pauses, in one channel."""
    chance = random.Random(7)
    piece = RATE // 20
    grains = []  # each at every loudness
    for _ in range(16):
        low, grain = 0.0, []
        for _ in range(piece):
            low += 0.25 * (chance.gauss(0, 1) - low)
            grain.append(low * 0.6)
        grains.append([array.array("h", (round(max(-1, min(1, v * 0.04 * level)) * 32767) for v in grain)).tobytes()
                       for level in range(24)])
    made, loud, until = [], 5, 0.0
    for i in range(seconds * 20):
        if i / 20 >= until:
            until = i / 20 + chance.uniform(0.3, 9)
            loud = 0 if chance.random() < 0.05 else chance.choice((3, 5, 7, 12))
        burst = 3 if chance.random() < 0.06 else 1
        made.append(chance.choice(grains)[min(round(loud * burst * chance.uniform(0.6, 1.1)), 23)])
    return b"".join(made)


# Files.

def riff(channels, bits, data, extra=b""):
    size = channels * bits // 8
    fmt = struct.pack("<HHIIHH", 1, channels, RATE, RATE * size, size, bits)
    body = b"WAVE" + chunk(b"fmt ", fmt) + chunk(b"data", data) + extra
    return b"RIFF" + struct.pack("<I", len(body)) + body


def cue(positions):
    records = b"".join(struct.pack("<II4sIII", i + 1, p, b"data", 0, 0, p) for i, p in enumerate(positions))
    return chunk(b"cue ", struct.pack("<I", len(positions)) + records)


def smpl(start, end):
    return chunk(b"smpl", struct.pack("<9I6I", 0, 0, 0, 60, 0, 0, 0, 1, 0, 0, 0, start, end - 1, 0, 0))


def wav24(samples, channels, extra=b""):
    words = array.array("i", (round(max(-1.0, min(1.0, s)) * 8388607) << 8 for s in samples)).tobytes()
    data = bytearray(len(words) // 4 * 3)
    for i in range(3):
        data[i::3] = words[i + 1::4]
    return riff(channels, 24, bytes(data), extra)


def frame(seconds):
    return round(seconds * RATE)


@functools.cache
def break_file():
    marks = [frame(s) for s in (0.075, 1.644, 4.677, 6.4)]
    return wav24(drum_break(), 2, cue(marks) + smpl(frame(1.213), frame(5.826)))


@functools.cache
def noise_file():
    return wav24(smooth_noise(354480), 2)


@functools.cache
def talk_file():
    return riff(1, 16, long_talk())


# Situations.

class Picture(Editor):
    """An editor whose places are logical pixels of the window."""

    def __init__(self, desktop, program, path):
        super().__init__(desktop, program, path)
        self.path = path
        self.scale = desktop.scale

    def move(self, x, y):
        super().move(round(x * self.scale), round(y * self.scale))

    def type(self, text):
        self.desktop.do("type", "--delay", 30, text)

    def click(self, x, y):
        time.sleep(0.5)
        self.move(x, y)
        self.desktop.do("click", 1)
        time.sleep(0.2)

    def wheel(self, x, y, notches):
        self.move(x, y)
        self.desktop.do("click", "--repeat", abs(notches), "--delay", 20, 4 if notches > 0 else 5)
        time.sleep(0.3)

    def go_to(self, place):
        """Types a position into the read-out of the top bar."""
        self.click(220, 50)
        self.type(place)
        self.key("Return")

    def view(self, start, end, length):
        """Brings a part of a sound, in seconds, into view; the whole sound must be in it."""
        columns = 1280 - GUTTER
        self.drag(GUTTER + start / length * columns, GUTTER + end / length * columns, 450)
        self.key("z")


class Bystander:
    """The program without a document's window."""

    screenshot = Editor.screenshot

    def __init__(self, desktop, program, path):
        self.desktop = desktop
        desktop.start([program, *([str(path)] if path else [])])


def select_some(editor):
    """Returns what turns seconds into x."""
    editor.view(0.72, 6.06, 7.385)
    to_x = lambda s: GUTTER + (s - 0.72) / (6.06 - 0.72) * (1280 - GUTTER)
    editor.drag(to_x(2.368), to_x(3.522), 450)
    return to_x


def sheet(*keys):
    """The sheet that a key opens over a selection, and what is typed into it."""
    def arrange(editor):
        select_some(editor)
        editor.key(*keys)
        editor.move(1000, 780)
        time.sleep(0.5)
    return arrange


def dragged_field(editor):
    sheet("shift+g", "3")(editor)
    editor.move(832, 135)
    editor.desktop.do("mousedown", 1)
    for y in range(134, 116, -2):
        editor.move(832, y)
        time.sleep(0.02)


def main_window(editor):
    to_x = select_some(editor)
    editor.key("c", "space")
    time.sleep(3.2)  # the sound server's sink may have to wake up first
    editor.move(to_x(3.482), 272)
    time.sleep(0.1)


def long_file(editor):
    editor.move(490, 390)


def single_samples(editor):
    editor.key("v")
    editor.go_to("30680")
    for _ in range(30):
        editor.desktop.do("key", "ctrl+1")
    editor.wheel(GUTTER + 500, 450, -4)
    for _ in range(15):
        editor.desktop.do("key", "shift+Right")
    editor.move(600, 400)


def small_window(editor):
    editor.desktop.do("windowsize", "--sync", editor.window, round(720 * editor.scale), round(480 * editor.scale))
    time.sleep(0.5)
    editor.move(600, 20)


def loud_and_selected(editor):
    editor.drag(GUTTER + 300, GUTTER + 900, 450)


def float_file(samples, channels):
    """Samples may lie above full scale."""
    data = array.array("f", samples).tobytes()
    return riff(channels, 32, data).replace(struct.pack("<HH", 1, channels), struct.pack("<HH", 3, channels), 1)


def loud_file():
    return float_file([1.3 * value for value in smooth_noise(RATE)], 2)


def mp3_file():
    return subprocess.run(["ffmpeg", "-loglevel", "error", "-i", "pipe:", "-f", "mp3", "pipe:"], input=break_file(),
                          capture_output=True, check=True).stdout


def save_as(editor):
    """The panel alone: with a name proposed, files of two days and an older one beside it."""
    home, now = editor.desktop.folder, time.time()
    for name, size, days in (("interview notes.wav", 115e6, 1), ("room tone.wav", 17.3e6, 1), ("street.aiff", 52.9e6, 19)):
        path = home / "Music" / "Interviews" / name
        path.touch()
        os.truncate(path, int(size))
        os.utime(path, (now - days * 86400,) * 2)
    for name in ("Desktop", "Documents", "Downloads"):
        (home / name).mkdir()
    editor.key("ctrl+a", "shift+r", "ctrl+s")
    panels = lambda: editor.desktop.output(["xdotool", "search", "--onlyvisible", "--name", "^Save As$"]).split()
    editor.window = wait_for("the panel", panels)[0]
    time.sleep(0.5)


# What is told and asked.

def show(editor, title):
    """Turns to another of the program's windows."""
    found = lambda: editor.desktop.output(["xdotool", "search", "--onlyvisible", "--name", title]).split()
    editor.window = wait_for(f"the window {title}", found)[0]
    time.sleep(0.5)


def message(editor):
    """The window with the keyboard: a message may stand before the one for dropping files."""
    show(editor, "^Kiv Audio Editor$")
    editor.window = editor.desktop.output(["xdotool", "getactivewindow"]).strip()


def changed_elsewhere(editor):
    editor.key("ctrl+a", "shift+r")
    editor.path.write_bytes(noise_file())
    editor.key("ctrl+s")
    time.sleep(1)


def write_error(editor):
    editor.key("ctrl+a", "shift+r")
    editor.path.parent.rename(editor.path.parent.with_name("moved"))
    editor.key("ctrl+s")
    time.sleep(0.7)
    editor.key("Tab", "Return")  # Save Anyway
    time.sleep(1)


def losses(editor):
    editor.key("ctrl+shift+s")
    time.sleep(0.7)
    editor.key("ctrl+a")
    editor.type("other.flac")
    editor.key("Return")
    time.sleep(1)


def unsaved(editor):
    editor.key("ctrl+a", "shift+r", "ctrl+w")
    time.sleep(0.7)


def progress(editor):
    editor.key("ctrl+a", "shift+p", "1", "5", "0", "Return")
    time.sleep(1)


def left_behind(editor):
    editor.key("ctrl+a", "shift+r")
    time.sleep(2)
    editor.process.kill()
    editor.process.wait()
    editor.process = editor.desktop.start([editor.process.args[0], str(editor.path)])
    message(editor)


def cut_short():
    return break_file()[:700000]


SITUATIONS = {
    "main": (break_file, {"follow_playhead": "true"}, main_window),
    "long-file": (talk_file, {}, long_file),
    "single-samples": (noise_file, {}, single_samples),
    "small-window": (break_file, {}, small_window),
    "over-full-scale": (loud_file, {}, loud_and_selected),
    "one-frame": (lambda: wav24([0.5, -0.25], 2), {}, lambda editor: None),
    "sixteen-channels": (lambda: wav24(smooth_noise(RATE * 4), 16), {}, lambda editor: None),
    "no-audio": (lambda: wav24([], 2), {}, lambda editor: None),
    "gain": (break_file, {}, sheet("shift+g", "3")),
    "dragged-field": (break_file, {}, dragged_field),
    "normalize": (break_file, {}, sheet("shift+n", "minus", "1")),
    "mono": (break_file, {}, sheet("shift+m")),
    "stretch": (break_file, {}, sheet("shift+p", "1", "2", "5", "Tab", "3", "Tab", "minus", "1", "2")),
    "cyclic": (break_file, {}, sheet("shift+p", "shift+Tab", "Right", "Tab", "1", "2", "5")),
    "save-as": (mp3_file, {}, save_as),
    "losses": (break_file, {}, losses),
    "ends-early": (cut_short, {}, lambda editor: None),
    "changed-elsewhere": (break_file, {}, changed_elsewhere),
    "write-error": (break_file, {}, write_error),
    "unsaved": (break_file, {}, unsaved),
    "progress": (talk_file, {}, progress),
    "left-behind": (break_file, {}, left_behind),
    "open-error": (lambda: b"RIFF\4\0\0\0WAVE", {}, message),
    "drop-window": (None, {"empty_window_at_launch": "true"}, message),
}
PLACES = {"save-as": "Music/Interviews/interview.mp3", "write-error": "gone/write-error.wav"}  # of the file, where it matters


def take(program, folder, name, theme, scale):
    make, settings, arrange = SITUATIONS[name]
    with Desktop(sound=True, settings={"theme": theme, **settings}, scale=scale) as desktop:
        path = desktop.folder / PLACES.get(name, f"{name}.wav")
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(make() if make else b"")
        editor = Picture(desktop, program, path) if arrange is not message else Bystander(desktop, program, make and path)
        time.sleep(1)
        arrange(editor)
        time.sleep(0.1)
        target = Path(folder) / f"{name}-{theme}-{scale}.png"
        editor.screenshot(target)
        print(target, flush=True)


def main(program, folder, *names):
    Path(folder).mkdir(parents=True, exist_ok=True)
    for name in names or SITUATIONS:
        for theme in ("dark", "light"):
            for scale in (1, 2):
                take(program, folder, name, theme, scale)


if __name__ == "__main__":
    main(*sys.argv[1:])
