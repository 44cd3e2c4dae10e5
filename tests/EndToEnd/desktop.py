"""A desktop of the test's own: X server, window manager, session bus, sound server, and the editor with a file in it."""
import os
import shutil
import signal
import struct
import subprocess
import tempfile
import time
from pathlib import Path


def wait_for(what, condition, seconds=20.0):
    """The condition's first true value; fails the test when there is none in time."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.02)
    raise AssertionError(f"waited {seconds} s in vain for {what}")


class Desktop:
    """Starts everything on entry and stops everything on exit, whatever happens between. `settings` are the editor's stored
    ones, by key; `scale` is device pixels a logical one, on a screen that has room for a window of 1280 x 800."""

    def __init__(self, sound=False, settings=None, scale=1):
        self.sound = sound
        self.settings = settings or {}
        self.scale = scale
        self.children = []

    def __enter__(self):
        try:
            self.set_up()
        except BaseException:
            self.__exit__()
            raise
        return self

    def set_up(self):
        self.folder = Path(tempfile.mkdtemp(prefix="kiv-desktop-"))
        runtime = self.folder / "run"
        runtime.mkdir(mode=0o700)
        self.env = {**os.environ, "XDG_RUNTIME_DIR": str(runtime), "XDG_CONFIG_HOME": str(self.folder / "config"),
                    "XDG_STATE_HOME": str(self.folder / "state"), "HOME": str(self.folder), "QT_QPA_PLATFORM": "xcb"}
        for name in ("WAYLAND_DISPLAY", "PULSE_SERVER", "DBUS_SESSION_BUS_ADDRESS", "QT_SCALE_FACTOR"):
            self.env.pop(name, None)
        if self.scale != 1:
            self.env["QT_SCALE_FACTOR"] = str(self.scale)
        if self.settings:
            stored = self.folder / "config" / "kiv-audio-editor" / "settings"
            stored.parent.mkdir(parents=True)
            stored.write_text("".join(f"{key}={value}\n" for key, value in self.settings.items()))
        read, write = os.pipe()
        screen = f"{round(1400 * self.scale)}x{round(900 * self.scale)}x24"
        self.start(["Xvfb", "-displayfd", str(write), "-screen", "0", screen, "-nolisten", "tcp"], pass_fds=[write])
        os.close(write)
        self.env["DISPLAY"] = ":" + os.read(read, 16).decode().strip()
        wait_for("the window manager", self.has_window_manager)
        if self.sound:
            self.start_sound()

    def has_window_manager(self):
        """Starts it if it is not there: on a busy machine it may come too early for the X server and go again."""
        if not any(child.args[0] == "openbox" and child.poll() is None for child in self.children):
            self.start(["openbox"])
            time.sleep(0.2)
        return "window id" in self.output(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"])

    def start_sound(self):
        socket = Path(self.env["XDG_RUNTIME_DIR"]) / "pulse" / "native"
        socket.parent.mkdir(mode=0o700)
        self.start(["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--disallow-exit",
                    "-L", f"module-native-protocol-unix auth-anonymous=1 socket={socket}",
                    "-L", "module-null-sink sink_name=null rate=44100 format=float32le channels=2"])
        self.env["PULSE_SERVER"] = f"unix:{socket}"
        wait_for("the sound server", lambda: "null" in self.output(["pactl", "list", "short", "sinks"]))

    def __exit__(self, *_):
        for child in reversed(self.children):
            if child.poll() is None:
                child.send_signal(signal.SIGTERM)
        for child in reversed(self.children):
            try:
                child.wait(1)
            except subprocess.TimeoutExpired:
                child.send_signal(signal.SIGTERM)  # the first one may ask about unsaved changes
            try:
                child.wait(5)
            except subprocess.TimeoutExpired:
                child.kill()
                child.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def start(self, command, **options):
        child = subprocess.Popen(command, env=self.env, stdin=subprocess.DEVNULL,
                                 stdout=options.pop("stdout", subprocess.DEVNULL), stderr=subprocess.DEVNULL, **options)
        self.children.append(child)
        return child

    def output(self, command):
        return subprocess.run(command, env=self.env, capture_output=True, text=True).stdout

    def do(self, *words):
        subprocess.run(["xdotool", *map(str, words)], env=self.env, check=True)


class Editor:
    """The program with one file open, its window at a known place."""

    def __init__(self, desktop, program, path, *options, **start):
        self.desktop = desktop
        self.process = desktop.start([program, *options, str(path)], **start)
        self.name = Path(path).name
        self.window = wait_for("the window", self.find)
        desktop.do("windowactivate", "--sync", self.window)
        desktop.do("windowsize", "--sync", self.window, round(1280 * desktop.scale), round(800 * desktop.scale))
        time.sleep(0.5)
        place = dict(line.split("=") for line in
                     desktop.output(["xdotool", "getwindowgeometry", "--shell", self.window]).splitlines() if "=" in line)
        self.width, self.height = int(place["WIDTH"]), int(place["HEIGHT"])

    def find(self):
        found = self.desktop.output(["xdotool", "search", "--onlyvisible", "--name", f"{self.name}.*Kiv Audio Editor"])
        return found.split()[0] if found.split() else None

    def title(self):
        return self.desktop.output(["xdotool", "getwindowname", self.window]).strip()

    def key(self, *names):
        for name in names:
            self.desktop.do("key", name)
            time.sleep(0.1)

    def move(self, x, y):
        self.desktop.do("mousemove", "--window", self.window, x, y)

    def drag(self, from_x, to_x, y):
        """Presses, moves in small steps and lets go; pixels of the window."""
        self.move(from_x, y)
        self.desktop.do("mousedown", 1)
        steps = 12
        for i in range(1, steps + 1):
            self.move(from_x + (to_x - from_x) * i // steps, y)
            time.sleep(0.01)
        self.desktop.do("mouseup", 1)
        time.sleep(0.2)

    def screenshot(self, path):
        subprocess.run(["import", "-window", self.window, str(path)], env=self.desktop.env, check=True)


GUTTER = 44  # pixels left of the waveform


def chunk(name, payload):
    return name + struct.pack("<I", len(payload)) + payload + b"\0" * (len(payload) & 1)


def wav(samples, channels=1, rate=44100, extra=b""):
    """A 16-bit WAV file of interleaved integers, with further chunks after the audio."""
    data = struct.pack(f"<{len(samples)}h", *samples)
    fmt = struct.pack("<HHIIHH", 1, channels, rate, rate * channels * 2, channels * 2, 16)
    body = b"WAVE" + chunk(b"fmt ", fmt) + chunk(b"data", data) + extra
    return b"RIFF" + struct.pack("<I", len(body)) + body


def chunks_of(file):
    """(id, payload) of every chunk of a WAV file."""
    found, at = [], 12
    while at + 8 <= len(file):
        size = struct.unpack_from("<I", file, at + 4)[0]
        found.append((file[at:at + 4], file[at + 8:at + 8 + size]))
        at += 8 + size + (size & 1)
    return found
