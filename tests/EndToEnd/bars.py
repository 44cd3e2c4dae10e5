"""Walks the bars around the waveform with real pointer, wheel and keys, and reads from the screen what each step did."""
import math
import struct
import subprocess
import sys
import time

from desktop import GUTTER, Desktop, Editor, chunk, wait_for
from screen import Picture, mix, near, rgb

RATE, SECONDS = 48000, 10
MARKS, LOOP, LOUD_AT = (1.0, 4.0), (2.0, 6.0), 3.1  # seconds
WIDTH, HEIGHT = 1280, 800
BAR, OVERVIEW, RULER, LANE, WAVE, INFO = 50, 94, 127, 149, 160, 786  # a row in each part
POSITION, MAX, CORNER, VERTICAL = (180, 36, 112, 28), (844, 37, 104, 26), (8, 118, 30, 14), (0, 160, 44, 600)
GO_TO_START, PLAY, GO_TO_END, LOOP_BUTTON, FOLLOW = 28, 70, 116, 152, 1252
VERTICAL_OUT, VERTICAL_VALUE, VERTICAL_IN = 981, 1026, 1071
ZOOM_OUT, ZOOM_IN, ZOOM_FIT, ZOOM_SELECTION = 1119, 1150, 1181, 1212

DARK = {name: rgb(value) for name, value in dict(
    bar="1F2329", button="2A2F37", action="23416C", text="DCE1E8", accent="7FB2FF", wave="121519", cursor="F4F7FA",
    marker="F2C063", playhead="FF8468", over="FF5F5F", dialog="272C34").items()}
HAIRLINE = mix(DARK["bar"], DARK["text"], 0.14)
SELECTED = mix(DARK["wave"], rgb("A9C9FF"), 0x30 / 255)
BOX = mix(DARK["wave"], DARK["text"], 0.85)


def sound():
    """A quiet tone in float with one sample above full scale, two cue points and a loop."""
    samples = [0.02 * math.sin(i / 20) for i in range(RATE * SECONDS)]
    samples[int(LOUD_AT * RATE)] = 1.5
    data = struct.pack(f"<{len(samples)}f", *samples)
    cues = b"".join(struct.pack("<II4sIII", i + 1, int(s * RATE), b"data", 0, 0, int(s * RATE)) for i, s in enumerate(MARKS))
    loop = struct.pack("<6I", 0, 0, int(LOOP[0] * RATE), int(LOOP[1] * RATE) - 1, 0, 0)
    body = b"WAVE" + chunk(b"fmt ", struct.pack("<HHIIHH", 3, 1, RATE, RATE * 4, 4, 32)) + chunk(b"data", data)
    body += chunk(b"cue ", struct.pack("<I", len(MARKS)) + cues)
    body += chunk(b"smpl", struct.pack("<9I", 0, 0, 20833, 60, 0, 0, 0, 1, 0) + loop)
    return b"RIFF" + struct.pack("<I", len(body)) + body


