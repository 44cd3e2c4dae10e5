#include "App/Commands/EditorCommand.h"

#include <gtest/gtest.h>

#include <set>

namespace kiv {
namespace {

TEST(EditorCommands, eachRowStandsAtItsCommand) {
    for (int i = 0; i < editorCommandCount; ++i) EXPECT_EQ(row(EditorCommand(i)).command, EditorCommand(i)) << i;
}

TEST(EditorCommands, rawNamesLeadBackToTheCommandAndOthersToNone) {
    for (const EditorCommandRow &each : editorCommands()) EXPECT_EQ(editorCommandFromRaw(each.raw), each.command) << each.raw;
    EXPECT_EQ(editorCommandFromRaw("delete"), EditorCommand::delete_);
    for (const char *unknown : {"", "Open", "delete_", "open ", "quit"}) EXPECT_FALSE(editorCommandFromRaw(unknown)) << unknown;
}

TEST(EditorCommands, groupsAndMenuSectionsFollowTheOrder) {
    for (int i = 1; i < editorCommandCount; ++i) {
        const EditorCommandRow &before = row(EditorCommand(i - 1)), &now = row(EditorCommand(i));
        const int groupStep = int(now.group) - int(before.group);
        EXPECT_TRUE(groupStep == 0 || groupStep == 1) << now.raw;
        EXPECT_TRUE(now.rule == (groupStep ? 0 : before.rule) || (!groupStep && now.rule == before.rule + 1)) << now.raw;
    }
}

// A command's shortcut would never be reached if an earlier one had the same.
TEST(EditorCommands, noTwoDefaultsAreTheSame) {
    std::set<std::pair<std::string, std::uint64_t>> seen;
    for (const EditorCommandRow &each : editorCommands())
        EXPECT_TRUE(!each.shortcut || seen.emplace(each.shortcut->key, each.shortcut->modifiers).second) << each.raw;
}

TEST(EditorCommands, theirGroupsHaveHeadings) {
    const char *headings[] = {"File", "Edit", "Transport", "Audio", "View", "Loop", "Spectral"};
    for (int i = 0; i < editorCommandGroupCount; ++i) EXPECT_EQ(heading(EditorCommandGroup(i)), headings[i]);
}

TEST(EditorCommands, onlyFourRepeatWhileTheKeyIsHeld) {
    std::set<std::string_view> repeating;
    for (const EditorCommandRow &each : editorCommands())
        if (repeats(each.command)) repeating.insert(each.raw);
    EXPECT_EQ(repeating, (std::set<std::string_view>{"zoomIn", "zoomOut", "undo", "redo"}));
}

}  // namespace
}  // namespace kiv
