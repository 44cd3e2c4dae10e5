#pragma once

#include <variant>

#include "App/Commands/ShortcutStore.h"

// Who gets a key press: a plain decision over what is going on in the window.
namespace kiv {

enum class TextFocus { none, number, text };
enum class TextEdit { cut, copy, paste, selectAll, undo, redo };

struct KeyContext {
    bool isRecording = false;  // a new shortcut is being captured
    bool isComposing = false;  // an input method is putting a character together
    bool hasPopup = false;     // a menu is open
    TextFocus text = TextFocus::none;
    bool takesNumbers = false;  // the focused control opens a field for them
    bool hasSheet = false;
    bool focusIsInSheet = false;
};

struct CaptureShortcut {
    Shortcut shortcut;
    friend bool operator==(const CaptureShortcut &, const CaptureShortcut &) = default;
};
struct EditText {
    TextEdit edit;
    friend bool operator==(const EditText &, const EditText &) = default;
};
struct PerformCommand {
    EditorCommand command;
    friend bool operator==(const PerformCommand &, const PerformCommand &) = default;
};
enum class KeyPath {
    focus,    // to the focused control, as the toolkit does
    sheet,    // to the sheet, which has not the focus; nothing else gets it
    swallow,  // nobody gets it
};
using KeyRoute = std::variant<CaptureShortcut, EditText, PerformCommand, KeyPath>;

KeyRoute route(const KeyPress &press, const KeyContext &context, const ShortcutStore &store);

}  // namespace kiv
