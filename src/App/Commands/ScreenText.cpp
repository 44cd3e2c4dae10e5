#include "App/Commands/ScreenText.h"

#include <array>

#include "App/Commands/Letters.h"

namespace kiv {
namespace {

struct Word {
    std::string_view source, screen;
};

constexpr std::array modifiers{Word{"⌃", "Super"}, Word{"⌘", "Ctrl"}, Word{"⌥", "Alt"}, Word{"⇧", "Shift"}};  // as printed

constexpr std::array words{Word{"⎋", "Esc"},  Word{"⌫", "Backspace"},     Word{"⌦", "Del"}, Word{"↩", "Enter"},
                           Word{"⇥", "Tab"},  Word{"↖", "Home"},          Word{"↘", "End"}, Word{"⇞", "PgUp"},
                           Word{"⇟", "PgDn"}, Word{"macOS", "the system"}};

template <class Words>
const Word *wordAt(const Words &list, std::string_view text) {
    for (const Word &word : list)
        if (text.starts_with(word.source)) return &word;
    return nullptr;
}

// Whether what follows a run of modifiers is their key. "⌘," at the start of a text is a shortcut, but in the middle of one a
// closing mark ends what was said about the modifier: "(⇧: ten)", "(⇧)".
bool isKey(std::string_view rest, bool atStart) {
    if (rest.empty() || rest.front() == ' ') return false;
    constexpr std::string_view closing = ":;,.)";
    return atStart || closing.find(rest.front()) == std::string_view::npos || rest.substr(1).starts_with(')');
}

// Takes a run of modifiers off the text and gives their names in the order of this platform.
std::string takeModifiers(std::string_view &text) {
    const std::string_view all = text;
    while (const Word *modifier = wordAt(modifiers, text)) text.remove_prefix(modifier->source.size());
    const std::string_view run = all.substr(0, all.size() - text.size());
    std::string names;
    for (const Word &modifier : modifiers)
        if (run.find(modifier.source) != std::string_view::npos)
            names += (names.empty() ? "" : "+") + std::string(modifier.screen);
    return names;
}

// A name in quotation marks, which is not ours to print otherwise; empty when the text begins with none.
std::string_view quotedName(std::string_view text) {
    constexpr std::string_view open = "“", close = "”";
    const std::size_t end = text.starts_with(open) ? text.find(close) : text.npos;
    return end == text.npos ? std::string_view() : text.substr(0, end + close.size());
}

}  // namespace

std::string screenText(std::string_view source) {
    std::string screen;
    for (std::string_view rest = source; !rest.empty();) {
        const bool atStart = rest.size() == source.size();
        if (const std::string_view name = quotedName(rest); !name.empty()) {
            screen += name;
            rest.remove_prefix(name.size());
        } else if (wordAt(modifiers, rest)) {
            screen += takeModifiers(rest);
            if (isKey(rest, atStart)) screen += '+';
        } else if (const Word *word = wordAt(words, rest)) {
            screen += word->screen;
            rest.remove_prefix(word->source.size());
        } else {
            screen += rest.substr(0, firstLength(rest));
            rest.remove_prefix(firstLength(rest));
        }
    }
    return screen;
}

}  // namespace kiv
