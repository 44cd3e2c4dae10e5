"""What becomes of a file that is changed, removed or locked under its window, and of the edits when the program is told to end."""
import os
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

from desktop import Desktop, Editor, wait_for, wav

FRAMES = 60000
BEFORE = wav([f - 30000 for f in range(FRAMES)])
REVERSED = wav([f - 30000 for f in reversed(range(FRAMES))])
NOBODY = 65534


def lasts(process, seconds=0.7):
    time.sleep(seconds)
    return process.poll() is None


def edited(desktop, program, path):
    editor = Editor(desktop, program, path)
    editor.key("ctrl+a", "shift+r")
    return editor


def changed_or_removed(desktop, program, folder):
    for name, trouble in (("changed", lambda p: p.write_bytes(wav([7]))), ("removed", os.remove)):
        path = folder / f"{name}.wav"
        path.write_bytes(BEFORE)
        editor = edited(desktop, program, path)
        trouble(path)
        now = path.exists() and path.read_bytes()
        editor.key("ctrl+s")
        time.sleep(0.5)
        assert (path.exists() and path.read_bytes()) == now, f"a {name} file was saved without a question"
        editor.key("Return")  # Cancel: what is there is another's
        time.sleep(0.3)
        assert (path.exists() and path.read_bytes()) == now, f"Cancel saved a {name} file"
        editor.key("ctrl+s")
        time.sleep(0.5)
        editor.key("Tab", "Return")  # Save Anyway
        wait_for(f"the {name} file", lambda: path.exists() and path.read_bytes() == REVERSED)
        editor.key("ctrl+w")
        assert editor.process.wait(10) == 0


def told_to_end(desktop, program, folder):
    path = folder / "ended.wav"
    path.write_bytes(BEFORE)
    clean = Editor(desktop, program, path)
    clean.process.send_signal(signal.SIGTERM)
    assert clean.process.wait(10) == 0, "without edits it ends at once"

    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        editor = edited(desktop, program, path)
        editor.process.send_signal(number)  # at once
        assert editor.process.wait(10) == 0
        assert path.read_bytes() == BEFORE, "nobody was there to say that it is to be saved"
        again = Editor(desktop, program, path)
        question = wait_for("the question", lambda: desktop.output(
            ["xdotool", "search", "--onlyvisible", "--name", "^Kiv Audio Editor$"]).split())
        desktop.do("windowactivate", "--sync", question[0])
        again.key("Return")  # Restore
        wait_for("the mark of what is not saved", lambda: "*" in again.title())
        again.key("ctrl+s")
        wait_for("the save", lambda: path.read_bytes() == REVERSED)
        again.key("ctrl+w")
        assert again.process.wait(10) == 0
        path.write_bytes(BEFORE)


def unreadable(desktop, program, folder):
    """However close together they fail, the window for dropping files comes beside their messages."""
    paths = [folder / f"unreadable-{i}.wav" for i in range(6)]
    for path in paths:
        path.write_bytes(b"RIFF")
    process = desktop.start([program, *map(str, paths)])
    wait_for("the messages and the drop window", lambda: len(desktop.output(
        ["xdotool", "search", "--onlyvisible", "--name", "^Kiv Audio Editor$"]).split()) == len(paths) + 1)
    process.kill()
    process.wait()


def windows(desktop):
    found = desktop.output(["xdotool", "search", "--onlyvisible", "--name", "quit.*Kiv Audio Editor"]).split()
    return {desktop.output(["xdotool", "getwindowname", window]).split(".")[0]: window for window in found}


def active(desktop):
    return desktop.output(["xdotool", "getactivewindow", "getwindowname"])


def quit_with_windows(desktop, program, folder):
    """One window asks after the other; the first Cancel keeps all of them, and no other question is left standing."""
    paths = [folder / f"{name}.wav" for name in ("quit-one", "quit-two", "quit-clean")]
    for path in paths:
        path.write_bytes(BEFORE)
    again = folder / "quit-two-again.wav"
    again.symlink_to(paths[1])
    editor = Editor(desktop, program, paths[0], *map(str, paths[1:]), str(again))
    wait_for("all windows", lambda: len(windows(desktop)) == 3)
    assert "quit-two-again" not in windows(desktop), "a file has one window"
    for name in ("quit-two", "quit-one"):
        desktop.do("windowactivate", "--sync", windows(desktop)[name])
        editor.key("ctrl+a", "shift+r")

    def ask():
        desktop.do("windowactivate", "--sync", windows(desktop)["quit-clean"])
        editor.key("ctrl+q")
        asking = wait_for("a question", lambda: next((n for n in ("quit-one", "quit-two") if n in active(desktop)), None))
        time.sleep(0.3)
        return asking, "quit-two" if asking == "quit-one" else "quit-one"

    asking, other = ask()
    editor.key("Escape")
    assert lasts(editor.process) and len(windows(desktop)) == 3, "Cancel closed a window"
    desktop.do("windowactivate", "--sync", windows(desktop)[other])
    editor.key("Return")
    assert lasts(editor.process) and len(windows(desktop)) == 3
    assert all(path.read_bytes() == BEFORE for path in paths), "a question was left standing in another window"

    asking, other = ask()
    editor.key("Return")  # Save
    wait_for("the next question", lambda: other in active(desktop))
    time.sleep(0.3)
    assert (folder / f"{asking}.wav").read_bytes() == REVERSED and len(windows(desktop)) == 3
    editor.key("Tab", "Return")  # Don't Save
    assert editor.process.wait(10) == 0
    assert (folder / f"{other}.wav").read_bytes() == BEFORE


def read_only(kiv, folder):
    """As another user than root, who may write anything. In a folder of that user's own, so that a rename would be allowed."""
    home = folder / "nobody"
    home.mkdir()
    path = home / "locked.wav"
    path.write_bytes(BEFORE)
    path.chmod(0o444)
    as_user = []
    if os.getuid() == 0:
        os.chown(home, NOBODY, NOBODY)
        os.chown(path, NOBODY, NOBODY)
        folder.chmod(0o755)
        # A copy of the program where that user can reach it.
        kiv = shutil.copy(kiv, home / "kiv")
        as_user = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
    run = subprocess.run([*as_user, str(kiv), "edit", str(path), "reverse"], capture_output=True, text=True)
    assert run.returncode == 1 and "Permission denied" in run.stderr, run
    assert path.read_bytes() == BEFORE and [p.name for p in home.iterdir() if p.name.startswith(".")] == []


def main(program):
    with Desktop() as desktop:
        changed_or_removed(desktop, program, desktop.folder)
        told_to_end(desktop, program, desktop.folder)
        quit_with_windows(desktop, program, desktop.folder)
        unreadable(desktop, program, desktop.folder)
        read_only(Path(program).parent / "kiv", desktop.folder)
    print("nothing was lost unasked")


main(sys.argv[1])
