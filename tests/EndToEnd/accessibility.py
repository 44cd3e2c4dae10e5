"""The window as an assistive tool finds it: every control with a name, a role and, where it has one, a value; sheets, notices and
errors told of. Goes over the session's accessibility bus, as screen readers do."""
import os
import sys
import tempfile
import time
from pathlib import Path

DEBIAN_PYTHON = "/usr/bin/python3"  # the one that has the bindings
INSIDE = "KIV_TEST_BUS"
PROGRAM = "kiv-audio-editor"

if INSIDE not in os.environ:
    os.environ[INSIDE] = tempfile.mkdtemp(prefix="kiv-bus-")
    os.environ["XDG_RUNTIME_DIR"] = os.environ[INSIDE]
    os.execvp("dbus-run-session", ["dbus-run-session", "--", DEBIAN_PYTHON, *sys.argv])

import gi  # noqa: E402

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from desktop import Desktop, Editor, wait_for, wav  # noqa: E402

ADJUSTABLE = {Atspi.Role.SLIDER, Atspi.Role.SPIN_BUTTON, Atspi.Role.DIAL}
PRESSABLE = {Atspi.Role.PUSH_BUTTON, Atspi.Role.TOGGLE_BUTTON, Atspi.Role.CHECK_BOX, Atspi.Role.RADIO_BUTTON}
EDITABLE = {Atspi.Role.TEXT, Atspi.Role.ENTRY}
LISTS = {Atspi.Role.LIST, Atspi.Role.LIST_ITEM}
MENUS = {Atspi.Role.MENU, Atspi.Role.MENU_ITEM, Atspi.Role.CHECK_MENU_ITEM, Atspi.Role.MENU_BAR, Atspi.Role.SEPARATOR}
SURROUNDINGS = {Atspi.Role.FRAME, Atspi.Role.WINDOW, Atspi.Role.FILLER, Atspi.Role.PANEL, Atspi.Role.TOOL_BAR, Atspi.Role.STATUS_BAR,
                Atspi.Role.DIALOG, Atspi.Role.ALERT, Atspi.Role.CANVAS, Atspi.Role.GROUPING, Atspi.Role.PROGRESS_BAR,
                Atspi.Role.LABEL}


NAMED = ADJUSTABLE | PRESSABLE | EDITABLE | LISTS | {Atspi.Role.CANVAS, Atspi.Role.DIALOG, Atspi.Role.TOOL_BAR, Atspi.Role.STATUS_BAR, Atspi.Role.ALERT, Atspi.Role.MENU,
                                          Atspi.Role.MENU_ITEM, Atspi.Role.CHECK_MENU_ITEM, Atspi.Role.WINDOW}


def pump():
    while GLib.MainContext.default().iteration(False):
        pass


def elements(root):
    """The element and all below it that are shown."""
    root.clear_cache()
    yield root
    for i in range(root.get_child_count()):
        child = root.get_child_at_index(i)
        if child and (child.get_role() in MENUS or child.get_state_set().contains(Atspi.StateType.SHOWING)):
            yield from elements(child)


def find(root, role, name):
    return next((e for e in elements(root) if e.get_role() == role and e.get_name() == name), None)


def actions(element):
    if "Action" not in element.get_interfaces():
        return []
    return [Atspi.Action.get_action_name(element, i) for i in range(Atspi.Action.get_n_actions(element))]


def act(element, *names):
    """The first of the actions that it has."""
    Atspi.Action.do_action(element, next(i for i, name in enumerate(actions(element)) if name in names))
    time.sleep(0.2)


def press(element):
    act(element, "Press", "Toggle")


def words(element):
    if "Text" not in element.get_interfaces():
        return ""
    return Atspi.Text.get_text(element, 0, Atspi.Text.get_character_count(element))


def value(element):
    return Atspi.Value.get_current_value(element)


