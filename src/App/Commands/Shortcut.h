#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kiv {

// A key with modifiers. The key is one lower-case character (UTF-8), the one that it gives without modifiers, or a name:
// space escape delete forwardDelete return tab home end pageUp pageDown left right up down.
struct Shortcut {
    static constexpr std::uint64_t shift = 0x20000;
    static constexpr std::uint64_t control = 0x40000;
    static constexpr std::uint64_t option = 0x80000;
    static constexpr std::uint64_t command = 0x100000;
    static constexpr std::uint64_t modifierMask = 0x1E0000;

    std::string key;
    std::uint64_t modifiers = 0;

    // "⇧⌘S", "Space".
    std::string displayString() const;
    // The character string that a menu item's key equivalent takes; function keys as code points from U+F700 on.
    std::string menuKeyEquivalent() const;

    friend bool operator==(const Shortcut &, const Shortcut &) = default;
};

// A key press as the keyboard reports it.
struct KeyPress {
    std::string namedKey;    // one of the names above, else empty
    std::string plain;       // what the key gives with no modifiers
    std::string unmodified;  // what it gives with shift alone taken into account
    std::uint64_t modifiers = 0;
    bool isRepeat = false;
};

// Whether it types what a number can begin with.
bool beginsNumber(const KeyPress &press);

// The shortcuts that a press may stand for, the most literal first; none for keys that type nothing and have no name.
std::vector<Shortcut> candidates(const KeyPress &press);

}  // namespace kiv
