#include "App/Commands/ShortcutStore.h"

#include <gtest/gtest.h>

#include "Platform/Fake/FakeDefaults.h"

namespace kiv {
namespace {

constexpr std::uint64_t sh = Shortcut::shift, cmd = Shortcut::command;
using enum EditorCommand;

struct ShortcutStoreTest : testing::Test {
    FakeDefaults defaults;
    ShortcutStore store{defaults};
    ShortcutRecorder recorder{store};

    void record(EditorCommand command, const Shortcut &shortcut) {
        recorder.toggle(command);
        recorder.capture(shortcut);
    }
    std::optional<std::string> stored() const { return defaults.text("shortcuts"); }
};

TEST_F(ShortcutStoreTest, startsWithTheDefaultsAndKeepsChangesOnceSaved) {
    for (const EditorCommandRow &each : editorCommands()) {
        EXPECT_EQ(store.shortcut(each.command), each.shortcut) << each.raw;
        EXPECT_FALSE(store.isCustom(each.command)) << each.raw;
    }
    store.store(Shortcut{"k", sh}, revert);
    store.store(std::nullopt, save);
    store.store(Shortcut{"k", 0}, redo);
    store.store(row(redo).shortcut, redo);  // the default is no change
    EXPECT_FALSE(stored());
    store.save();
    const ShortcutStore again(defaults);
    EXPECT_EQ(again.shortcut(revert), (Shortcut{"k", sh}));
    EXPECT_EQ(again.shortcut(save), std::nullopt);
    EXPECT_TRUE(again.isCustom(revert) && again.isCustom(save) && !again.isCustom(redo));
    EXPECT_EQ(stored(), R"({"revert":{"key":"k","modifiers":131072},"save":{"key":null,"modifiers":0}})");
}

TEST_F(ShortcutStoreTest, tellsAfterASaveEvenOneThatCannotBeWritten) {
    int told = 0;
    const Subscription subscription = store.didChange.add([&](const ShortcutStore &) { ++told; });
    store.store(Shortcut{"k", 0}, save);
    EXPECT_EQ(told, 0);
    store.save();
    const auto before = stored();
    store.store(Shortcut{"\xFF", 0}, save);
    store.save();
    EXPECT_EQ(told, 2);
    EXPECT_EQ(stored(), before);
}

TEST_F(ShortcutStoreTest, whatCannotBeDecodedCountsAsNothingAndWhatIsForeignIsKept) {
    for (const char *text :
         {"", "{", "[]", "3", R"({"save": null})", R"({"save": {"key": "k"}})", R"({"save": {"key": 1, "modifiers": 0}})",
          R"({"save": {"key": "k", "modifiers": -1}})", R"({"save": {"key": "k", "modifiers": 1.5}})",
          R"({"save": {"key": "k", "modifiers": "0"}})", R"({"revert": {"key": "k", "modifiers": 0}, "save": 7})"}) {
        defaults.setText("shortcuts", text);
        const ShortcutStore loaded(defaults);
        for (const EditorCommandRow &each : editorCommands()) EXPECT_FALSE(loaded.isCustom(each.command)) << text;
    }
    defaults.setText("shortcuts", R"({"fly": {"key": "f", "modifiers": 0}, "cut": {"modifiers": 3},
                                      "save": {"key": "k", "modifiers": 18446744073709551615},
                                      "revert": {"key": "r", "modifiers": 65536}})");
    ShortcutStore loaded(defaults);
    EXPECT_EQ(loaded.shortcut(save), (Shortcut{"k", Shortcut::modifierMask}));
    EXPECT_EQ(loaded.shortcut(revert), (Shortcut{"r", 0}));
    EXPECT_EQ(loaded.shortcut(cut), std::nullopt);
    EXPECT_FALSE(loaded.match({{"f", 0}}));
    loaded.save();
    EXPECT_NE(stored()->find("fly"), std::string::npos);
}

// The order of the commands counts, not that of the candidates.
TEST_F(ShortcutStoreTest, matchesTheFirstCommandInTheirOrder) {
    const auto shiftEqual = candidates(KeyPress{"", "=", "+", sh});
    const struct {
        std::optional<Shortcut> stored;  // for revert
        std::vector<Shortcut> pressed;
        std::optional<EditorCommand> command;
    } cases[] = {
        {{}, {{"space", 0}}, playStop},
        {{}, {{"forwardDelete", 0}, {"delete", 0}}, delete_},
        {{}, {{"s", cmd | Shortcut::control}}, {}},
        {{}, {}, {}},
        {{}, {{"v", 0}, {"space", 0}}, playStop},
        {Shortcut{"space", 0}, {{"space", 0}}, revert},
        {Shortcut{"+", 0}, shiftEqual, revert},  // however it was stored
        {Shortcut{"=", 0}, shiftEqual, revert},
        {Shortcut{"=", cmd}, shiftEqual, {}},
    };
    for (const auto &each : cases) {
        store.store(each.stored, revert);
        EXPECT_EQ(store.match(each.pressed), each.command) << testing::PrintToString(each.pressed.size());
    }
    store.store(std::nullopt, playStop);
    EXPECT_EQ(store.match({{"space", 0}}), std::nullopt);
}

TEST_F(ShortcutStoreTest, recordingTakesTheShortcutFromTheFirstThatHadItAndSaysSo) {
    std::optional<std::string> seen;  // when the store tells
    const Subscription subscription = store.didChange.add([&](const ShortcutStore &) { seen = recorder.notice; });
    record(zoomOut, {"1", cmd});
    EXPECT_EQ(store.shortcut(zoomOut), (Shortcut{"1", cmd}));
    EXPECT_EQ(store.shortcut(zoomIn), std::nullopt);
    EXPECT_EQ(seen, "⌘1 was used by “Zoom In”, which now has no shortcut.");
    EXPECT_EQ(recorder.notice, seen);
    EXPECT_EQ(recorder.recording, std::nullopt);
    EXPECT_EQ(stored(), R"({"zoomIn":{"key":null,"modifiers":0},"zoomOut":{"key":"1","modifiers":1048576}})");
    store.store(Shortcut{"k", 0}, save);
    store.store(Shortcut{"k", 0}, loop);
    record(eq, {"k", 0});
    EXPECT_EQ(store.shortcut(save), std::nullopt);
    EXPECT_EQ(store.shortcut(loop), (Shortcut{"k", 0}));
    recorder.capture({"l", 0});  // nothing is being recorded any more
    EXPECT_EQ(store.shortcut(eq), (Shortcut{"k", 0}));
}

TEST_F(ShortcutStoreTest, recordingACommandsOwnShortcutIsNoConflict) {
    recorder.capture({"k", 0});
    EXPECT_FALSE(stored());
    record(zoomIn, {"1", cmd});
    EXPECT_EQ(recorder.notice, std::nullopt);
    EXPECT_EQ(stored(), "{}");
    record(zoomIn, {"k", 0});
    EXPECT_TRUE(store.isCustom(zoomIn));
    record(zoomIn, {"1", cmd});
    EXPECT_EQ(stored(), "{}");
}

TEST_F(ShortcutStoreTest, aSecondClickAndRestoringTheDefaultsEndTheRecording) {
    recorder.toggle(eq);
    recorder.toggle(loop);
    EXPECT_EQ(recorder.recording, loop);
    recorder.toggle(loop);
    EXPECT_EQ(recorder.recording, std::nullopt);
    record(zoomOut, {"1", cmd});
    recorder.toggle(save);
    int told = 0;
    const Subscription subscription = recorder.changed.add([&](const ShortcutRecorder &now) {
        ++told;
        EXPECT_FALSE(now.recording || now.notice);
    });
    recorder.restoreDefaults();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(stored(), "{}");
    EXPECT_EQ(store.shortcut(zoomIn), row(zoomIn).shortcut);
}

}  // namespace
}  // namespace kiv
