"""Reads every #include under src/ against a table: which folder may know which. Exit status 1 names each that may not."""
import re
import sys
from pathlib import Path

SUPPORT = ["Support"]
CORE = ["Editor/AudioEditorCore", "Editor/AudioEditorLoopPanel", "Editor/AudioEditorSpectral", "Editor/EqCore",
        "Editor/EqProcessor"] + SUPPORT
PLATFORM = ["Platform"] + SUPPORT
SETTINGS = ["Preferences"] + PLATFORM
COMMANDS = ["App/Commands"] + SETTINGS
FILES = ["Audio/Files"] + CORE
PLAYBACK = ["Audio/Playback"] + CORE + PLATFORM
MODEL = ["Editor/AudioEditorModel", "Editor/Surfaces"] + CORE + SETTINGS
DOCUMENT = ["Document", "Document/Journal"] + MODEL + FILES + PLAYBACK + COMMANDS
VIEWS = ["Editor/Views", "Document/Windows", "Preferences/Panes"] + DOCUMENT

# folder -> folders of ours it may include, prefixes of system headers beyond the standard library
STD = re.compile(r"^(c?[a-z_0-9]+)$")
POSIX = r"(sys/|unistd|fcntl|signal|syslog|pthread|dirent|poll|linux/)"
ALLOWED = {
    "Support": (SUPPORT, r"fftw3|sys/mman"),
    **{folder: (CORE, r"soxr") for folder in CORE if folder != "Support"},
    "Audio/Files": (FILES, None),
    "Platform": (PLATFORM, None),
    "Platform/Fake": (["Platform/Fake"] + PLATFORM, None),
    "Platform/Linux": (["Platform/Linux", "Platform/Linux/Decoders"] + PLATFORM, rf"{POSIX}|pulse/|sys/|dlfcn"),
    "Platform/Linux/Decoders": (["Platform/Linux/Decoders"] + PLATFORM, r"sndfile|FLAC/|mpg123"),
    "Platform/Linux/Ffmpeg": (["Platform/Linux/Decoders", "Platform/Linux/Ffmpeg"] + PLATFORM, r"libav"),
    "Platform/Qt": (["Platform/Qt"] + PLATFORM, r"Q([A-Z]|t$)|xkbcommon/|xcb/"),
    "Preferences": (SETTINGS, r"nlohmann/"),
    "App/Commands": (COMMANDS, r"nlohmann/"),
    "Audio/Playback": (PLAYBACK, None),
    "Editor/AudioEditorModel": (MODEL, None),
    "Editor/Surfaces": (MODEL, None),
    "Document": (DOCUMENT, None),
    "Document/Journal": (DOCUMENT, None),
    "Editor/Views": (VIEWS, r"Q([A-Z]|t$)"),
    "Document/Windows": (VIEWS, r"Q([A-Z]|t$)"),
    "Preferences/Panes": (VIEWS, r"Q([A-Z]|t$)"),
    "App": (["App", "Platform/Linux", "Platform/Qt"] + VIEWS, rf"Q([A-Z]|t$)|{POSIX}|xkbcommon/|xcb/"),
    "Cli": (["Cli", "Platform/Fake", "Platform/Linux"] + DOCUMENT, rf"CLI/|nlohmann/|png|{POSIX}"),
}
SINGLE = re.compile(r"^(QtWidgets|QtGui|QtCore|QtDBus)$")  # headers of a whole module cost seconds a file
C_HEADERS = re.compile(r"^[a-z0-9_/]+\.h$")


def faults(folder, includes):
    """The includes of one file in `folder` that it may not have, each with the reason."""
    if folder not in ALLOWED:
        return [(name, "the folder is in no row of the table") for name in includes[:1]]
    ours, system = ALLOWED[folder]
    found = []
    for name, quoted in includes:
        if quoted:
            target = str(Path(name).parent)
            if target not in ours:
                found.append((name, f"{folder} may not know {target}"))
        elif STD.match(name):
            continue
        elif SINGLE.match(name):
            found.append((name, "a whole module's header"))
        elif not (system and re.match(system, name)):
            found.append((name, f"{folder} may not use this"))
    return found


def includes_of(text):
    return [(m.group(2), m.group(1) == '"') for m in re.finditer(r'^\s*#\s*include\s*(["<])([^">]+)[">]', text, re.M)]


def check(root):
    bad = 0
    files = [p for p in sorted((root / "src").rglob("*")) if p.suffix in (".cpp", ".h")]
    assert len(files) > 20, "no sources found"
    for path in files:
        folder = str(path.parent.relative_to(root / "src"))
        for name, why in faults(folder, includes_of(path.read_text())):
            print(f"{path.relative_to(root)}: {name}: {why}")
            bad += 1
    print(f"{len(files)} files, {bad} includes that may not be")
    return bad == 0


def self_test():
    cases = [
        ("Support", '#include <vector>\n#include "Support/Bytes.h"', 0),
        ("Editor/AudioEditorCore", '#include "Platform/Files.h"', 1),
        ("Editor/Surfaces", "#include <QColor>", 1),
        ("Editor/Views", "#include <QColor>\n#include <QtWidgets>", 1),
        ("Platform", "#include <unistd.h>", 1),
        ("Audio/Files", '#include "Editor/AudioEditorModel/UndoHistory.h"', 1),
        ("Somewhere", '#include "Support/Bytes.h"', 1),
    ]
    ok = True
    for folder, text, count in cases:
        got = len(faults(folder, includes_of(text)))
        if got != count:
            print(f"{folder}: {text!r}: {got} faults, not {count}")
            ok = False
    return ok


sys.exit(0 if (self_test() if "--self-test" in sys.argv else check(Path(sys.argv[1]))) else 1)
