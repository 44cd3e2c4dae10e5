"""Saves as another file in another format, over a file that is there, and a part, all by keys in the panels."""
import shutil
import struct
import subprocess
import sys
import time
from pathlib import Path

from desktop import Desktop, Editor, chunks_of, wait_for, wav

FRAMES = 60000
RAMP = [f - 30000 for f in range(FRAMES)]


class Panel:
    """A panel that asks where to save, once it is there and has the keyboard."""

    def __init__(self, editor, title):
        self.desktop, self.title = editor.desktop, title
        self.window = wait_for(title, self.find)
        wait_for("its focus", lambda: title in self.desktop.output(["xdotool", "getactivewindow", "getwindowname"]))
        time.sleep(0.3)

    def find(self):
        found = self.desktop.output(["xdotool", "search", "--onlyvisible", "--name", f"^{self.title}$"]).split()
        return found[0] if found else None

    def type(self, text):
        self.desktop.do("type", "--delay", 30, text)
        time.sleep(0.2)

    def key(self, *names):
        for name in names:
            self.desktop.do("key", name)
            time.sleep(0.1)

    def gone(self):
        wait_for("the panel's end", lambda: not self.find())
        time.sleep(0.4)


def written(path):
    return wait_for(path, lambda: path.exists() and path.stat().st_size > 1000 and path.read_bytes())


def other_format(desktop, program, editor):
    """Ctrl+Shift+S, a name, AIFF by its segment, Enter: the samples are the same with 24 bits, and the window moves there."""
    editor.key("ctrl+shift+s")
    panel = Panel(editor, "Save As")
    panel.type("in another form")
    panel.key("Tab", "Tab", "Tab", "Tab", "Tab", "Right", "Tab", "Right", "Return")  # AIFF; from 16 to 24
    panel.gone()
    found = written(desktop.folder / "in another form.aiff")
    assert found[:4] == b"FORM" and found[8:12] == b"AIFF", found[:12]
    common, sound = found.index(b"COMM") + 8, found.index(b"SSND") + 16
    assert struct.unpack_from(">hIh", found, common) == (1, FRAMES, 24)
    samples = [int.from_bytes(found[sound + 3 * i:sound + 3 * i + 3], "big", signed=True) for i in range(FRAMES)]
    assert samples == [value * 256 for value in RAMP], "the samples are not the same"
    wait_for("the new name in the title", lambda: "in another form.aiff" in desktop.output(
        ["xdotool", "getwindowname", editor.window]))


def over_another(desktop, editor):
    """A file that is there is not replaced by Enter, for Cancel is the default, which brings the panel back as it was."""
    path = desktop.folder / "there.wav"
    before = b"not to be lost"
    path.write_bytes(before)
    for answer, kept in (("Return", True), ("Tab", False)):
        editor.key("ctrl+shift+s")
        panel = Panel(editor, "Save As")
        panel.type("there.wav")
        panel.key("ctrl+a")
        panel.type("there.wav")
        panel.key("Return")
        panel.gone()
        editor.key(answer)
        if kept:
            Panel(editor, "Save As").key("Escape")
            panel.gone()
            assert path.read_bytes() == before, "replaced without being asked to"
        else:
            editor.key("Return")
            wait_for("the replaced file", lambda: path.read_bytes() != before)
            assert dict(chunks_of(written(path)))[b"data"], "no sound in it"


def part(desktop, editor):
    """Save Selection writes the frames between two places into a folder that is made on the way."""
    editor.key("Home")
    editor.drag(44 + 300, 44 + 700, editor.height // 2)
    editor.key("alt+shift+s")
    panel = Panel(editor, "Save Selection As")
    panel.key("ctrl+shift+n")
    panel.type("Parts")
    panel.key("Return")
    time.sleep(0.3)
    panel.key("ctrl+a")
    panel.type("one.wav")
    panel.key("Return")
    panel.gone()
    data = dict(chunks_of(written(desktop.folder / "Parts" / "one.wav")))[b"data"]
    samples = struct.unpack(f"<{len(data) // 2}h", data) if len(data) % 3 else None
    values = samples or [int.from_bytes(data[i:i + 3], "little", signed=True) // 256 for i in range(0, len(data), 3)]
    assert list(values) == list(range(values[0], values[0] + len(values))), "not a part of the sound"
    assert abs(len(values) - 400 * FRAMES / (editor.width - 44)) < 60, len(values)


def unwritable_format(desktop, program):
    """A file in a form that is only read asks for another one at once."""
    source, mp3 = desktop.folder / "talk.wav", desktop.folder / "talk.mp3"
    source.write_bytes(wav(RAMP[:FRAMES // 2]))
    if not shutil.which("ffmpeg"):
        return print("no ffmpeg: no MP3 made")
    subprocess.run(["ffmpeg", "-loglevel", "error", "-i", str(source), str(mp3)], check=True)
    source.unlink()
    editor = Editor(desktop, program, mp3)
    editor.key("ctrl+a", "shift+r", "ctrl+s")
    panel = Panel(editor, "Save As")
    panel.key("Return")
    panel.gone()
    assert written(desktop.folder / "talk.wav")[:4] == b"RIFF"
    editor.key("ctrl+w")
    assert editor.process.wait(10) == 0


def main(program):
    with Desktop() as desktop:
        path = desktop.folder / "ramp.wav"
        path.write_bytes(wav(RAMP))
        before = path.read_bytes()
        editor = Editor(desktop, program, path)
        other_format(desktop, program, editor)
        over_another(desktop, editor)
        part(desktop, editor)
        assert path.read_bytes() == before, "the first file changed"
        editor.key("ctrl+w")
        assert editor.process.wait(10) == 0
        unwritable_format(desktop, program)
    print("saved as another format, over a file and in part")


main(sys.argv[1])