def faults(root):
    """What an assistive tool would stumble over, as texts."""
    for element in elements(root):
        role, name = element.get_role(), element.get_name()
        who = f"{element.get_role_name()} “{name}”"
        focusable = element.get_state_set().contains(Atspi.StateType.FOCUSABLE)
        enabled = element.get_state_set().contains(Atspi.StateType.ENABLED)
        if role in NAMED and not name:
            yield f"{who} has no name"
        if role in PRESSABLE and enabled and not {"Press", "Toggle"} & set(actions(element)):
            yield f"{who} cannot be pressed: {actions(element)}"
        if role in ADJUSTABLE:
            if not Atspi.Value.get_minimum_value(element) <= value(element) <= Atspi.Value.get_maximum_value(element):
                yield f"{who} has no value in its range"
            if not words(element):
                yield f"{who} does not say its value"
            if not {"Increase", "Decrease"} <= set(actions(element)):
                yield f"{who} cannot be stepped: {actions(element)}"
        if role in EDITABLE and "EditableText" not in element.get_interfaces():
            yield f"{who} does not say what is in it"
        if focusable and role not in ADJUSTABLE | PRESSABLE | EDITABLE | LISTS | MENUS | SURROUNDINGS:
            yield f"{who} can have the focus in an unfit role"


def check(condition, what):
    if not condition:
        raise AssertionError(what)
    print("ok:", what)


def check_tree(root, what):
    found = list(faults(root))
    check(not found, f"{what}: {len(list(elements(root)))} elements" if not found else f"{what}: " + "; ".join(found))


def application(name):
    for i in range(Atspi.get_desktop(0).get_child_count()):
        child = Atspi.get_desktop(0).get_child_at_index(i)
        if child and child.get_name() == name and child.get_child_count():
            return child
    return None


def main_window(editor):
    """Every element; the waveform says where the cursor is, and the buttons act."""
    frame = wait_for("the window", lambda: application(PROGRAM).get_child_at_index(0))
    check_tree(frame, "main window")
    waveform = find(frame, Atspi.Role.CANVAS, "Waveform")
    check(waveform, "the waveform is there")
    wait_for("the waveform's words", lambda: words(waveform).startswith("Cursor 0.000 s"))
    editor.drag(300, 700, 400)
    wait_for("the selection in words", lambda: words(waveform).startswith("Selection"))
    print("ok: the waveform says", words(waveform))
    for name, value_words in (("Reset Vertical Zoom", "0 dB"), ("Max", "–")):
        check(find_button(frame, name).get_description().startswith(value_words), f"{name} says {value_words}")
    button = next(e for e in elements(frame) if e.get_name() == "Follows Playhead" and e.get_role() in PRESSABLE)
    check("Ctrl" in find_button(frame, "Zoom In").get_description(), "a button's help ends with its shortcut")
    press(button)
    check(button.get_state_set().contains(Atspi.StateType.CHECKED), "a toggle says that it is on")
    return frame


def find_button(root, name):
    return next((e for e in elements(root) if e.get_role() in PRESSABLE and e.get_name() == name), None)


def check_order(sheet, what, *order):
    """The controls are read as they are seen, row by row."""
    read = [e.get_name() for e in elements(sheet) if e.get_role() in ADJUSTABLE | PRESSABLE | EDITABLE]
    check(read == list(order), f"{what} is read as {read}")


def gain_sheet(editor, frame):
    """The slider is set, stepped and read; the field follows; Cancel closes."""
    editor.key("shift+g")
    sheet = wait_for("the sheet", lambda: find(frame, Atspi.Role.DIALOG, "Gain"))
    check_tree(sheet, "gain sheet")
    check_order(sheet, "the gain sheet", "Gain", "Gain", "Cancel", "Apply")
    slider = find(sheet, Atspi.Role.SLIDER, "Gain")
    Atspi.Value.set_current_value(slider, 3)
    wait_for("the value set", lambda: words(slider) == "+3.0 dB")
    act(slider, "Increase")
    wait_for("a step", lambda: value(slider) == 3.5)
    field = next(e for e in elements(sheet) if e.get_role() in EDITABLE)
    check(words(field) == "+3.5", "the field follows the slider")
    press(find_button(sheet, "Cancel"))
    wait_for("the sheet to go", lambda: not find(frame, Atspi.Role.DIALOG, "Gain"))


