#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "App/Commands/Shortcut.h"

namespace kiv {

// The user's shortcuts by a command's raw name; an entry without a value is a command whose shortcut was taken away.
using ShortcutOverrides = std::map<std::string, std::optional<Shortcut>>;

// An object whose members are objects with "key" (a text, or null for no shortcut) and "modifiers" (an unsigned integer).
// Nothing when a text in it is not UTF-8.
std::optional<std::string> encodeShortcuts(const ShortcutOverrides &overrides);
// Nothing when the text is anything else. Modifiers are masked.
std::optional<ShortcutOverrides> decodeShortcuts(std::string_view text);

}  // namespace kiv