class Bars(Editor):
    """The window, its state as far as it can be seen, and what a hand does to it."""

    def picture(self):
        return Picture(self.desktop, self.window)

    def click(self, x, y, times=1):
        self.move(x, y)
        self.desktop.do("click", "--repeat", times, "--delay", 40, 1)

    def wheel(self, x, y, notches):
        self.move(x, y)
        self.desktop.do("click", "--repeat", abs(notches), "--delay", 20, 4 if notches > 0 else 5)

    def grab(self, *places, release=True):
        """Presses at the first place and moves through the others."""
        self.move(*places[0])
        self.desktop.do("mousedown", 1)
        for from_, to in zip(places, places[1:]):
            for i in range(1, 9):
                self.move(*(a + (b - a) * i // 8 for a, b in zip(from_, to)))
                time.sleep(0.01)
        if release:
            self.desktop.do("mouseup", 1)

    def type(self, text, *keys):
        self.desktop.do("type", "--delay", 15, text)
        self.key(*keys)

    def view(self, picture=None):
        """Seconds from … to, by the overview's box. Where it has one side, the cursor stands on the other."""
        picture = picture or self.picture()
        sides = picture.columns(BOX, 82, GUTTER, tolerance=7)
        if len(sides) == 1:
            sides = sorted(sides + picture.columns(DARK["cursor"], 82, GUTTER))
        per_column = SECONDS / (WIDTH - GUTTER)
        return ((sides[0] - GUTTER) * per_column, (sides[-1] + 1 - GUTTER) * per_column) if sides else (0, SECONDS)

    def column(self, seconds, view=None):
        lo, hi = view or self.view()
        return GUTTER + (seconds - lo) / (hi - lo) * (WIDTH - GUTTER)

    def cursor(self):
        """Its column, or None when it is not in view."""
        found = self.picture().columns(DARK["cursor"], LANE, GUTTER)
        return found[0] if found else None

    def selection(self):
        found = self.picture().columns(SELECTED, WAVE, GUTTER)
        return (found[0], found[-1] + 1) if found else None

    def is_on(self, x):
        return near(self.picture().at(x, BAR - 12), DARK["accent"], 20)  # also under the pointer

    def tips(self):
        """How many windows there are beside the editor's own."""
        return len(self.desktop.output(["xdotool", "search", "--onlyvisible", "--class", "kiv-audio-editor"]).split()) - 1

    def holds(self, what, condition):
        wait_for(what, condition, 4)

    def cursor_at(self, seconds):
        self.holds(f"the cursor at {seconds} s", lambda: (x := self.cursor()) and abs(x - self.column(seconds)) <= 2)

    def selected(self, lo, hi):
        wanted = self.column(lo), self.column(hi)
        self.holds(f"the selection of {lo} … {hi} s",
                   lambda: (now := self.selection()) and all(abs(a - b) <= 2 for a, b in zip(now, wanted)))

    def shows_view(self, lo, hi, tolerance=0.03):
        self.holds(f"the view of {lo:.3f} … {hi:.3f} s",
                   lambda: all(abs(a - b) <= tolerance for a, b in zip(self.view(), (lo, hi))))

    def stays(self, what, part):
        before = self.picture().part(part)
        return lambda: self.holds(f"{what} as before", lambda: self.picture().part(part) == before)

    def fit(self):
        self.key("a")
        self.shows_view(0, SECONDS)


def top_bar(bars):
    bars.click(GO_TO_END, BAR)
    bars.holds("the cursor at the end", lambda: bars.cursor() == WIDTH - 1)
    bars.click(GO_TO_START, BAR)
    bars.holds("the cursor at the start", lambda: bars.cursor() == GUTTER)
    bars.grab((GO_TO_END, BAR), (GO_TO_END, BAR + 60))
    assert bars.cursor() == GUTTER, "a press that is let go elsewhere acted"
    for button in (LOOP_BUTTON, FOLLOW):
        for wanted in (True, False):
            bars.click(button, BAR)
            bars.move(600, 400)
            bars.holds(f"{button} switched", lambda: bars.is_on(button) == wanted)

    bars.click(ZOOM_IN, BAR)
    bars.shows_view(0, SECONDS / 1.5)
    bars.click(ZOOM_OUT, BAR)
    bars.shows_view(0, SECONDS)
    bars.drag(400, 800, 400)
    bars.click(ZOOM_SELECTION, BAR)
    bars.shows_view(*((x - GUTTER) * SECONDS / (WIDTH - GUTTER) for x in (400, 800)))
    bars.click(ZOOM_FIT, BAR)
    bars.shows_view(0, SECONDS)
    bars.key("1")


def vertical_zoom(bars):
    looks = {0: bars.picture().part(VERTICAL)}
    for db, act in ((3, lambda: bars.click(VERTICAL_IN, BAR)), (6, lambda: bars.wheel(VERTICAL_VALUE, BAR, 1)),
                    (3, lambda: bars.wheel(VERTICAL_IN, BAR, -1)), (0, lambda: bars.click(VERTICAL_OUT, BAR)),
                    (6, lambda: bars.wheel(VERTICAL_OUT, BAR, 2)), (0, lambda: bars.click(VERTICAL_VALUE, BAR)),
                    (36, lambda: bars.wheel(VERTICAL_VALUE, BAR, 20)), (33, lambda: bars.wheel(VERTICAL_IN, BAR, -1)),
                    (0, lambda: bars.click(VERTICAL_VALUE, BAR))):
        act()
        bars.move(600, 400)
        if db in looks:
            bars.holds(f"the levels of {db} dB", lambda: bars.picture().part(VERTICAL) == looks[db])
        else:
            bars.holds(f"new levels at {db} dB", lambda: bars.picture().part(VERTICAL) not in looks.values())
            looks[db] = bars.picture().part(VERTICAL)
    for x in (ZOOM_IN, GO_TO_END, 700):
        bars.wheel(x, BAR, 3)
    bars.move(600, 400)
    time.sleep(0.2)
    assert bars.picture().part(VERTICAL) == looks[0] and bars.view() == (0, SECONDS), "the wheel acts beside its group"


def position(bars):
    x, y = 230, BAR
    for unit in ("Sec", "Smp"):
        for typed, seconds in (("2.5", 2.5), ("1500ms", 1.5), ("0:03,25", 3.25), ("24000smp", 0.5), ("12s", 10)):
            bars.click(x, y)
            bars.type(typed, "Return")
            bars.cursor_at(seconds)
        bars.click(CORNER[0], RULER)
    bars.move(x, y)
    time.sleep(0.2)
    as_before = bars.stays("the position", POSITION)
    bars.click(x, y)
    bars.type("1", "Escape")
    as_before()
    bars.click(x, y)
    bars.type("1x", "Return")
    bars.holds("the frame of what cannot be read", lambda: bars.picture().shows(DARK["over"], (170, 30, 130, 40)))
    bars.key("Escape")
    as_before()
    bars.cursor_at(10)
    bars.key("1")


def hover_and_tip(bars):
    rest, corner = bars.picture().at(GO_TO_END, BAR - 12), (GO_TO_END, BAR - 12)
    bars.move(GO_TO_END, BAR)
    bars.holds("the hover colour", lambda: near(bars.picture().at(*corner), mix(DARK["button"], DARK["text"], 0.08)))
    bars.desktop.do("mousedown", 1)
    bars.holds("the pressed colour", lambda: near(bars.picture().at(*corner), mix(DARK["button"], DARK["text"], 0.16)))
    bars.move(600, 400)
    bars.desktop.do("mouseup", 1)
    bars.holds("the colour at rest", lambda: bars.picture().at(*corner) == rest)
    bars.move(ZOOM_IN, BAR)
    rested = time.monotonic()
    early = bars.tips()
    assert early == 0 or time.monotonic() - rested > 0.6, "the tip comes too soon"
    bars.holds("the tip", lambda: bars.tips() == 1)
    assert time.monotonic() - rested > 0.55, "the tip came too soon"
    bars.desktop.do("mousedown", 1)
    bars.holds("no tip after the press", lambda: bars.tips() == 0)
    bars.move(600, 400)
    bars.desktop.do("mouseup", 1)


def overview(bars):
    def at(seconds):
        return round(GUTTER + seconds * (WIDTH - GUTTER) / SECONDS), OVERVIEW

    bars.grab(at(5), at(8))
    bars.shows_view(0, SECONDS)  # all is in view: nothing to take hold of
    bars.wheel(*at(4), 3)  # 1.25 a notch, the frame there stays where it stands in the view
    bars.shows_view(4 - 0.4 * 5.12, 4 + 0.6 * 5.12)
    bars.fit()
    bars.grab(at(2), at(4), release=False)
    bars.desktop.do("mouseup", 1)
    bars.drag(at(2)[0], at(4)[0], 400)
    bars.key("z")
    bars.shows_view(2, 4)
    bars.grab(at(3), at(5))  # the box
    bars.shows_view(4, 6)
    bars.grab(at(4), at(3))  # its left side
    bars.shows_view(3, 6)
    bars.grab(at(6), at(7))  # its right side
    bars.shows_view(3, 7)
    bars.grab(at(8), at(7.5))  # outside: centred there, and on
    bars.shows_view(5.5, 9.5)
    bars.grab(at(7), at(1), release=False)
    bars.shows_view(0, 4)
    bars.key("Escape")
    bars.shows_view(5.5, 9.5)
    bars.desktop.do("mouseup", 1)
    bars.click(*at(7), times=2)
    bars.shows_view(0, SECONDS)


def ruler(bars):
    seconds = bars.picture().part(CORNER)
    for x in (CORNER[0], 600):
        bars.click(x, RULER)
        bars.holds("samples", lambda: bars.picture().part(CORNER) != seconds)
        bars.grab((x, RULER), (x + 3, RULER))  # too little for a drag
        bars.holds("seconds", lambda: bars.picture().part(CORNER) == seconds)
    bars.drag(350, 850, 400)
    bars.key("z")
    bars.key("Escape")
    view = bars.view()
    width = view[1] - view[0]
    bars.grab((600, RULER), (700, RULER))
    moved = 100 * width / (WIDTH - GUTTER)
    bars.shows_view(view[0] - moved, view[1] - moved)
    bars.grab((700, RULER), (600, RULER))
    anchor = view[0] + (600 - GUTTER) * width / (WIDTH - GUTTER)
    for to, factor in ((RULER + 64, 0.5), (RULER, 1)):  # down and up again, around the frame that is held
        part = (600 - GUTTER) / (WIDTH - GUTTER) * width * factor
        bars.grab((600, RULER), (600, RULER + (64 if factor < 1 else -64)))
        bars.shows_view(anchor - part, anchor - part + width * factor)
    bars.grab((600, RULER), (900, RULER + 30), release=False)
    bars.key("Escape")
    bars.shows_view(*view)
    bars.desktop.do("mouseup", 1)
    bars.wheel(600, RULER, 2)
    bars.holds("a closer view", lambda: abs((v := bars.view())[1] - v[0] - width / 1.25 ** 2) < 0.03)
    assert bars.picture().part(CORNER) == seconds, "a drag switched the unit"
    bars.fit()


def marker_lane(bars):
    flag = [round(bars.column(mark)) + 5 for mark in MARKS]
    bars.click(flag[1], 144)
    bars.cursor_at(MARKS[1])
    bars.click(flag[0], 144, times=2)
    bars.selected(*MARKS)
    bars.click(round(bars.column(5)), 152, times=2)
    bars.selected(*LOOP)
    bars.grab((900, 144), (1100, 144))  # loops are made in their own mode alone
    bars.selected(*LOOP)
    bars.key("1")


def info_line(bars):
    bars.move(600, 400)
    pointer = (120, 774, 300, 24)
    bars.holds("what is under the pointer", lambda: bars.picture().shows(DARK["text"], pointer, 40))
    bars.move(600, BAR - 40)
    bars.holds("nothing under the pointer", lambda: not bars.picture().shows(DARK["text"], pointer, 40))
    bars.click(78, INFO)
    bars.type("2s", "Return")
    bars.cursor_at(2)
    bars.drag(400, 800, 400)
    start, end, length = 90, 145, 255
    for x, typed, wanted in ((start, "3", (3, None)), (end, "264000smp", (3, 5.5)), (length, "0:01", (3, 4)),
                             (start, "5", (4, 5))):
        bars.click(x, INFO)
        bars.type(typed, "Return")
        if wanted[1]:
            bars.selected(*wanted)
    bars.click(length, INFO)
    bars.type("9", "Escape")
    bars.selected(4, 5)
    bars.key("1")


def keyboard(bars):
    ring = {"top bar": (8, BAR, 4, 1), "overview": (0, OVERVIEW, 3, 1), "info line": (49, INFO, 7, 1)}

    def ringed(part):
        picture = bars.picture()
        return [name for name, box in ring.items() if picture.shows(DARK["accent"], box)] == ([part] if part else [])

    for key, parts in (("F6", ["top bar", "overview", "info line", None]), ("shift+F6", ["info line", "overview", "top bar", None]),
                       ("Tab", ["top bar"]), ("shift+Tab", [None]), ("shift+Tab", ["info line"]), ("Tab", [None])):
        for part in parts:
            bars.key(key)
            bars.holds(f"the ring at {part} after {key}", lambda: ringed(part))
    bars.key("F10", "Right", "Up", "Return")  # Edit, whose last one that can act is Select All
    bars.selected(0, SECONDS)
    bars.key("1")


def playing(bars):
    before = {part: bars.picture().part(part) for part in (POSITION, MAX)}
    bars.click(230, BAR)
    bars.type("2.7", "Return")
    for _ in range(6):
        bars.click(ZOOM_IN, BAR)
    bars.click(FOLLOW, BAR)
    view = bars.view()
    bars.click(PLAY, BAR)
    bars.holds("the playhead", lambda: bars.picture().columns(DARK["playhead"], LANE, GUTTER))
    assert bars.is_on(PLAY), "Play does not show that it plays"
    first = bars.picture().part(POSITION)
    bars.holds("the position running", lambda: bars.picture().part(POSITION) != first)
    bars.holds("the level above full scale", lambda: bars.picture().shows(DARK["over"], MAX, 60))
    bars.holds("the view turned", lambda: bars.view()[0] > view[0] + 0.3)
    bars.key("Escape")
    bars.holds("the stop", lambda: not bars.is_on(PLAY))
    bars.click(MAX[0] + 40, BAR)
    bars.click(FOLLOW, BAR)
    bars.key("1", "a")
    bars.move(600, 400)
    for part, look in before.items():
        bars.holds("bar and level as before", lambda: bars.picture().part(part) == look)


def small_windows(bars):
    filled = [DARK["button"], DARK["action"], DARK["accent"]]
    # width; runs of buttons; words, vertical zoom, level and position stand there or not
    for width, wanted in ((1120, (17, True, True)), (1119, (17, False, True)), (960, (17, False, True)), (959, (14, False, True)),
                          (800, (14, False, True)), (799, (13, False, True)), (660, (13, False, True)), (659, (13, False, False)),
                          (640, (13, False, False))):
        def seen():
            picture = bars.picture()
            runs = [run for run in picture.runs(filled, BAR - 11) if run[1] > 3]  # less is a corner
            if picture.width != width or len(runs) < 5:
                return None
            return len(runs), runs[4][1] > 40, picture.shows(DARK["text"], (184, 36, 100, 28)) and runs[4][0] > 300

        bars.desktop.do("windowsize", bars.window, width, 800)
        bars.holds(f"the bar at {width}", lambda: seen() == wanted)
    for height, wanted in ((560, [72, 116, 155]), (559, [72, 100, 139]), (440, [72, 100, 139]), (439, [72, 111]), (400, [72, 111])):
        bars.desktop.do("windowsize", bars.window, 700, height)
        bars.holds(f"the parts at {height}",
                   lambda: (p := bars.picture()).height == height and p.rows(HAIRLINE, 4, 60, 160) == wanted)
    bars.desktop.do("windowsize", bars.window, 300, 200)
    bars.holds("the smallest size", lambda: ((p := bars.picture()).width, p.height) == (640, 400))
    bars.desktop.do("windowsize", bars.window, WIDTH, HEIGHT)
    bars.holds("the first size", lambda: ((p := bars.picture()).width, p.height) == (WIDTH, HEIGHT))


def idle(bars):
    """An idle program is woken by nobody, once what was begun before has come to its end."""
    bars.move(600, 400)

    def switches():
        status = open(f"/proc/{bars.process.pid}/status").read()
        return int(status.split("voluntary_ctxt_switches:")[1].split()[0])

    def is_left_alone():
        before = switches()
        time.sleep(2.0)
        return switches() == before

    wait_for("2 s in which nothing wakes it", is_left_alone, 10)


def frame(desktop, window):
    told = desktop.output(["xwininfo", "-id", window])
    return tuple(int(told.split(name)[1].split()[0])
                 for name in ("Absolute upper-left X:", "Absolute upper-left Y:", "Width:", "Height:"))


def windows(desktop, program, path):
    """Two files in two windows of one program; the frame comes back, and comes back onto the screen."""
    settings = desktop.folder / "config" / "kiv-audio-editor" / "settings"
    other = path.with_name("other.wav")
    other.write_bytes(path.read_bytes())
    process = desktop.start([program, str(path), str(other)])

    def window(name):
        return desktop.output(["xdotool", "search", "--onlyvisible", "--name", f"^.?{name}.*Kiv Audio Editor"]).split()

    first, second = (wait_for(name, lambda: window(name))[0] for name in (path.name, other.name))
    assert frame(desktop, first)[:2] != frame(desktop, second)[:2], "one window hides the other"
    desktop.do("windowactivate", "--sync", second)
    desktop.do("key", "shift+r")
    wait_for("the mark of unsaved changes", lambda: "*" in desktop.output(["xdotool", "getwindowname", second]))
    assert "*" not in desktop.output(["xdotool", "getwindowname", first])
    desktop.do("key", "ctrl+z")
    wait_for("no mark", lambda: "*" not in desktop.output(["xdotool", "getwindowname", second]))
    desktop.do("windowsize", "--sync", second, 900, 600)
    desktop.do("windowmove", "--sync", second, 200, 120)
    wanted = wait_for("the new place", lambda: (now := frame(desktop, second))[2:] == (900, 600) and now)
    for name in (path.name, other.name):  # the one closed last is the one remembered
        desktop.do("windowactivate", "--sync", window(name)[0])
        desktop.do("key", "ctrl+w")
        time.sleep(0.3)
    assert process.wait(10) == 0
    for stored, found in ((None, wanted), ("5000 4000 900 600", None)):
        if stored:
            lines = [line for line in settings.read_text().splitlines() if "KivDocumentWindow" not in line]
            settings.write_text("\n".join(lines + [f"KivDocumentWindow={stored}"]) + "\n")
        process = desktop.start([program, str(path)])
        reopened = wait_for("the window again", lambda: window(path.name))[0]
        time.sleep(0.3)
        x, y, width, height = frame(desktop, reopened)
        if found:
            assert (x, y, width, height) == found, f"the frame came back as {x, y, width, height}, not {found}"
        assert x >= 0 and y >= 0 and x + width <= 1400 and y + height <= 900, f"at {x, y}, off the screen"
        desktop.do("windowactivate", "--sync", reopened)
        desktop.do("key", "ctrl+w")
        assert process.wait(10) == 0


def themes(desktop, program, portal, path):
    """The desktop turns dark and light; the window and its sheet follow at once and look as if they had been opened so."""
    bus = desktop.start(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE)
    desktop.env["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()
    settings = desktop.folder / "config" / "kiv-audio-editor" / "settings"
    looks = {}
    for name, scheme in (("light", 2), ("dark", 1)):
        settings.write_text(f"theme={name}\n")
        bars = Bars(desktop, program, path)
        bars.move(600, 400)
        bars.key("shift+g", "Tab")  # away from the blinking caret
        time.sleep(0.5)
        looks[scheme] = bars.picture().pixels
        bars.key("Escape", "ctrl+w")
        bars.process.wait(10)
    settings.write_text("theme=auto\n")
    teller = subprocess.Popen([portal], env=desktop.env, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    desktop.children.append(teller)

    def tell(scheme):
        teller.stdin.write(f"{scheme}\n")
        teller.stdin.flush()
        teller.stdout.readline()

    def shown():
        now = bars.picture().pixels
        assert now in looks.values(), "half dark, half light"
        return now

    tell(1)
    bars = Bars(desktop, program, path)
    bars.move(600, 400)
    bars.key("shift+g", "Tab")  # away from the blinking caret
    bars.holds("the dark look", lambda: bars.picture().pixels == looks[1])
    for scheme in (2, 1, 2, 1):
        tell(scheme)
        bars.holds(f"the look of scheme {scheme}", lambda: shown() == looks[scheme])
    bars.key("Escape", "ctrl+w")
    assert bars.process.wait(10) == 0
    teller.stdin.close()


def main(program, portal):
    with Desktop(sound=True, settings={"theme": "dark"}) as desktop:
        path = desktop.folder / "tone.wav"
        path.write_bytes(sound())
        bars = Bars(desktop, program, path)
        for part in (top_bar, vertical_zoom, position, hover_and_tip, overview, ruler, marker_lane, info_line, keyboard, playing,
                     small_windows, idle):
            began = time.monotonic()
            part(bars)
            print(f"{part.__name__} {time.monotonic() - began:.1f} s", flush=True)
        bars.key("ctrl+w")
        assert bars.process.wait(10) == 0
        windows(desktop, program, path)
        themes(desktop, program, portal, path)


main(*sys.argv[1:])
