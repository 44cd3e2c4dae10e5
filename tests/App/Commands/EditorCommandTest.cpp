#include "App/Commands/EditorCommand.h"

#include <gtest/gtest.h>

#include <set>

namespace kiv {
namespace {

// Also: a command's shortcut would never be reached if an earlier one had the same.
TEST(EditorCommands, standInTheirOrderWithNamesThatLeadBackAndShortcutsOfTheirOwn) {
    std::set<std::pair<std::string, std::uint64_t>> shortcuts;
    std::set<std::string_view> repeating;
    for (int i = 0; i < editorCommandCount; ++i) {
        const EditorCommandRow &now = row(EditorCommand(i)), &before = row(EditorCommand(std::max(i - 1, 0)));
        EXPECT_EQ(now.command, EditorCommand(i)) << i;
        EXPECT_EQ(editorCommandFromRaw(now.raw), now.command) << now.raw;
        EXPECT_TRUE(!now.shortcut || shortcuts.emplace(now.shortcut->key, now.shortcut->modifiers).second) << now.raw;
        if (repeats(now.command)) repeating.insert(now.raw);
        const int groupStep = int(now.group) - int(before.group);
        EXPECT_TRUE(groupStep == 0 || groupStep == 1) << now.raw;
        EXPECT_TRUE(now.rule == (groupStep ? 0 : before.rule) || (!groupStep && now.rule == before.rule + 1)) << now.raw;
    }
    EXPECT_EQ(repeating, (std::set<std::string_view>{"zoomIn", "zoomOut", "undo", "redo"}));
    EXPECT_EQ(editorCommandFromRaw("delete"), EditorCommand::delete_);
    for (const char *unknown : {"", "Open", "delete_", "open ", "quit"}) EXPECT_FALSE(editorCommandFromRaw(unknown)) << unknown;
    const char *headings[] = {"File", "Edit", "Transport", "Audio", "View", "Loop", "Spectral"};
    for (int i = 0; i < editorCommandGroupCount; ++i) EXPECT_EQ(heading(EditorCommandGroup(i)), headings[i]);
}

}  // namespace
}  // namespace kiv
