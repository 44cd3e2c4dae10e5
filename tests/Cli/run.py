"""Runs one case of the command line in an empty folder and compares all that comes of it.

A case is a folder:
  files   the files before the call, one a line, in the words of make() below
  call    the arguments of kiv, as a shell would read them; several lines are several calls, of which the last is compared
  stdin   what the last call reads (none: nothing)
  status  the expected exit status (none: 0)
  stdout  the expected text; or
  json    an object or list of which every member must be found in the printed JSON; "…" as the last of a list: any more
  stderr  the expected text (none: nothing)
  after   the files expected afterwards, in the same words; "NAME same" is one that has not changed
Files that are neither expected nor there before are a fault."""
import json
import shlex
import struct
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path


def chunk(name, data, order="<"):
    return name.encode("latin-1") + struct.pack(order + "I", len(data)) + data + b"\0" * (len(data) % 2)


def samples_of(words):
    if "samples" in words:
        return [int(x) for x in words["samples"].split(",") if x]
    frames, channels = int(words.get("frames", 100)), int(words.get("channels", 1))
    return [(1 + f) * (1 if c == 0 else -1) for f in range(frames) for c in range(channels)]  # each frame tells its number


def wav(words):
    """bits, channels, rate, samples or frames; cue=F,F smpl=START,LAST or none; before and after: more chunks as ID:TEXT,ID:TEXT"""
    bits, channels, rate = int(words.get("bits", 16)), int(words.get("channels", 1)), int(words.get("rate", 8000))
    size, isFloat = bits // 8, "float" in words
    if isFloat:
        data = b"".join(struct.pack("<f", float(x)) for x in words["float"].split(","))
    else:
        bias = 128 if size == 1 else 0
        data = b"".join((s + bias).to_bytes(size, "little", signed=size > 1) for s in samples_of(words))
    fmt = struct.pack("<HHIIHH", 3 if isFloat else 1, channels, rate, rate * size * channels, size * channels, bits)
    body = b"WAVE" + chunk("fmt ", fmt) + extra(words, "before") + chunk("data", data)
    if "cue" in words:
        frames = [int(x) for x in words["cue"].split(",")]
        body += chunk("cue ", struct.pack("<I", len(frames)) + b"".join(
            struct.pack("<II4sIII", i + 1, f, b"data", 0, 0, f) for i, f in enumerate(frames)))
    if words.get("smpl") == "none":
        body += chunk("smpl", bytes(36))
    elif "smpl" in words:
        start, last = (int(x) for x in words["smpl"].split(","))
        body += chunk("smpl", bytes(28) + struct.pack("<IIIIIIII", 1, 0, 0, 0, start, last, 0, 0))
    return chunk("RIFF", body + extra(words, "after"))


def extra(words, key):
    pairs = [x.split(":") for x in words.get(key, "").split(",") if x]
    return b"".join(chunk(name, text.encode()) for name, text in pairs)


