"""Opens a file, selects by dragging, reverses, undoes, redoes, cuts, pastes, saves and quits, then compares the file on disk."""
import struct
import sys
import time

from desktop import GUTTER, Desktop, Editor, chunk, chunks_of, wait_for, wav

FRAMES = 60000
RAMP = [f - 30000 for f in range(FRAMES)]  # every sample says which frame it was
MARKS = [1000, 30000, 59000]


def cue(positions):
    records = b"".join(struct.pack("<II4sIII", i + 1, p, b"data", 0, 0, p) for i, p in enumerate(positions))
    return chunk(b"cue ", struct.pack("<I", len(positions)) + records)


def main(program):
    with Desktop() as desktop:
        path = desktop.folder / "ramp.wav"
        note = chunk(b"abcd", b"kept as it is")
        path.write_bytes(wav(RAMP, extra=cue(MARKS) + note))
        before = path.read_bytes()
        editor = Editor(desktop, program, path)

        from_x, to_x = GUTTER + 300, GUTTER + 700
        editor.drag(from_x, to_x, editor.height // 2)
        editor.key("shift+r", "ctrl+z", "ctrl+shift+z")  # reversed, as it was, reversed
        editor.key("ctrl+x", "1", "ctrl+v")              # moved to the start
        assert path.read_bytes() == before, "the file changed before it was saved"
        editor.key("ctrl+s")
        after = wait_for("the save", lambda: (now := path.read_bytes()) != before and now)
        time.sleep(0.5)
        editor.key("ctrl+w")
        status = editor.process.wait(10)
        assert status == 0, f"the program ended with {status}"

        found = dict(chunks_of(after))
        samples = list(struct.unpack(f"<{len(found[b'data']) // 2}h", found[b"data"]))
        assert len(samples) == FRAMES, f"{len(samples)} frames"
        hi = samples[0] + 30000 + 1
        count = next(i for i in range(1, FRAMES) if samples[i] != samples[i - 1] - 1)
        lo = hi - count
        per_pixel = FRAMES / (editor.width - GUTTER)
        for frame, x in ((lo, from_x), (hi, to_x)):
            wanted = (x - GUTTER) * per_pixel
            assert abs(frame - wanted) <= per_pixel, f"selected frame {frame}, not {wanted:.0f}"
        expected = RAMP[lo:hi][::-1] + RAMP[:lo] + RAMP[hi:]
        assert samples == expected, "the samples are not what the edits make"

        def moved(mark):  # removed, then inserted at the start
            mark = mark if mark <= lo else lo if mark < hi else mark - count
            return mark + count

        assert found[b"cue "] == chunks_of(b" " * 12 + cue([moved(m) for m in MARKS]))[0][1], "the marks did not follow"
        assert found[b"abcd"] == b"kept as it is"
        assert [name for name, _ in chunks_of(after)] == [name for name, _ in chunks_of(before)]
        print(f"selected {lo} – {hi}, moved, saved and read back")


main(sys.argv[1])
