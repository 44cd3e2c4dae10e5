#!/usr/bin/env python3
"""Writes the seed corpus next to this script: small files, each of which shows a reader something that the others do not.
Files that fuzzing found faults with are kept among them."""
import math
import struct
import subprocess
import tempfile
from pathlib import Path

HERE = Path(__file__).parent / "corpus"


def chunk(order, name, payload):
    return name + struct.pack(order + "I", len(payload)) + payload + b"\0" * (len(payload) % 2)


def le(name, payload):
    return chunk("<", name, payload)


def be(name, payload):
    return chunk(">", name, payload)


def riff(*chunks):
    body = b"WAVE" + b"".join(chunks)
    return b"RIFF" + struct.pack("<I", len(body)) + body


def form(kind, *chunks):
    body = kind + b"".join(chunks)
    return b"FORM" + struct.pack(">I", len(body)) + body


def fmt(tag, channels, bits, more=b""):
    align = channels * ((bits + 7) // 8)
    return le(b"fmt ", struct.pack("<HHIIHH", tag, channels, 44100, 44100 * align, align, bits) + more)


def extensible(channels, bits, valid):
    more = struct.pack("<HHIH", 22, valid, 3, 1) + bytes.fromhex("000000001000800000AA00389B71")
    return fmt(0xFFFE, channels, bits, more)


def rate(hertz):
    exponent = hertz.bit_length() - 1
    return struct.pack(">HQ", 16383 + exponent, hertz << (63 - exponent))


def comm(channels, frames, bits, kind=b""):
    return be(b"COMM", struct.pack(">HIH", channels, frames, bits) + rate(44100) + kind)


def ssnd(samples, offset=0):
    return be(b"SSND", struct.pack(">II", offset, 0) + samples)


def marker(number, position, name):
    text = bytes([len(name)]) + name
    return struct.pack(">HI", number, position) + text + b"\0" * (len(text) % 2)


def wav_files():
    data = bytes(range(48))
    cues = struct.pack("<I", 2) + b"".join(struct.pack("<II4sIII", i, 2 + i, b"data", 0, 0, i * 3) for i in (1, 2))
    smpl = struct.pack("<9I", 0, 0, 0, 60, 0, 0, 0, 1, 0) + struct.pack("<6I", 0, 0, 2, 5, 0, 0)
    adtl = b"adtl" + le(b"labl", struct.pack("<I", 1) + b"name") + le(b"ltxt", struct.pack("<II", 1, 4) + b"rgn " + b"\0" * 8)
    for bits in (8, 16, 24, 32):
        yield f"int{bits}", riff(fmt(1, 2, bits), le(b"data", data))
    yield "float32", riff(fmt(3, 1, 32), le(b"fact", struct.pack("<I", 12)), le(b"data", data))
    yield "float64", riff(fmt(3, 1, 64), le(b"data", data))
    yield "extensible", riff(extensible(2, 24, 20), le(b"PEAK", b"\0" * 16), le(b"data", data))
    yield "marks", riff(fmt(1, 1, 16), le(b"data", data), le(b"cue ", cues), le(b"LIST", adtl), le(b"smpl", smpl))
    yield "stream", riff(fmt(1, 1, 16)) + b"data\xff\xff\xff\xff" + data + b"tail"


def aiff_files():
    data = bytes(range(48))
    marks = struct.pack(">H", 3) + marker(1, 2, b"begin") + marker(2, 9, b"end") + marker(3, 4, b"")
    inst = struct.pack(">6bh3H3H", 60, 0, 0, 127, 1, 127, 0, 1, 1, 2, 0, 0, 0)
    comt = struct.pack(">HIHH", 1, 7, 2, 3) + b"end\0"
    for bits in (8, 16, 24, 32):
        yield f"int{bits}", form(b"AIFF", comm(2, 6, bits), ssnd(data))
    for kind, bits in ((b"sowt", 16), (b"in24", 24), (b"in32", 32), (b"fl32", 32), (b"fl64", 64)):
        yield kind.decode(), form(b"AIFC", be(b"FVER", struct.pack(">I", 0xA2805140)), comm(1, 6, bits, kind + b"\4name\0"), ssnd(data))
    yield "marks", form(b"AIFF", comm(1, 24, 16), ssnd(data), be(b"MARK", marks), be(b"INST", inst), be(b"COMT", comt))
    yield "offset", form(b"AIFF", be(b"MARK", marks), comm(1, 24, 16), ssnd(data, 5)) + b"tail"
    yield "silent", form(b"AIFF", comm(1, 0, 16))


def made_by(tool, name, source):
    """What a tool makes of a small WAV file: its words, in which IN and OUT stand for the files."""
    with tempfile.TemporaryDirectory() as folder:
        places = {"IN": f"{folder}/in.wav", "OUT": f"{folder}/{name}"}
        Path(places["IN"]).write_bytes(source)
        subprocess.run([places.get(word, word) for word in tool.split()], check=True, capture_output=True, cwd=folder)
        return Path(places["OUT"]).read_bytes()


def wave(channels, bits, frames=700, rate=8000):
    samples = b"".join(struct.pack("<i", int(2**31 * math.sin(f * (c + 1) / 9) * 0.9))[4 - bits // 8:]
                       for f in range(frames) for c in range(channels))
    align = channels * bits // 8
    return riff(le(b"fmt ", struct.pack("<HHIIHH", 1, channels, rate, rate * align, align, bits)), le(b"data", samples))


def flac_files():
    for bits in (8, 16, 24):
        yield f"int{bits}", made_by("flac --silent -o OUT IN", "a.flac", wave(2, bits))
    yield "tags", made_by("flac --silent --tag=TITLE=x --padding=50 -o OUT IN", "a.flac", wave(1, 16))
    yield "wide", made_by("flac --silent --channel-map=none -o OUT IN", "a.flac", wave(1, 32, 200))
    whole = made_by("flac --silent -b 192 -o OUT IN", "a.flac", wave(1, 16))
    yield "cut", whole[:-100]
    yield "tailed", whole + b"TAG" + bytes(125)
    yield "headed", b"ID3\x04\0\0\0\0\0\x0a" + bytes(10) + whole


def sndfile_files():
    for name, rate in (("a.ogg", 8000), ("a.caf", 8000), ("a.au", 8000), ("a.w64", 8000)):
        yield name.replace(".", "-"), made_by("ffmpeg -y -i IN OUT", name, wave(1, 16, 700, rate))
    yield "opus", made_by("ffmpeg -y -i IN OUT", "a.opus", wave(1, 16, 700, 48000))
    yield "rf64", made_by("ffmpeg -y -i IN -rf64 always OUT", "a.wav", wave(2, 16))
    yield "adpcm", made_by("ffmpeg -y -i IN -c:a adpcm_ms OUT", "a.wav", wave(2, 16))
    yield "layer3", made_by("ffmpeg -y -i IN -c:a libmp3lame OUT", "a.wav", wave(1, 16, 700, 44100))
    yield "alaw", made_by("ffmpeg -y -i IN -c:a pcm_alaw OUT", "a.aiff", wave(2, 16))
    yield "double", made_by("ffmpeg -y -i IN -c:a pcm_f64be OUT", "a.caf", wave(2, 16))


def mpeg_files():
    yield "a-mp3", made_by("ffmpeg -y -i IN OUT", "a.mp3", wave(1, 16, 700, 44100))
    yield "b-mp3", made_by("ffmpeg -y -i IN -q:a 4 -metadata title=T -metadata artist=A OUT", "b.mp3", wave(2, 16, 7000, 44100))
    yield "a-mp2", made_by("ffmpeg -y -i IN OUT", "a.mp2", wave(1, 16, 6000, 44100))


def wrapping_files():
    """Files of other kinds with uncompressed samples, and what they hold positions and texts in."""
    data = bytes(range(48))
    swapped = chunk(">", b"fmt ", struct.pack(">HHIIHH", 1, 2, 44100, 176400, 4, 16))
    cue = struct.pack(">I", 1) + struct.pack(">II4sIII", 1, 3, b"data", 0, 0, 3)
    smpl = struct.pack(">9I", 0, 0, 0, 60, 0, 0, 0, 1, 0) + struct.pack(">6I", 0, 0, 2, 5, 0, 0)
    adtl = b"adtl" + be(b"labl", struct.pack(">I", 1) + b"name") + be(b"ltxt", struct.pack(">II", 1, 4) + b"rgn " + b"\0" * 8)
    body = b"WAVE" + swapped + be(b"cue ", cue) + be(b"LIST", adtl) + be(b"data", data) + be(b"smpl", smpl) + be(b"bext", b"abc")
    yield "rifx", b"RIFX" + struct.pack(">I", len(body)) + body
    body = fmt(1, 2, 24) + b"data\xff\xff\xff\xff" + data + le(b"smpl", bytes(36)) + le(b"chna", b"track")
    sizes = le(b"ds64", struct.pack("<QQQI", len(body) + 40, 48, 8, 0))
    for magic in (b"RF64", b"BW64"):
        yield magic.decode().lower(), magic + b"\xff\xff\xff\xffWAVE" + sizes + body

    def caf(*chunks):
        return b"caff\0\1\0\0" + b"".join(name + struct.pack(">q", len(payload)) + payload for name, payload in chunks)

    def mark(frame, number):
        return struct.pack(">IdI12x", 0, frame, number)

    desc = (b"desc", struct.pack(">d4sIIIII", 44100, b"lpcm", 2, 4, 1, 2, 16))
    yield "caf", caf(desc, (b"mark", struct.pack(">II", 0, 2) + mark(1.5, 1) + mark(9, 2)), (b"chan", bytes(12)),
                     (b"regn", struct.pack(">IIIII", 0, 1, 1, 0, 1) + mark(4, 3)), (b"data", bytes(4) + data),
                     (b"strg", struct.pack(">IIq", 1, 1, 0) + b"name\0"), (b"info", struct.pack(">I", 1) + b"title\0Song\0"))
    yield "au", b".snd" + struct.pack(">IIIII", 32, 48, 6, 8000, 3) + b"a note.." + data + b"behind"


def ffmpeg_files():
    for name, codec in (("a.m4a", "aac"), ("b.m4a", "alac"), ("a.wv", "wavpack"), ("a.wma", "wmav2"), ("a.tta", "tta")):
        yield name.replace(".", "-"), made_by(f"ffmpeg -y -i IN -c:a {codec} OUT", name, wave(2, 16, 700, 44100))


def round_trip_inputs():
    for bits in (0, 4, 12, 16, 20, 21, 28):
        yield f"depth{4 + bits}", bytes([bits, bits % 8, 10, 196, 64 | bits % 16, bits]) + bytes(i * 37 & 255 for i in range(90))


for folder, files in (("wav", wav_files()), ("aiff", aiff_files()), ("flac", flac_files()), ("mpeg", mpeg_files()),
                      ("sndfile", sndfile_files()), ("wrapping", wrapping_files()),
                      ("ffmpeg", ffmpeg_files()), ("round-trip", round_trip_inputs())):
    (HERE / folder).mkdir(parents=True, exist_ok=True)
    for name, content in files:
        (HERE / folder / f"{name}.{folder}").write_bytes(content)