def aiff(words):
    channels, data = int(words.get("channels", 1)), samples_of(words)
    rate = int(words.get("rate", 8000))
    extended = struct.pack(">HQ", 16383 + rate.bit_length() - 1, rate << (64 - rate.bit_length()))
    comm = struct.pack(">hIh", channels, len(data) // channels, 16) + extended
    sound = bytes(8) + b"".join(struct.pack(">h", s) for s in data)
    return chunk("FORM", b"AIFF" + chunk("COMM", comm, ">") + chunk("SSND", sound, ">"), ">")


def au(words):
    """samples or frames, channels; behind: what stands behind the samples"""
    data = b"".join(struct.pack(">h", s) for s in samples_of(words))
    head = struct.pack(">IIIII", 28, len(data), 3, int(words.get("rate", 8000)), int(words.get("channels", 1)))
    return b".snd" + head + b"note" + data + words.get("behind", "").encode()


def caf(words):
    """samples or frames, of one channel; clock: the kind of clock by which a marker is told"""
    data = b"".join(struct.pack(">h", s) for s in samples_of(words))
    desc = struct.pack(">d4sIIIII", 8000, b"lpcm", 0, 2, 1, 1, 16)
    mark = struct.pack(">IIIdI12x", int(words["clock"]), 1, 0, 1, 1)
    chunks = ((b"desc", desc), (b"mark", mark), (b"data", bytes(4) + data))
    return b"caff\0\1\0\0" + b"".join(name + struct.pack(">q", len(payload)) + payload for name, payload in chunks)


def png_start(words):
    """The beginning of a picture with a table of 256 colours; what follows may be anything."""
    header = b"IHDR" + struct.pack(">IIBBBBB", int(words["width"]), int(words["height"]), 8, 3, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + struct.pack(">I", 13) + header + struct.pack(">I", zlib.crc32(header))


def make(line):
    """NAME wav|aiff|au|caf|text|png KEY=VALUE …: the file's name and bytes. A text is given as Python would write it."""
    name, kind, *rest = shlex.split(line)
    words = dict(word.split("=", 1) for word in rest)
    if kind == "text":
        return name, words["is"].encode("latin-1").decode("unicode_escape").encode("latin-1")
    return name, {"wav": wav, "aiff": aiff, "au": au, "caf": caf, "png": png_start}[kind](words)


def lines(path):
    return [x for x in path.read_text().splitlines() if x.strip() and not x.startswith("#")] if path.exists() else []


def missing(expected, got, where=""):
    """The first difference of what must be found in what there is, or nothing."""
    if isinstance(expected, dict) and isinstance(got, dict):
        for key, value in expected.items():
            if key not in got:
                return f"{where}.{key} is missing"
            if found := missing(value, got[key], f"{where}.{key}"):
                return found
        return None
    if isinstance(expected, list) and isinstance(got, list) and expected[-1:] == ["…"]:
        expected, got = expected[:-1], got[:len(expected) - 1]
    if isinstance(expected, list) and isinstance(got, list) and len(expected) == len(got):
        return next(filter(None, (missing(e, g, f"{where}[{i}]") for i, (e, g) in enumerate(zip(expected, got)))), None)
    same = expected == got and isinstance(expected, bool) == isinstance(got, bool)
    return None if same else f"{where} is {got!r}, not {expected!r}"


def differences(kiv, case):
    with tempfile.TemporaryDirectory() as folder:
        before = dict(make(line) for line in lines(case / "files"))
        for name, data in before.items():
            Path(folder, name).write_bytes(data)
        optional = lambda name: (case / name).read_text() if (case / name).exists() else ""
        *calls, last = lines(case / "call")
        for call in calls:
            subprocess.run([kiv, *shlex.split(call)], cwd=folder, check=True, stdin=subprocess.DEVNULL, capture_output=True)
        done = subprocess.run([kiv, *shlex.split(last)], cwd=folder, input=optional("stdin").encode(), capture_output=True)
        if done.returncode != int(optional("status") or 0):
            yield f"the status is {done.returncode}"
        if (case / "json").exists():
            if found := missing(json.loads(optional("json")), json.loads(done.stdout or "null"), "json"):
                yield found
            if done.stdout.count(b"\n") != 1:
                yield "the JSON is not on one line"
        elif done.stdout.decode() != optional("stdout"):
            yield f"standard output is {done.stdout.decode()!r}"
        if done.stderr.decode() != optional("stderr"):
            yield f"standard error is {done.stderr.decode()!r}"
        yield from file_differences(before, case, folder)


def file_differences(before, case, folder):
    expected = dict(before)
    for line in lines(case / "after"):
        if not line.endswith(" same"):
            name, data = make(line)
            expected[name] = data
    got = {str(path.relative_to(folder)): path.read_bytes() for path in Path(folder).rglob("*") if path.is_file()}
    for name in sorted(expected.keys() | got.keys()):
        if name not in got or name not in expected:
            yield f"{name} is {'not ' if name in expected else ''}there"
        elif got[name] != expected[name] and not (name.endswith(".png") and got[name].startswith(expected[name])):
            yield f"{name} is\n  {got[name][:400].hex(' ')}\nnot\n  {expected[name][:400].hex(' ')}"


def self_test(kiv):
    """A case that is wrong in every way must be found to be."""
    with tempfile.TemporaryDirectory() as folder:
        case = Path(folder)
        (case / "files").write_text("a.wav wav samples=1,2,3\n")
        (case / "call").write_text("edit a.wav reverse --json\n")
        (case / "status").write_text("1")
        (case / "json").write_text('{"frames": 4}')
        (case / "stderr").write_text("text")
        (case / "after").write_text("a.wav wav samples=1,2,3\nb.wav wav samples=1\n")
        return list(differences(kiv, case))


if sys.argv[1] == "--self-test":
    faults = self_test(sys.argv[2])
    print("\n".join(faults))
    sys.exit(0 if len(faults) == 5 else 1)
faults = list(differences(str(Path(sys.argv[1]).resolve()), Path(sys.argv[2])))
if faults:
    sys.exit("\n".join(faults))
