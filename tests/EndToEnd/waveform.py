"""Brings each kind of key, press, drag and wheel step to the waveform as a desktop does, and reads after each what the editor
says of its state. The rules themselves, case by case, are tested without a desktop."""
import json
import math
import os
import random
import struct
import sys
import time

from desktop import GUTTER, Desktop, Editor, chunk, wait_for, wav

COLUMNS = 1236
PER_COLUMN = 500
FRAMES = COLUMNS * PER_COLUMN
MARKS = [100 * PER_COLUMN, 400 * PER_COLUMN, 900 * PER_COLUMN]
Y = 450  # in the waveform
LEFT, MIDDLE, RIGHT, UP, DOWN, SWIPE_LEFT, SWIPE_RIGHT = 1, 2, 3, 4, 5, 6, 7


def test_file():
    random.seed(1)
    samples = [round(12000 * math.sin(i / 40)) + random.randrange(-2000, 2000) for i in range(FRAMES)]
    records = b"".join(struct.pack("<II4sIII", i + 1, p, b"data", 0, 0, p) for i, p in enumerate(MARKS))
    return wav(samples, extra=chunk(b"cue ", struct.pack("<I", len(MARKS)) + records))


class Watched(Editor):
    """An editor that tells its state. Places are columns of the waveform."""

    def __init__(self, desktop, program, path):
        self.told = desktop.folder / "told"
        self.pressed = (0, 0.0)  # the last press: its column, and when
        with open(self.told, "wb") as out:
            super().__init__(desktop, program, path, "--state-report", stdout=out)
        self.wait("the sound", lambda s: s["frames"] == FRAMES)
        assert self.width == GUTTER + COLUMNS, f"the window is {self.width} wide"

    def state(self):
        lines = self.told.read_bytes().split(b"\n")
        return json.loads(lines[-2]) if len(lines) > 1 else None

    def wait(self, what, holds, seconds=5.0):
        try:
            return wait_for(what, lambda: (s := self.state()) and holds(s) and s, seconds)
        except AssertionError as failed:
            raise AssertionError(f"{failed}: {self.state()}") from None

    def expect(self, what, slack=0, **wanted):
        """Frames may be off by what a column holds: the pointer has no better aim."""
        def near(a, b):
            if isinstance(b, list) and a is not None:
                return all(near(x, y) for x, y in zip(a, b))
            return a == b if a is None or b is None else abs(a - b) <= slack
        slack = max(slack, self.state()["view"][1] / COLUMNS)
        return self.wait(f"{what}: {wanted}", lambda s: all(near(s[key], value) for key, value in wanted.items()))

    def expect_exactly(self, what, **wanted):
        return self.wait(f"{what}: {wanted}", lambda s: all(s[key] == value for key, value in wanted.items()))

    def to(self, column, y=Y):
        self.move(GUTTER + column, y)

    def button(self, number, down):
        self.desktop.do("mousedown" if down else "mouseup", number)

    def aim(self, column):
        """Waits where a press would be taken for one more click of the last."""
        place, when = self.pressed
        if abs(column - place) < 10:
            time.sleep(max(0.0, when + 0.45 - time.monotonic()))
        self.pressed = (column, time.monotonic())
        self.to(column)

    def click(self, column, button=LEFT, times=1, keys=()):
        self.aim(column)
        for key in keys:
            self.desktop.do("keydown", key)
        self.desktop.do("click", "--repeat", times, "--delay", 60, button)
        for key in keys:
            self.desktop.do("keyup", key)

    def hold(self, column, to, button=LEFT, y=Y):
        """Presses and drags, and does not let go."""
        self.aim(column)
        self.button(button, True)
        for i in range(1, 9):
            self.to(column + (to - column) * i / 8, y)
        self.wait("the drag", lambda s: s["dragging"])

    def drag_over(self, column, to, keys=(), **how):
        self.hold(column, to, **how)
        for key in keys:
            self.desktop.do("keydown", key)
        if keys:
            self.to(to - 1)
            self.to(to)
        self.button(how.get("button", LEFT), False)
        for key in keys:
            self.desktop.do("keyup", key)
        return self.wait("the end of the drag", lambda s: not s["dragging"])

    def wheel(self, button, notches=1, column=300, y=Y, keys=()):
        self.to(column, y)
        for key in keys:
            self.desktop.do("keydown", key)
        self.desktop.do("click", "--repeat", notches, "--delay", 20, button)
        for key in keys:
            self.desktop.do("keyup", key)

    def fit(self):
        self.key("a")
        self.wait("the whole file in view", lambda s: s["view"] == [0, FRAMES])