def mono_sheet(editor, frame):
    editor.key("shift+m")
    sheet = wait_for("the sheet", lambda: find(frame, Atspi.Role.DIALOG, "Convert to Mono"))
    check_tree(sheet, "mono sheet")
    check_order(sheet, "the mono sheet", "Left", "Right", "Mix", "Cancel", "Convert")
    press(find(sheet, Atspi.Role.RADIO_BUTTON, "Left"))
    check(find(sheet, Atspi.Role.RADIO_BUTTON, "Left").get_state_set().contains(Atspi.StateType.CHECKED), "a choice is taken")
    editor.key("Escape")


def stretch_sheet(editor, frame):
    editor.key("shift+p")
    sheet = wait_for("the sheet", lambda: find(frame, Atspi.Role.DIALOG, "Pitch / Time"))
    check_order(sheet, "the stretch sheet", "Clean", "Cyclic", "Time", "Semitones", "Cents", "Cancel", "Apply")
    editor.key("Escape")


def save_panel(editor):
    """A window of its own: what can be chosen and what is chosen are to be heard, and its lists in words."""
    editor.key("ctrl+shift+s")
    app = application(PROGRAM)
    windows = lambda: [app.get_child_at_index(i) for i in range(app.get_child_count())]
    panel = wait_for("the panel", lambda: next((w for w in windows() if w.get_role() == Atspi.Role.DIALOG), None))
    row = wait_for("the file in the list", lambda: find_row(panel, "words.wav"))
    check(row.get_name().endswith("Today"), f"a row is read as “{row.get_name()}”")
    check_tree(panel, "save panel")
    check(find(panel, Atspi.Role.RADIO_BUTTON, "16").get_state_set().contains(Atspi.StateType.CHECKED), "16 bits are chosen")
    press(find_button(panel, "Cancel"))
    wait_for("the panel to go", lambda: not any(w.get_role() == Atspi.Role.DIALOG for w in windows()))


def find_row(panel, name):
    return next((e for e in elements(panel) if e.get_role() == Atspi.Role.LIST_ITEM and e.get_name().startswith(name)), None)


def alert(editor, frame, heard):
    """A question is announced, and can be answered."""
    editor.key("shift+r", "ctrl+w")
    question = wait_for("the alert", lambda: next((e for e in elements(frame) if e.get_role() == Atspi.Role.ALERT), None))
    check_tree(question, "alert")
    check(question.get_description() != "", "its explanation is its description")
    wait_for("the announcement of the alert", lambda: pump() or question.get_name() in heard)
    press(find_button(question, "Cancel"))
    wait_for("the alert to go", lambda: not any(e.get_role() == Atspi.Role.ALERT for e in elements(frame)))


def listen(heard):
    def hear(event):
        try:
            if event.detail1 and event.source.get_role() == Atspi.Role.ALERT:
                heard.append(event.source.get_name())
        except GLib.Error:
            pass  # it has gone since
    listener = Atspi.EventListener.new(hear)
    listener.register("object:state-changed:showing")
    return listener


def main(program):
    heard = []
    keep = listen(heard)
    with Desktop() as desktop:
        desktop.env["DBUS_SESSION_BUS_ADDRESS"] = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        desktop.env["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        path = Path(desktop.folder) / "words.wav"
        path.write_bytes(wav([(i * 37) % 2000 - 1000 for i in range(2 * 44100)], 2))
        editor = Editor(desktop, program, path)
        wait_for("the program on the bus", lambda: application(PROGRAM))
        frame = main_window(editor)
        gain_sheet(editor, frame)
        mono_sheet(editor, frame)
        stretch_sheet(editor, frame)
        save_panel(editor)
        alert(editor, frame, heard)
    del keep


if __name__ == "__main__":
    main(sys.argv[1])
