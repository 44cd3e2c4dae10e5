"""A disk that does not answer: the windows go on, whatever is asked of it, and the program ends."""
import signal
import sys
import time
from pathlib import Path

from desktop import Desktop, Editor, wait_for, wav


def windows(desktop, name):
    return desktop.output(["xdotool", "search", "--onlyvisible", "--name", name]).split()


def ends(process):
    start = time.monotonic()
    assert process.wait(10) == 0
    assert time.monotonic() - start < 5


def edit(editor):
    wait_for("a window for what is being read", lambda: windows(editor.desktop, "^there.wav"))

    def is_edited():
        editor.desktop.do("windowactivate", "--sync", editor.window)  # another one may have come forward
        editor.key("ctrl+a", "shift+r")
        return "*" in editor.title()

    wait_for("the edit", is_edited)


def main(program, *_):
    with Desktop() as desktop:
        silent, held = desktop.folder / "silent", desktop.folder / "silent.held"
        silent.mkdir()
        first, here, there = desktop.folder / "first.wav", desktop.folder / "here.wav", silent / "there.wav"
        for path in (first, here, there):
            path.write_bytes(wav([1000, -1000] * 20000))
        (desktop.folder / "Music").symlink_to(silent)  # one of the places of the panel
        held.touch()
        desktop.env["LD_PRELOAD"] = str(Path(program).parent / "libkiv_test_silent_disk.so")

        editor = Editor(desktop, program, here, str(first), str(there))
        edit(editor)
        editor.key("ctrl+shift+s")
        wait_for("the panel", lambda: windows(desktop, "^Save As$"))
        editor.key("ctrl+a")
        desktop.do("type", str(silent / "new.wav"))
        editor.key("Return")
        time.sleep(0.5)
        assert windows(desktop, "^Save As$"), "nobody has answered"
        editor.key("Escape")
        wait_for("the panel's end", lambda: not windows(desktop, "^Save As$"), 5)
        desktop.do("windowactivate", "--sync", windows(desktop, "^there.wav")[0])
        editor.key("Escape")
        wait_for("the end of the reading", lambda: not windows(desktop, "^there.wav"), 5)
        desktop.do("windowactivate", "--sync", editor.window)
        editor.key("ctrl+z", "ctrl+q")
        ends(editor.process)

        editor = Editor(desktop, program, here, str(there))
        edit(editor)
        editor.process.send_signal(signal.SIGTERM)
        ends(editor.process)
        journals = desktop.folder / "state" / "kiv-audio-editor" / "journals"
        assert list(journals.glob("*.journal")), "the edit is kept"


if __name__ == "__main__":
    main(*sys.argv[1:])
