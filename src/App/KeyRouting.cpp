#include "App/KeyRouting.h"

#include <algorithm>
#include <array>

namespace kiv {

namespace {

constexpr std::uint64_t command = Shortcut::command, shift = Shortcut::shift;

// The six shortcuts that belong to the text while one is edited.
std::optional<TextEdit> textEdit(const KeyPress &press) {
    if (press.modifiers == (shift | command) && press.plain == "z") return TextEdit::redo;
    if (press.modifiers != command) return std::nullopt;
    constexpr std::array keys{std::pair{"x", TextEdit::cut}, std::pair{"c", TextEdit::copy}, std::pair{"v", TextEdit::paste},
                              std::pair{"a", TextEdit::selectAll}, std::pair{"z", TextEdit::undo}};
    const auto found = std::find_if(keys.begin(), keys.end(), [&](const auto &key) { return press.plain == key.first; });
    return found == keys.end() ? std::nullopt : std::optional(found->second);
}

// Keys that type, move in the text or end it.
bool belongsToText(const KeyPress &press, TextFocus text) {
    if (press.modifiers & (Shortcut::option | Shortcut::control)) return false;
    if (press.namedKey == "space") return text == TextFocus::text && !(press.modifiers & command);
    if (press.namedKey == "pageUp" || press.namedKey == "pageDown") return false;
    if (!press.namedKey.empty()) return true;
    return !(press.modifiers & command);
}

// A number begun anywhere goes to the sheet's field, and letters may be the sheet's own keys. What no sheet wants is kept from
// its controls.
KeyRoute routeWithSheet(std::optional<EditorCommand> match, const KeyPress &press, const KeyContext &context) {
    const bool acts = match && actsUnderSheets(*match) && (*match == EditorCommand::playStop || !beginsNumber(press));
    if (acts) return press.isRepeat && !repeats(*match) ? KeyRoute(KeyPath::swallow) : PerformCommand{*match};
    if (press.modifiers & (Shortcut::option | Shortcut::control)) return KeyPath::swallow;
    if (match && press.modifiers & command) return KeyPath::swallow;
    return context.focusIsInSheet ? KeyPath::focus : KeyPath::sheet;
}

}  // namespace

KeyRoute route(const KeyPress &press, const KeyContext &context, const ShortcutStore &store) {
    if (context.isComposing || context.hasPopup) return KeyPath::focus;
    const std::vector<Shortcut> shortcuts = candidates(press);
    if (context.isRecording) return shortcuts.empty() ? KeyRoute(KeyPath::swallow) : CaptureShortcut{shortcuts.front()};
    if (context.text != TextFocus::none) {
        if (const auto edit = textEdit(press)) return EditText{*edit};
        if (belongsToText(press, context.text)) return KeyPath::focus;
    }
    if (context.takesNumbers && beginsNumber(press)) return KeyPath::focus;
    const std::optional<EditorCommand> match = store.match(shortcuts);
    if (context.hasSheet) return routeWithSheet(match, press, context);
    // With Alt or Super a line edit would still type it.
    const bool wouldType = context.text != TextFocus::none && press.modifiers & (Shortcut::option | Shortcut::control);
    if (!match) return wouldType && press.namedKey.empty() ? KeyPath::swallow : KeyPath::focus;
    if (press.isRepeat && !repeats(*match)) return KeyPath::swallow;
    return PerformCommand{*match};
}

}  // namespace kiv
