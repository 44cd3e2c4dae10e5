"""Walks the waveform's rules with real keys, pointer and wheel, and reads after each what the editor says of its state."""
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
LOOP = [600 * PER_COLUMN, 700 * PER_COLUMN]
Y = 450  # in the waveform
LEFT, MIDDLE, RIGHT, UP, DOWN, SWIPE_LEFT, SWIPE_RIGHT = 1, 2, 3, 4, 5, 6, 7


def test_file():
    random.seed(1)
    samples = [round(12000 * math.sin(i / 40)) + random.randrange(-2000, 2000) for i in range(FRAMES)]
    records = b"".join(struct.pack("<II4sIII", i + 1, p, b"data", 0, 0, p) for i, p in enumerate(MARKS))
    loop = struct.pack("<7I", 0, 0, 0, 60, 0, 0, 0) + struct.pack("<2I", 1, 0)
    loop += struct.pack("<6I", 0, 0, LOOP[0], LOOP[1] - 1, 0, 0)
    return wav(samples, extra=chunk(b"cue ", struct.pack("<I", len(MARKS)) + records) + chunk(b"smpl", loop))


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
    editor.click(200)
    editor.expect("a press sets the cursor", cursor=at(200), selection=None)
    editor.drag_over(200, 350)
    editor.expect("a drag selects", selection=[at(200), at(350)], cursor=at(200))
    editor.drag_over(260, 150)
    editor.expect("backwards too", selection=[at(150), at(260)], cursor=at(150))
    editor.click(320, keys=["shift"])
    editor.expect("Shift extends from the farther edge", selection=[at(150), at(320)])
    editor.click(50)
    editor.click(80, keys=["shift"])
    editor.expect("else from the cursor", selection=[at(50), at(80)])


def edges(editor):
    editor.drag_over(200, 300)
    editor.drag_over(304, 350)
    editor.expect("an edge is caught four away and keeps its distance", selection=[at(200), at(346)])
    editor.drag_over(196, 150)
    editor.expect("the other one", selection=[at(154), at(346)])
    editor.drag_over(154, 380)
    editor.expect("past the other edge", selection=[at(346), at(380)])
    editor.drag_over(372, 250)
    editor.expect("eight away is a new selection", selection=[at(250), at(372)])


def sticking(editor):
    for to, wanted in ((396, MARKS[1]), (404, MARKS[1]), (392, at(392)), (597, LOOP[0]), (703, LOOP[1]), (1234, FRAMES)):
        state = editor.drag_over(450, to)
        ends = state["selection"]
        found = ends[0] if to < 450 else ends[1]
        exact = wanted in MARKS + LOOP + [FRAMES]
        assert found == wanted if exact else abs(found - wanted) <= PER_COLUMN, f"dragged to {to}: {found}, not {wanted}"
    editor.drag_over(450, 397, keys=["ctrl"])
    editor.expect("Ctrl is free", selection=[at(397), at(450)])
    assert editor.state()["selection"][0] != MARKS[1]
    editor.drag_over(403, 450)
    assert editor.state()["selection"][0] == MARKS[1], "where a selection begins sticks too"
    editor.hold(480, 397)
    for key, sticks in (("keydown", False), ("keyup", True)):
        editor.desktop.do(key, "ctrl")
        editor.wait("Ctrl to act while the pointer rests", lambda s: (s["selection"][0] == MARKS[1]) == sticks)
    editor.button(LEFT, False)
    editor.wait("the end of the drag", lambda s: not s["dragging"])


def clicks(editor):
    borders = sorted([0, *MARKS, *LOOP, FRAMES])
    for column in (50, 250, 500, 650, 800, 1000):
        lo = max(b for b in borders if b <= at(column))
        hi = min(b for b in borders if b > at(column))
        editor.click(column, times=2)
        editor.expect_exactly("a double click selects between marks", selection=[lo, hi])
    editor.click(250, times=3)
    editor.expect_exactly("a triple click selects everything", selection=[0, FRAMES])


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

    near, far, left, border = speed(COLUMNS + 6), speed(COLUMNS + 40), speed(-30), speed(COLUMNS - 1)
    assert 0 < near < far, f"{near:.0f} and {far:.0f} columns a second"
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
    editor.expect("a notch zooms", view=[under - (under / 1.25), FRAMES / 1.25])
    editor.wheel(UP, keys=["ctrl"])
    editor.expect("with Ctrl too", view=[under - under / 1.25 ** 2, FRAMES / 1.25 ** 2])
    editor.wheel(DOWN, 2)
    editor.expect("and back", view=[0, FRAMES])
    editor.wheel(UP, 8)
    first, visible = editor.wait("the view", lambda s: s["view"][1] < FRAMES / 5.9)["view"]
    for button, notches, keys, wanted in ((DOWN, 1, ["shift"], 0.1), (UP, 1, ["shift"], 0), (SWIPE_RIGHT, 2, [], 0.2),
                                          (SWIPE_LEFT, 2, [], 0)):
        editor.wheel(button, notches, keys=keys)
        editor.expect("a tenth of the view a notch", view=[first + wanted * visible, visible])
    editor.wheel(UP, 2, keys=["ctrl", "shift"])
    editor.expect_exactly("steps of 3 dB", verticalDb=6)
    editor.wheel(DOWN, 3, column=-20)
    editor.expect_exactly("over the gutter too", verticalDb=-3)
    editor.wheel(UP, column=-20)
    editor.expect_exactly("back to 0", verticalDb=0)
    editor.fit()
    editor.click(900)
    editor.hold(200, 300)
    editor.wheel(UP, 4, column=300)
    editor.expect("zooming does not take the edge off the pointer", PER_COLUMN, selection=[at(200), at(300)])
    editor.button(LEFT, False)
    editor.fit()


def keys(editor):
    start = MARKS[0] + 20 * PER_COLUMN
    screen = round(0.8 * FRAMES)
    for key, cursor in (("Left", start - PER_COLUMN), ("Right", start + PER_COLUMN), ("ctrl+Left", MARKS[0]),
                        ("ctrl+Right", MARKS[1]), ("Home", 0), ("End", FRAMES), ("Prior", max(start - screen, 0)),
                        ("Next", min(start + screen, FRAMES))):
        editor.click(250)
        editor.click(120)
        offset = editor.expect("the place to start from", cursor=at(120))["cursor"] - start
        editor.key(key)
        editor.expect(key, cursor=cursor if cursor in (0, FRAMES, *MARKS) else cursor + offset, selection=None)
        editor.click(250)
        editor.click(120)
        anchor = editor.expect("the place to start from", cursor=at(120))["cursor"]
        editor.key(f"shift+{key}")
        end = cursor if cursor in (0, FRAMES, *MARKS) else cursor + offset
        editor.expect(f"shift+{key}", selection=sorted([anchor, end]))
    editor.wheel(UP, 60, column=300)
    editor.key("Home", "Right", "Right")
    editor.expect_exactly("one frame when a frame is wider than a pixel", cursor=2)
    editor.key("Up", "Up", "Down")
    editor.expect_exactly("up and down zoom vertically", verticalDb=3)
    editor.key("Down")
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
        for rule in (presses, edges, sticking, clicks, escape, scrolling_past_a_side, view_by_the_middle_button, right_click,
                     wheels, keys, following, idle):
            rule(editor)
            print(f"{rule.__name__}: as it should be", flush=True)
        editor.key("ctrl+w")
        # The menu's cut was taken back, so nothing asks for saving.
        status = editor.process.wait(10)
        assert status == 0, f"the program ended with {status}"


main(sys.argv[1])
