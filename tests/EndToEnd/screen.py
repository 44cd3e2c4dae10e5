"""What a window shows, pixel by pixel."""
import subprocess


def rgb(text):
    return tuple(int(text[i:i + 2], 16) for i in (0, 2, 4))


def mix(a, b, t):
    return tuple(round(x + (y - x) * t) for x, y in zip(a, b))


def near(a, b, tolerance=2):
    return all(abs(x - y) <= tolerance for x, y in zip(a, b))


class Picture:
    """A window's pixels, or all of the screen's for "root"."""

    def __init__(self, desktop, window):
        raw = subprocess.run(["import", "-window", window, "-depth", "8", "ppm:-"], env=desktop.env, capture_output=True,
                             check=True).stdout
        _, size, _, self.pixels = raw.split(b"\n", 3)
        self.width, self.height = map(int, size.split())

    def at(self, x, y):
        start = 3 * (y * self.width + x)
        return tuple(self.pixels[start:start + 3])

    def part(self, box):
        """The bytes of x, y, width, height: for comparing."""
        x, y, width, height = box
        starts = (3 * (row * self.width + x) for row in range(y, y + height))
        return b"".join(self.pixels[start:start + 3 * width] for start in starts)

    def shows(self, color, box, tolerance=2):
        part = self.part(box)
        return any(near(part[i:i + 3], color, tolerance) for i in range(0, len(part), 3))

    def columns(self, color, y, lo=0, hi=None, tolerance=2):
        return [x for x in range(lo, hi or self.width) if near(self.at(x, y), color, tolerance)]

    def rows(self, color, x, lo=0, hi=None, tolerance=2):
        return [y for y in range(lo, hi or self.height) if near(self.at(x, y), color, tolerance)]

    def runs(self, colors, y):
        """(x, width) of the stretches of a row that are in one of the colours."""
        runs, start = [], None
        for x in range(self.width + 1):
            inside = x < self.width and any(near(self.at(x, y), color) for color in colors)
            if inside and start is None:
                start = x
            if not inside and start is not None:
                runs.append((start, x - start))
                start = None
        return runs
