"""Ends the program from outside after an edit, in every way a desktop knows, and looks what the next start offers back.

usage: endings.py PROGRAM [PORTAL]"""
import signal
import sys
import time

from desktop import Desktop, Editor, wait_for, wav
from session_manager import SessionManager

BEFORE = wav([f - 30000 for f in range(60000)])


def asks(desktop):
    return desktop.output(["xdotool", "search", "--onlyvisible", "--name", "^Kiv Audio Editor$"]).split()


def is_offered(program, path, state):
    """Whether the next start, on a screen of its own, offers the document."""
    assert path.read_bytes() == BEFORE, "the file is not as it was"
    is_kept = any((state / "kiv-audio-editor" / "journals").glob("*.journal"))
    with Desktop() as desktop:
        desktop.env["XDG_STATE_HOME"] = str(state)
        editor = Editor(desktop, program, path)
        if is_kept:
            wait_for("the question", lambda: asks(desktop))
        else:
            time.sleep(0.5)
            assert not asks(desktop)
        editor.process.kill()
    return is_kept


class Scene:
    """A desktop with a session, the editor in it, and an edit just made."""

    def __init__(self, program, manager):
        self.manager = manager
        self.desktop = Desktop()
        self.desktop.__enter__()
        self.desktop.env["SESSION_MANAGER"] = manager.address
        self.path = self.desktop.folder / "ended.wav"
        self.path.write_bytes(BEFORE)
        self.editor = Editor(self.desktop, program, self.path)
        self.wait("saved")  # as it is asked to at first
        self.editor.key("ctrl+a", "shift+r")

    def wait(self, event):
        wait_for(f"the program that {event}", lambda: event in self.manager.events)

    def ended(self):
        wait_for("the end", lambda: self.editor.process.poll() is not None, 5)
        return self.editor.process.returncode

    def runs_on(self):
        time.sleep(0.5)
        return self.editor.process.poll() is None

    def answer(self, *keys):
        """The question that the end of the session brings up."""
        self.manager.end_session(may_ask=True)
        self.wait("asks")
        time.sleep(0.5)
        self.editor.key(*keys)


def by_signal(number):
    def end(scene):
        scene.editor.process.send_signal(number)
        assert scene.ended() == 0
    return end


def by_loss_of_the_screen(scene):
    scene.desktop.children[0].kill()
    scene.ended()


def by_the_session(scene):
    scene.manager.end_session(may_ask=False)
    scene.wait("saved")
    scene.manager.let_die()
    assert scene.ended() == 0


def by_the_session_given_up(scene):
    scene.answer("Tab", "Return")  # Don't Save
    scene.wait("saved")
    scene.manager.let_die()
    assert scene.ended() == 0


def by_the_session_called_off_here(scene):
    scene.answer("Escape")
    scene.wait("calls it off")
    scene.manager.call_off()
    assert scene.runs_on()


def by_the_session_called_off_elsewhere(scene):
    """What was answered then does not count any more."""
    scene.answer("Tab", "Return")
    scene.wait("saved")
    scene.manager.call_off()
    scene.editor.key("ctrl+q")
    assert scene.runs_on()


ENDINGS = [(by_signal(signal.SIGTERM), True), (by_signal(signal.SIGINT), True), (by_signal(signal.SIGHUP), True),
           (by_loss_of_the_screen, True), (by_the_session, True), (by_the_session_given_up, False),
           (by_the_session_called_off_here, True), (by_the_session_called_off_elsewhere, True)]


def main(program, _portal=None):
    manager = SessionManager()
    for end, keeps in ENDINGS:
        scene = Scene(program, manager)
        try:
            end(scene)
            if scene.editor.process.poll() is None:
                scene.editor.process.kill()
            offered = is_offered(program, scene.path, scene.desktop.folder / "state")
            assert offered == keeps, f"{end.__name__}: offered {offered}"
        finally:
            scene.desktop.__exit__()
            manager.forget()


main(*sys.argv[1:])