def at(column):
    return round((column + 0.5) * PER_COLUMN)


def presses(editor):
    editor.drag_over(200, 350)
    editor.expect("a drag selects", selection=[at(200), at(350)], cursor=at(200))
    editor.click(400, keys=["shift"])
    editor.expect("Shift extends", selection=[at(200), at(400)])
    editor.drag_over(204, 150)
    editor.expect("an edge is caught four away and keeps its distance", selection=[at(146), at(400)])
    editor.click(50)
    editor.expect("a press sets the cursor", cursor=at(50), selection=None)
    editor.click(250, times=2)
    editor.expect_exactly("a double click selects between marks", selection=[MARKS[0], MARKS[1]])
    editor.click(600, times=3)
    editor.expect_exactly("a triple click selects everything", selection=[0, FRAMES])


def sticking(editor):
    editor.drag_over(450, 397, keys=["ctrl"])
    editor.expect("Ctrl is free", selection=[at(397), at(450)])
    editor.hold(480, 397)
    for key, sticks in (("keydown", False), ("keyup", True)):
        editor.desktop.do(key, "ctrl")
        editor.wait("Ctrl to act while the pointer rests", lambda s: (s["selection"][0] == MARKS[1]) == sticks)
    editor.button(LEFT, False)
    editor.wait("the end of the drag", lambda s: not s["dragging"])


def escape(editor):
    editor.drag_over(200, 300)
    editor.wheel(UP, 6)
    before = editor.wait("the view", lambda s: s["view"][1] < FRAMES / 3)
    editor.hold(500, 700)
    editor.wait("the selection", lambda s: s["selection"] != before["selection"])
    editor.key("Escape")
    after = editor.wait("the end of the drag", lambda s: not s["dragging"])
    editor.button(LEFT, False)
    time.sleep(0.2)
    assert editor.state() == after == before, f"{editor.state()}, not {before}"
    editor.fit()


def scrolling_past_a_side(editor):
    editor.wheel(UP, 12, column=600)
    editor.wait("the view", lambda s: s["view"][1] < FRAMES / 14)

    def speed(to):
        """Columns a second."""
        editor.hold(600, to)
        first = editor.state()["view"]
        time.sleep(0.6)
        second = editor.state()["view"]
        editor.button(LEFT, False)
        editor.wait("the end of the drag", lambda s: not s["dragging"])
        return (second[0] - first[0]) / (first[1] / COLUMNS) / 0.6

    left, border = speed(-30), speed(COLUMNS - 1)
    assert left < 0 < border, f"{left:.0f} and {border:.0f} columns a second"
    editor.fit()


def view_by_the_middle_button(editor):
    editor.wheel(UP, 8, column=600)
    first, visible = editor.wait("the view", lambda s: s["view"][1] < FRAMES / 5.9)["view"]
    cursor = editor.state()["cursor"]
    editor.drag_over(600, 500, button=MIDDLE)
    editor.expect("the view moves along", view=[first + 100 * visible / COLUMNS, visible], cursor=cursor)
    editor.fit()


def right_click(editor):
    editor.drag_over(200, 300)
    selection = editor.state()["selection"]
    editor.click(250, RIGHT)
    time.sleep(0.3)
    editor.key("Escape")
    editor.expect_exactly("inside, the selection stays", selection=selection)
    editor.click(800, RIGHT)
    editor.expect("outside, the cursor goes there first", cursor=at(800), selection=None)
    editor.key("Escape")
    editor.drag_over(200, 300)
    editor.key("Menu")
    time.sleep(0.3)
    editor.key("Down", "Return")  # Cut
    editor.wait("what the menu does", lambda s: s["frames"] < FRAMES)
    editor.key("ctrl+z")
    editor.wait("the sound as it was", lambda s: s["frames"] == FRAMES)
    editor.fit()


