"""Kills the program while it is edited in its window, starts it again, has it restore what was done, and counts what is lost.

usage: crashes.py PROGRAM [PORTAL [KILLS]]"""
import json
import random
import shutil
import subprocess
import sys
import threading
import time

from desktop import GUTTER, Desktop, Editor, chunks_of, wait_for, wav

FRAMES = 60000
BEFORE = wav([f - 30000 for f in range(FRAMES)])
DELAY = 0.5  # an edit that is as old as this may not be lost


class Watched:
    """The editor, and how many frames its document had when."""

    def __init__(self, desktop, program, path):
        self.desktop = desktop
        self.reports = []
        self.editor = Editor(desktop, program, path, "--state-report", stdout=subprocess.PIPE)
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.editor.process.stdout:
            self.reports.append((time.monotonic(), json.loads(line)["frames"]))

    def frames(self):
        return self.reports[-1][1] if self.reports else FRAMES

    def question(self):
        found = self.desktop.output(["xdotool", "search", "--onlyvisible", "--name", "^Kiv Audio Editor$"]).split()
        return found[0] if found else None

    def answer(self, *answers):
        """Each by the keys that press its button."""
        for keys in answers:
            window = wait_for("the question", self.question)
            time.sleep(0.3)
            self.desktop.do("windowactivate", "--sync", window)
            self.editor.key(*keys)
            wait_for("the question's end", lambda: self.question() != window)

    def end(self):
        self.editor.process.kill()
        self.editor.process.wait()
        return time.monotonic()


def left(desktop):
    folder = desktop.folder / "state" / "kiv-audio-editor" / "journals"
    return sorted(path.name for path in folder.iterdir()) if folder.exists() else []


def killed(desktop, program, path, chance):
    """One life: pastes until it is killed. Returns the pastes that may not be lost, and those that came back."""
    path.write_bytes(BEFORE)
    watched = Watched(desktop, program, path)
    from_x = GUTTER + 200 + chance.randrange(400)
    watched.editor.drag(from_x, from_x + 50, watched.editor.height // 2)
    watched.editor.key("ctrl+c")
    for _ in range(chance.randrange(3, 9)):
        desktop.do("key", "1", "ctrl+v")  # at the start
        time.sleep(chance.random() * 0.15)
    wait_for("an edit", lambda: watched.frames() != FRAMES)
    time.sleep(chance.random() * 0.6)
    end = watched.end()
    lengths = sorted({frames for _, frames in watched.reports if frames > FRAMES})
    safe = max((frames for when, frames in watched.reports if when < end - DELAY), default=FRAMES)
    assert path.read_bytes() == BEFORE, "the file is not as it was"

    again = Watched(desktop, program, path)
    again.answer(["Return"])  # Restore
    wait_for("what was done", lambda: again.frames() != FRAMES)
    found = again.frames()
    assert found in lengths, f"{found} frames were there never: {lengths}"
    again.editor.key("ctrl+s")
    wait_for("the save", lambda: len(dict(chunks_of(path.read_bytes()))[b"data"]) == 2 * found)
    wait_for("the journal's end", lambda: not left(desktop))
    again.editor.key("ctrl+w")
    assert again.editor.process.wait(10) == 0
    return found >= safe


def later_and_discard(desktop, program, path):
    path.write_bytes(BEFORE)
    watched = Watched(desktop, program, path)
    watched.editor.key("ctrl+a", "shift+r")
    wait_for("the journal", lambda: "1.journal" in left(desktop))
    time.sleep(DELAY)
    watched.end()
    later, second = ["Escape"], ["Tab", "Return"]  # of the buttons, which is Discard
    for answers, stays in (([later], True), ([second, ["Return"], later], True), ([second, second], False)):
        again = Watched(desktop, program, path)
        again.answer(*answers)
        again.editor.key("ctrl+w")
        assert again.editor.process.wait(10) == 0
        assert bool(left(desktop)) == stays, left(desktop)
    quiet = Watched(desktop, program, path)
    time.sleep(0.5)
    assert not quiet.question(), "what was discarded is asked about again"
    quiet.end()
    assert path.read_bytes() == BEFORE


def asks_above_the_document(desktop, program, path):
    """Which takes longer to be read than the question to be found."""
    path.write_bytes(wav(list(range(-30000, 30000)) * 150))
    watched = Watched(desktop, program, path)
    watched.editor.key("ctrl+a", "shift+r")
    wait_for("the journal", lambda: "1.journal" in left(desktop))
    time.sleep(3 * DELAY)
    watched.end()
    again = desktop.start([program, path])
    active = ["xdotool", "getactivewindow", "getwindowname"]
    wait_for("the question", lambda: desktop.output(active).strip() == "Kiv Audio Editor")
    time.sleep(DELAY)
    assert desktop.output(active).strip() == "Kiv Audio Editor"
    again.kill()
    shutil.rmtree(desktop.folder / "state")


def full_or_locked(desktop, program, path):
    """A folder that cannot be written to stops nobody from editing and saving."""
    path.write_bytes(BEFORE)
    state = desktop.folder / "state"
    subprocess.run(["rm", "-rf", state], check=True)
    state.write_text("no folder")
    watched = Watched(desktop, program, path)
    watched.editor.key("ctrl+a", "shift+r", "ctrl+s")
    wait_for("the save", lambda: path.read_bytes() != BEFORE)
    watched.end()
    state.unlink()


def main(program, _portal=None, kills="4"):
    chance = random.Random(11)
    with Desktop() as desktop:
        path = desktop.folder / "crash.wav"
        later_and_discard(desktop, program, path)
        asks_above_the_document(desktop, program, path)
        lost = sum(not killed(desktop, program, path, chance) for _ in range(int(kills)))
        full_or_locked(desktop, program, path)
    print(f"{kills} kills, files damaged: 0, edits lost: {lost}")
    assert lost == 0


main(*sys.argv[1:])
