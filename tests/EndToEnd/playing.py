"""Plays a file with the space bar into a null sink and compares what the sink heard with the file, sample by sample."""
import random
import subprocess
import sys
import time
from array import array

from desktop import Desktop, Editor, wait_for, wav

FRAMES = 44100


def record_while(desktop, act, seconds):
    """Interleaved floats that the sink played."""
    target = desktop.folder / "heard.raw"
    with open(target, "wb") as out:
        recorder = desktop.start(["parec", "-d", "null.monitor", "--format=float32le", "--rate=44100", "--channels=2",
                                  "--latency-msec=20"], stdout=out)
        wait_for("the recorder", lambda: target.stat().st_size > 0)
        act()
        time.sleep(seconds)
        recorder.terminate()
        recorder.wait()
    heard = array("f")
    raw = target.read_bytes()
    heard.frombytes(raw[:len(raw) // 8 * 8])
    return heard


def main(program):
    with Desktop(sound=True) as desktop:
        random.seed(5)
        samples = [random.randrange(-30000, 30000) for _ in range(FRAMES * 2)]
        path = desktop.folder / "noise.wav"
        path.write_bytes(wav(samples, channels=2))
        editor = Editor(desktop, program, path)
        heard = record_while(desktop, lambda: editor.key("space"), 3.0)

        wanted = array("f", (s / 32768 for s in samples))
        start = next((i for i in range(0, len(heard), 2) if heard[i] == wanted[0] and heard[i:i + 64] == wanted[:64]), None)
        assert start is not None, "the beginning of the sound was not heard"
        same = heard[start:start + len(wanted)] == wanted
        first = next((i for i, (a, b) in enumerate(zip(heard[start:], wanted)) if a != b), len(wanted))
        assert same, f"what was heard differs from the file from frame {first // 2} on"
        assert not any(heard[start + len(wanted):]), "sound after the end"

        # A server that dies stops the playing; the editor goes on.
        editor.key("space")
        time.sleep(0.3)
        server = next(c for c in desktop.children if c.args[0] == "pulseaudio")
        server.kill()
        time.sleep(1.0)
        assert editor.process.poll() is None, "the program died with the sound server"
        editor.key("space")
        time.sleep(2.5)
        editor.key("ctrl+w")
        try:
            status = editor.process.wait(10)
        except subprocess.TimeoutExpired:
            raise AssertionError("the program no longer answers")
        assert status == 0, f"the program ended with {status}"
        print(f"{FRAMES} frames heard as they are in the file")


main(sys.argv[1])
