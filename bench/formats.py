#!/usr/bin/env python3
"""Prints what the command line editor makes of each kind of file: a table of format by read, written, exact and tags kept.

  read     the samples come back: exactly (exact), or as a codec that loses something gives them (lossy)
  written  a save goes over the file (yes), or has to go elsewhere (Save As)
  exact    after saving an untouched file: every byte (bytes), or every sample as another program reads it (samples)
  tags     the title that the file had is there after a save with edits

Files are made by flac, ffmpeg and sox. usage: bench/formats.py KIV"""
import json
import shutil
import subprocess
import sys
import tempfile
import wave
from pathlib import Path

RATE, FRAMES = 44100, 20001
FF, TITLE = "ffmpeg -nostdin -v error -y -i in.wav -metadata title=Song ", "Song"

# Name of the file, bits of the sound it is made of, command.
ROWS = (
    [(f"{name}.wav", bits, FF + f"-c:a pcm_{kind} {{}}") for name, bits, kind in
     (("wav8", 8, "u8"), ("wav16", 16, "s16le"), ("wav24", 24, "s24le"), ("wav32", 32, "s32le"), ("float", 24, "f32le"), ("double", 24, "f64le"))]
    + [(f"aiff{bits}.aiff", bits, FF + f"-write_id3v2 1 -c:a pcm_s{bits}be {{}}") for bits in (16, 24, 32)]
    + [("sowt.aifc", 16, FF + "-write_id3v2 1 -c:a pcm_s16le -f aiff {}")]
    + [(f"flac{bits}.flac", bits, "flac -s -f --tag=TITLE=Song -o {} in.wav") for bits in (8, 16, 24, 32)]
    + [(f"caf{bits}.caf", bits, FF + f"-c:a pcm_s{bits}be {{}}") for bits in (16, 24, 32)]
    + [("float.caf", 24, FF + "-c:a pcm_f32le {}"), ("double.caf", 24, FF + "-c:a pcm_f64be {}"), ("alac.caf", 16, FF + "-c:a alac {}")]
    + [(f"au{bits}.au", bits, FF + f"-c:a pcm_s{bits}be {{}}") for bits in (16, 24, 32)]
    + [("float.au", 24, FF + "-c:a pcm_f32be {}"), ("w64.w64", 24, FF + "-c:a pcm_s24le {}"), ("rf64.wav", 24, FF + "-rf64 always -c:a pcm_s24le {}")]
    + [("rifx.wav", 16, "sox in.wav -B {}"), ("alac.m4a", 24, FF + "-c:a alac {}"), ("wv.wv", 16, FF + "-c:a wavpack {}"),
       ("tta.tta", 16, FF + "-c:a tta {}"), ("flac.oga", 16, "flac -s -f --ogg --tag=TITLE=Song -o {} in.wav")]
    + [("mp3.mp3", 16, FF + "{}"), ("vorbis.ogg", 16, FF + "-c:a libvorbis {}"), ("opus.opus", 16, FF + "-c:a libopus {}"),
       ("aac.m4a", 16, FF + "-c:a aac {}"), ("wma.wma", 16, FF + "-c:a wmav2 {}"), ("mulaw.wav", 16, FF + "-c:a pcm_mulaw {}"),
       ("adpcm.wav", 16, FF + "-c:a adpcm_ms {}")]
)


def make_sound(path, bits):
    """Noise of two channels that uses all bits of its samples, in a WAV file."""
    state, data = 1, bytearray()
    for _ in range(FRAMES * 2):
        state = (state * 1103515245 + 12345) & 0xFFFFFFFF
        value = state >> (32 - bits)
        data += value.to_bytes(bits // 8, "little") if bits == 8 else (value - (1 << bits - 1)).to_bytes(bits // 8, "little", signed=True)
    with wave.open(str(path), "wb") as out:
        out.setnchannels(2), out.setsampwidth(bits // 8), out.setframerate(RATE)
        out.writeframes(bytes(data))


class Desk:
    def __init__(self, kiv, folder):
        self.kiv, self.folder = kiv, folder

    def run(self, *command):
        return subprocess.run([str(c) for c in command], cwd=self.folder, capture_output=True)

    def decoded(self, name):
        """The samples as another program reads them, 32 bits each."""
        swapped = (self.folder / name).read_bytes()[:4] == b"RIFX"
        reader = ["sox", name, "-t", "raw", "-e", "signed", "-b", "32", "-L", "-"] if swapped else \
            ["ffmpeg", "-nostdin", "-v", "error", "-i", name, "-f", "s32le", "-c:a", "pcm_s32le", "-"]
        return self.run(*reader).stdout

    def title(self, name):
        told = self.run("ffprobe", "-v", "error", "-show_entries", "format_tags:stream_tags", "-of", "json", name).stdout
        return TITLE in json.dumps(json.loads(told or "{}"))


def examine(desk, name, bits, command):
    make_sound(desk.folder / "in.wav", bits)
    if subprocess.run(command.format(name), shell=True, cwd=desk.folder, capture_output=True).returncode != 0:
        return None
    info = json.loads(desk.run(desk.kiv, "info", name, "--json").stdout or "null")
    if not info:
        return ["no", "", "", ""]
    before, sound, hadTitle = (desk.folder / name).read_bytes(), desk.decoded(name), desk.title(name)
    desk.run(desk.kiv, "edit", name, "--save-as", "wav32", "read.wav")
    read = desk.decoded("read.wav") == desk.decoded("in.wav")
    if desk.run(desk.kiv, "edit", name).returncode != 0:
        return ["exact" if read else "lossy", "Save As", "", ""]
    same = "bytes" if (desk.folder / name).read_bytes() == before else "samples" if desk.decoded(name) == sound else "NO"
    desk.run(desk.kiv, "edit", name, "reverse")
    kept = desk.title(name) if hadTitle else None
    return ["exact" if read else "lossy", "yes", same, {True: "kept", False: "LOST", None: "had none"}[kept]]


def main():
    missing = [program for program in ("flac", "ffmpeg", "ffprobe", "sox") if not shutil.which(program)]
    if missing or len(sys.argv) != 2:
        sys.exit(f"needed: {' '.join(missing)}" if missing else __doc__)
    kiv = Path(sys.argv[1]).resolve()
    print(f"{'file':14}{'kind':21}{'bits':14}{'read':8}{'written':9}{'exact':9}tags")
    faults = 0
    with tempfile.TemporaryDirectory() as name:
        desk = Desk(kiv, Path(name))
        for row in ROWS:
            result = examine(desk, *row)
            if result is None:
                continue
            info = json.loads(desk.run(kiv, "info", row[0], "--json").stdout or "{}")
            faults += "NO" in result or "LOST" in result
            read, written, exact, tags = result
            print(f"{row[0]:14}{info.get('typeName', ''):21}{info.get('bitsDescription', ''):14}{read:8}{written:9}{exact:9}{tags}")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