def wheels(editor):
    under = at(300)
    editor.wheel(UP)
    editor.expect("a notch zooms", view=[under - under / 1.25, FRAMES / 1.25])
    editor.wheel(UP, 7, keys=["ctrl"])
    first, visible = editor.wait("the view", lambda s: s["view"][1] < FRAMES / 5.9)["view"]
    for button, keys, wanted in ((DOWN, ["shift"], 0.1), (SWIPE_RIGHT, [], 0.2), (SWIPE_LEFT, [], 0.1)):
        editor.wheel(button, keys=keys)
        editor.expect("a tenth of the view a notch", view=[first + wanted * visible, visible])
    editor.wheel(UP, 2, keys=["ctrl", "shift"])
    editor.expect_exactly("steps of 3 dB", verticalDb=6)
    editor.wheel(DOWN, 2, column=-20)
    editor.expect_exactly("over the gutter too", verticalDb=0)
    editor.fit()
    editor.click(900)
    editor.hold(200, 300)
    editor.wheel(UP, 4, column=300)
    editor.expect("zooming does not take the edge off the pointer", PER_COLUMN, selection=[at(200), at(300)])
    editor.button(LEFT, False)
    editor.fit()


def keys(editor):
    editor.click(250)
    for key, cursor in (("ctrl+Left", MARKS[0]), ("Right", MARKS[0] + PER_COLUMN), ("ctrl+Right", MARKS[1]), ("End", FRAMES),
                        ("Home", 0), ("Next", round(0.8 * FRAMES)), ("Prior", 0)):
        editor.key(key)
        editor.expect_exactly(key, cursor=cursor, selection=None)
    editor.key("shift+ctrl+Right", "shift+Left")
    editor.expect_exactly("Shift selects", selection=[0, MARKS[0] - PER_COLUMN])
    editor.key("Up", "Up", "Down")
    editor.expect_exactly("up and down zoom vertically", verticalDb=3)
    editor.key("Down", "Home")
    editor.fit()


def following(editor):
    editor.click(100)
    editor.wheel(UP, 10, column=100)
    visible = editor.wait("the view", lambda s: s["view"][1] < FRAMES / 9.2)["view"][1]
    editor.key("space")
    start = editor.wait("playing", lambda s: s["playhead"])
    turned = editor.wait("the view to turn", lambda s: s["view"][0] > start["view"][0] + visible / 2, 15)
    place = (turned["playhead"] - turned["view"][0]) / visible
    assert 0 <= place < 0.3, f"the playhead stands at {place:.2f} of the view"
    editor.wheel(DOWN, 30, keys=["shift"])
    time.sleep(0.3)
    away = editor.state()["view"]
    time.sleep(1.0)
    assert editor.state()["playhead"] and editor.state()["view"] == away, "followed though the user looked elsewhere"
    editor.key("space")
    editor.wait("the stop", lambda s: s["playhead"] is None)
    editor.fit()


def idle(editor):
    """What a window that shows a sound does when nobody touches it: nothing."""
    def switches():
        total = 0
        tasks = f"/proc/{editor.process.pid}/task"
        # The thread sanitizer has a thread of its own, which wakes ten times a second: there only the main thread counts.
        for task in [str(editor.process.pid)] if "TSAN_OPTIONS" in os.environ else os.listdir(tasks):
            with open(f"{tasks}/{task}/status", encoding="ascii") as status:
                total += sum(int(line.split()[1]) for line in status if line.startswith("voluntary"))
        return total

    editor.to(700)
    time.sleep(2.5)
    before = switches()
    time.sleep(3.0)
    woken = switches() - before
    assert woken <= 3, f"an idle window woke {woken} times in three seconds"


def main(program):
    with Desktop(sound=True, settings={"follow_playhead": "true"}) as desktop:
        path = desktop.folder / "marks.wav"
        path.write_bytes(test_file())
        editor = Watched(desktop, program, path)
        for rule in (presses, sticking, escape, scrolling_past_a_side, view_by_the_middle_button, right_click, wheels, keys,
                     following, idle):
            rule(editor)
            print(f"{rule.__name__}: as it should be", flush=True)
        editor.key("ctrl+w")
        # The menu's cut was taken back, so nothing asks for saving.
        status = editor.process.wait(10)
        assert status == 0, f"the program ended with {status}"


main(sys.argv[1])
