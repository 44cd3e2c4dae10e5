#include "App/Commands/Shortcut.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "App/Commands/Letters.h"

namespace kiv {
namespace {

struct NamedKey {
    std::string_view name, label, menuEquivalent;
};

// clang-format off
constexpr std::array namedKeys{
    NamedKey{"space",         "Space", " "},
    NamedKey{"escape",        "⎋",     "\x1B"},
    NamedKey{"delete",        "⌫",     "\x08"},
    NamedKey{"forwardDelete", "⌦",     "\x7F"},
    NamedKey{"return",        "↩",     "\r"},
    NamedKey{"tab",           "⇥",     "\t"},
    NamedKey{"home",          "↖",     "\uF729"},
    NamedKey{"end",           "↘",     "\uF72B"},
    NamedKey{"pageUp",        "⇞",     "\uF72C"},
    NamedKey{"pageDown",      "⇟",     "\uF72D"},
    NamedKey{"left",          "←",     "\uF702"},
    NamedKey{"right",         "→",     "\uF703"},
    NamedKey{"up",            "↑",     "\uF700"},
    NamedKey{"down",          "↓",     "\uF701"},
};
// clang-format on

const NamedKey *namedKey(std::string_view name) {
    const auto found = std::ranges::find(namedKeys, name, &NamedKey::name);
    return found == namedKeys.end() ? nullptr : &*found;
}

constexpr char32_t firstTyped = 32;
constexpr char32_t firstFunctionKey = 0xF700;

// The lower-case character when the text is one that can be typed; else empty.
std::string typedKey(std::string_view text) {
    const std::string lower = lowerCased(text);
    const std::optional<char32_t> codePoint = singleCodePoint(lower);
    return codePoint && *codePoint >= firstTyped && *codePoint < firstFunctionKey ? lower : std::string();
}

}  // namespace

std::string Shortcut::displayString() const {
    std::string text;
    if (modifiers & control) text += "⌃";
    if (modifiers & option) text += "⌥";
    if (modifiers & shift) text += "⇧";
    if (modifiers & command) text += "⌘";
    const NamedKey *named = namedKey(key);
    return text + (named ? std::string(named->label) : upperCased(key));
}

std::string Shortcut::menuKeyEquivalent() const {
    const NamedKey *named = namedKey(key);
    return named ? std::string(named->menuEquivalent) : key;
}

bool beginsNumber(const KeyPress &press) {
    constexpr std::string_view starts = "0123456789+-.,";
    const bool isCommand = press.modifiers & (Shortcut::command | Shortcut::control | Shortcut::option);
    return !isCommand && press.unmodified.size() == 1 && starts.find(press.unmodified) != starts.npos;
}

std::vector<Shortcut> candidates(const KeyPress &press) {
    const std::uint64_t modifiers = press.modifiers & Shortcut::modifierMask;
    const std::string key = press.namedKey.empty() ? typedKey(press.plain) : press.namedKey;
    if (key.empty()) return {};
    std::vector<Shortcut> found{{key, modifiers}};
    if (modifiers & Shortcut::shift) {
        const std::string shifted = typedKey(press.unmodified);
        if (!shifted.empty() && shifted != key) found.push_back({shifted, modifiers & ~Shortcut::shift});
    }
    for (std::size_t i = 0, count = found.size(); i < count; ++i)
        if (found[i].key == "+") found.push_back({"=", found[i].modifiers});
    if (key == "delete") found.push_back({"forwardDelete", modifiers});
    if (key == "forwardDelete") found.push_back({"delete", modifiers});
    return found;
}

}  // namespace kiv
