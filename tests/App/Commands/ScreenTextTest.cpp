#include "App/Commands/ScreenText.h"

#include <gtest/gtest.h>

#include "App/Commands/EditorCommand.h"

namespace kiv {
namespace {

TEST(ScreenText, printsEveryDefaultShortcutAsThisPlatformDoes) {
    // clang-format off
    const std::pair<std::string_view, std::string_view> shortcuts[editorCommandCount] = {
        {"⌘O", "Ctrl+O"}, {"⌘S", "Ctrl+S"}, {"⇧⌘S", "Ctrl+Shift+S"}, {"⌥⇧S", "Alt+Shift+S"}, {"⌥⌘S", "Ctrl+Alt+S"}, {},
        {"⌘W", "Ctrl+W"}, {"⌘Z", "Ctrl+Z"}, {"⇧⌘Z", "Ctrl+Shift+Z"}, {"⌘X", "Ctrl+X"}, {"⌘C", "Ctrl+C"}, {"⌘V", "Ctrl+V"},
        {"⌫", "Backspace"}, {"⌘A", "Ctrl+A"}, {}, {"Space", "Space"}, {"C", "C"}, {"S", "S"}, {"1", "1"}, {"2", "2"},
        {"⇧G", "Shift+G"}, {"⇧N", "Shift+N"}, {"⇧I", "Shift+I"}, {"⇧O", "Shift+O"}, {"⇧S", "Shift+S"}, {"⇧R", "Shift+R"},
        {"⇧T", "Shift+T"}, {"⇧M", "Shift+M"}, {}, {"⇧P", "Shift+P"}, {"⌘1", "Ctrl+1"}, {"⌘2", "Ctrl+2"}, {"A", "A"},
        {"Z", "Z"}, {}, {}, {}, {"V", "V"}, {}, {"⌥S", "Alt+S"}, {"⌥E", "Alt+E"}, {"⌥L", "Alt+L"}, {}, {"J", "J"}, {},
        {"⌥F", "Alt+F"}, {"X", "X"}, {}, {}};
    // clang-format on
    for (const EditorCommandRow &each : editorCommands()) {
        const std::string display = each.shortcut ? each.shortcut->displayString() : "";
        EXPECT_EQ(display, shortcuts[std::size_t(each.command)].first) << each.raw;
        EXPECT_EQ(screenText(display), shortcuts[std::size_t(each.command)].second) << each.raw;
    }
}

TEST(ScreenText, printsKeysAndModifiersByName) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        // clang-format off
        {"⌃⌥⇧⌘X", "Super+Ctrl+Alt+Shift+X"}, {"⌘⌫", "Ctrl+Backspace"}, {"⇧⌦", "Shift+Del"},
        {"⎋ ↩ ⇥ ↖ ↘ ⇞ ⇟", "Esc Enter Tab Home End PgUp PgDn"}, {"⌥← ⌘↑", "Alt+← Ctrl+↑"}, {"⇧Space", "Shift+Space"},
        {"⌘+", "Ctrl++"}, {"⌘,", "Ctrl+,"}, {"⌥)", "Alt+)"}, {"⌥Ä", "Alt+Ä"}, {"⇧", "Shift"},
        {"Choose a file (⌘O)", "Choose a file (Ctrl+O)"}, {"Preferences… (⌘,)", "Preferences… (Ctrl+,)"},
        {"Scroll or drag up / down = 10 ms, with ⇧ = 1 ms; double-click = default", "Scroll or drag up / down = 10 ms, with Shift = 1 ms; double-click = default"},
        {"by one sample (⇧: ten)", "by one sample (Shift: ten)"}, {"zero crossing (⇧)", "zero crossing (Shift)"},
        {"hold ⌥⇧ or ⌘, then drag", "hold Alt+Shift or Ctrl, then drag"},
        {"Drag = paint · right drag = other brush · ⌥ drag = select", "Drag = paint · right drag = other brush · Alt drag = select"},
        {"⌥ drag", "Alt drag"},
        {"“⌘ macOS.wav” could not be opened by macOS", "“⌘ macOS.wav” could not be opened by the system"}, {"“⌘", "“Ctrl"},
        {"⌘1 was used by “Zoom In”, which now has no shortcut.", "Ctrl+1 was used by “Zoom In”, which now has no shortcut."},
        {"Dark or Light, following macOS", "Dark or Light, following the system"},
        {"their own sample rate; macOS converts", "their own sample rate; the system converts"},
        {"−∞ dB – “é” 録音.wav", "−∞ dB – “é” 録音.wav"}, {"", ""}, {"cut off \xE2\x8C", "cut off \xE2\x8C"},
        // clang-format on
    };
    for (const auto &[source, printed] : cases) EXPECT_EQ(screenText(source), printed) << source;
}

}  // namespace
}  // namespace kiv
