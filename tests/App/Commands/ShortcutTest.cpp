#include "App/Commands/Shortcut.h"

#include <gtest/gtest.h>

#include "App/Commands/Letters.h"

namespace kiv {

void PrintTo(const Shortcut &shortcut, std::ostream *out) {
    *out << '(' << shortcut.key << ", " << std::hex << shortcut.modifiers << ')';
}

namespace {

constexpr std::uint64_t sh = Shortcut::shift, ctl = Shortcut::control, opt = Shortcut::option, cmd = Shortcut::command;

TEST(Shortcut, isDisplayedWithItsModifiersInAFixedOrderAndGivesMenusACharacter) {
    const struct {
        Shortcut shortcut;
        std::string_view display;
    } cases[] = {
        // clang-format off
        {{"s", cmd | sh}, "⇧⌘S"}, {{"space", 0}, "Space"}, {{"x", cmd | sh | opt | ctl}, "⌃⌥⇧⌘X"}, {{"1", cmd}, "⌘1"},
        {{"+", 0}, "+"}, {{"escape", 0}, "⎋"}, {{"delete", sh}, "⇧⌫"}, {{"forwardDelete", 0}, "⌦"}, {{"return", opt}, "⌥↩"},
        {{"tab", 0}, "⇥"}, {{"home", 0}, "↖"}, {{"end", 0}, "↘"}, {{"pageUp", 0}, "⇞"}, {{"pageDown", 0}, "⇟"},
        {{"left", cmd}, "⌘←"}, {{"right", 0}, "→"}, {{"up", 0}, "↑"}, {{"down", ctl}, "⌃↓"}, {{"ä", opt}, "⌥Ä"},
        {{"ж", 0}, "Ж"}, {{"ß", 0}, "ß"},
        // clang-format on
    };
    for (const auto &[shortcut, display] : cases) EXPECT_EQ(shortcut.displayString(), display);
    const std::pair<std::string_view, std::string_view> characters[] = {
        // clang-format off
        {"space", " "}, {"escape", "\x1B"}, {"delete", "\b"}, {"forwardDelete", "\x7F"}, {"return", "\r"}, {"tab", "\t"},
        {"home", "\xEF\x9C\xA9"}, {"end", "\xEF\x9C\xAB"}, {"pageUp", "\xEF\x9C\xAC"}, {"pageDown", "\xEF\x9C\xAD"},
        {"left", "\xEF\x9C\x82"}, {"right", "\xEF\x9C\x83"}, {"up", "\xEF\x9C\x80"}, {"down", "\xEF\x9C\x81"}, {"s", "s"}, {"ä", "ä"},
        // clang-format on
    };
    for (const auto &[key, equivalent] : characters)
        EXPECT_EQ((Shortcut{std::string(key), cmd}).menuKeyEquivalent(), equivalent);
}

struct PressCase {
    const char *what;
    KeyPress press;
    std::vector<Shortcut> expected;
};

TEST(KeyPress, standsForTheseShortcuts) {
    const PressCase cases[] = {
        // clang-format off
        {"a letter", {"", "s", "s", cmd}, {{"s", cmd}}}, {"caps lock", {"", "S", "S", 0}, {{"s", 0}}},
        {"shift and a letter", {"", "s", "S", sh}, {{"s", sh}}},
        {"other modifier bits", {"", "s", "s", cmd | 0x10000 | 0x200000 | 0x100}, {{"s", cmd}}},
        {"shift= that types +", {"", "=", "+", sh}, {{"=", sh}, {"+", 0}, {"=", 0}}},
        {"a plain + key", {"", "+", "+", cmd}, {{"+", cmd}, {"=", cmd}}},
        {"shift and a plain + key", {"", "+", "*", sh}, {{"+", sh}, {"*", 0}, {"=", sh}}},
        {"shift 2 that types another", {"", "2", "\"", sh | cmd}, {{"2", sh | cmd}, {"\"", cmd}}},
        {"shift 2 that types é", {"", "é", "2", sh}, {{"é", sh}, {"2", 0}}},
        {"a letter of another script", {"", "Ж", "Ж", sh}, {{"ж", sh}}},
        {"keypad enter", {"return", "\r", "\r", 0}, {{"return", 0}}},
        {"delete", {"delete", "", "", 0}, {{"delete", 0}, {"forwardDelete", 0}}},
        {"forward delete", {"forwardDelete", "", "", opt}, {{"forwardDelete", opt}, {"delete", opt}}},
        {"space", {"space", " ", " ", 0}, {{"space", 0}}}, {"shift tab", {"tab", "\t", "\x19", sh}, {{"tab", sh}}},
        {"a modifier alone", {"", "", "", sh}, {}}, {"a control character", {"", "\x03", "\x03", ctl}, {}},
        {"two characters", {"", "ab", "ab", 0}, {}}, {"a function key", {"", utf8(0xF704), utf8(0xF704), 0}, {}},
        {"the last before them", {"", utf8(0xF6FF), "", 0}, {{utf8(0xF6FF), 0}}}, {"broken text", {"", "\xC3", "", 0}, {}},
        {"overlong text", {"", "\xC1\xB3", "", 0}, {}},
        // clang-format on
    };
    for (const PressCase &each : cases) EXPECT_EQ(candidates(each.press), each.expected) << each.what;
}

TEST(Letters, changeCaseInBothWays) {
    const std::pair<std::string_view, std::string_view> pairs[] = {
        // clang-format off
        {"a", "A"}, {"z", "Z"}, {"ä", "Ä"}, {"þ", "Þ"}, {"ÿ", "Ÿ"}, {"č", "Č"}, {"ž", "Ž"}, {"ł", "Ł"}, {"ı", "ı"},
        {"σ", "Σ"}, {"ё", "Ё"}, {"я", "Я"}, {"ա", "Ա"}, {"×", "×"}, {"÷", "÷"}, {"1", "1"}, {"[", "["}, {"ab", "ab"},
        {"", ""},
        // clang-format on
    };
    for (const auto &[low, up] : pairs) {
        EXPECT_EQ(lowerCased(up), low);
        EXPECT_EQ(upperCased(low), up);
        EXPECT_EQ(lowerCased(low), low);
    }
}

}  // namespace
}  // namespace kiv
