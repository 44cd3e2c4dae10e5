#include "App/Keyboard.h"

#include <QKeyEvent>
#include <array>

#include "App/Commands/Letters.h"

namespace kiv {

namespace {

struct NamedKey {
    int key;
    const char *name;
};
constexpr std::array namedKeys{
    NamedKey{Qt::Key_Space, "space"},
    NamedKey{Qt::Key_Escape, "escape"},
    NamedKey{Qt::Key_Backspace, "delete"},
    NamedKey{Qt::Key_Delete, "forwardDelete"},
    NamedKey{Qt::Key_Return, "return"},
    NamedKey{Qt::Key_Enter, "return"},
    NamedKey{Qt::Key_Tab, "tab"},
    NamedKey{Qt::Key_Backtab, "tab"},
    NamedKey{Qt::Key_Home, "home"},
    NamedKey{Qt::Key_End, "end"},
    NamedKey{Qt::Key_PageUp, "pageUp"},
    NamedKey{Qt::Key_PageDown, "pageDown"},
    NamedKey{Qt::Key_Left, "left"},
    NamedKey{Qt::Key_Right, "right"},
    NamedKey{Qt::Key_Up, "up"},
    NamedKey{Qt::Key_Down, "down"},
};

std::string nameOf(int key) {
    for (const NamedKey &named : namedKeys)
        if (named.key == key) return named.name;
    return {};
}

std::uint64_t modifiersOf(const QKeyEvent &event) {
    std::uint64_t modifiers = 0;
    if (event.modifiers() & Qt::ShiftModifier) modifiers |= Shortcut::shift;
    if (event.modifiers() & Qt::ControlModifier) modifiers |= Shortcut::command;
    if (event.modifiers() & Qt::AltModifier) modifiers |= Shortcut::option;
    if (event.modifiers() & Qt::MetaModifier) modifiers |= Shortcut::control;
    return modifiers;
}

// The toolkit's key codes below this are characters, upper-case.
constexpr int firstSpecialKey = 0x01000000;

std::string characterOfKey(int key) {
    return key >= 0x20 && key < firstSpecialKey ? lowerCased(utf8(char32_t(key))) : std::string();
}

}  // namespace

Keyboard::Characters LearningKeyboard::characters(const QKeyEvent &event) {
    const std::string character = characterOfKey(event.key());
    const std::string text = event.text().toStdString();
    const bool isShifted = event.modifiers() & Qt::ShiftModifier;
    if (!isShifted) {
        if (event.nativeScanCode() != 0 && !character.empty()) plain_[event.nativeScanCode()] = character;
        return {character, character};
    }
    const auto known = plain_.find(event.nativeScanCode());
    const auto shifted = singleCodePoint(text).value_or(0) >= 32 ? text : character;
    return {known != plain_.end() ? known->second : character, shifted};
}

KeyPress keyPress(const QKeyEvent &event, Keyboard &keyboard) {
    KeyPress press;
    press.namedKey = nameOf(event.key());
    press.modifiers = modifiersOf(event);
    press.isRepeat = event.isAutoRepeat();
    const Keyboard::Characters characters = keyboard.characters(event);
    press.plain = characters.plain;
    press.unmodified = press.modifiers & Shortcut::shift ? characters.shifted : characters.plain;
    return press;
}

}  // namespace kiv
