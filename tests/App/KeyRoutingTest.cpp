#include "App/KeyRouting.h"

#include <gtest/gtest.h>

#include "Platform/Fake/FakeDefaults.h"

namespace kiv {
namespace {

constexpr std::uint64_t none = 0, shift = Shortcut::shift, cmd = Shortcut::command, opt = Shortcut::option;

KeyPress named(const char *name, std::uint64_t modifiers = none) {
    KeyPress press;
    press.namedKey = name;
    press.modifiers = modifiers;
    return press;
}

KeyPress typed(const char *character, std::uint64_t modifiers = none) {
    KeyPress press;
    press.plain = press.unmodified = character;
    press.modifiers = modifiers;
    return press;
}

KeyPress repeated(KeyPress press) {
    press.isRepeat = true;
    return press;
}

struct KeyRoutingTest : testing::Test {
    FakeDefaults defaults;
    ShortcutStore store{defaults};

    KeyRoute in(const KeyContext &context, const KeyPress &press) const { return route(press, context, store); }
    static KeyContext with(TextFocus text) {
        KeyContext context;
        context.text = text;
        return context;
    }
    static KeyRoute perform(EditorCommand command) { return PerformCommand{command}; }
    static KeyRoute edit(TextEdit what) { return EditText{what}; }
};

TEST_F(KeyRoutingTest, PressesAreCommandsWhereNoTextIsEdited) {
    EXPECT_EQ(in({}, named("space")), perform(EditorCommand::playStop));
    EXPECT_EQ(in({}, typed("c")), perform(EditorCommand::loop));
    EXPECT_EQ(in({}, typed("g", shift)), perform(EditorCommand::gain));
    EXPECT_EQ(in({}, typed("s", cmd)), perform(EditorCommand::save));
    EXPECT_EQ(in({}, named("forwardDelete")), perform(EditorCommand::delete_));
    EXPECT_EQ(in({}, typed("q")), KeyRoute(KeyPath::focus));
    EXPECT_EQ(in({}, named("left")), KeyRoute(KeyPath::focus));
    EXPECT_EQ(in({}, named("escape")), KeyRoute(KeyPath::focus));
}

TEST_F(KeyRoutingTest, HeldKeysRepeatZoomAndHistoryOnly) {
    EXPECT_EQ(in({}, repeated(named("space"))), KeyRoute(KeyPath::swallow));
    EXPECT_EQ(in({}, repeated(named("delete"))), KeyRoute(KeyPath::swallow));
    EXPECT_EQ(in({}, repeated(typed("1", cmd))), perform(EditorCommand::zoomIn));
    EXPECT_EQ(in({}, repeated(typed("z", shift | cmd))), perform(EditorCommand::redo));
    EXPECT_EQ(in({}, repeated(named("left"))), KeyRoute(KeyPath::focus));
}

TEST_F(KeyRoutingTest, AFieldKeepsWhatTypes) {
    struct Row {
        KeyPress press;
        KeyRoute inNumber, inText;
    };
    const KeyRoute focus = KeyPath::focus;
    const Row rows[] = {
        {typed("c"), focus, focus},
        {typed("1"), focus, focus},
        {typed("g", shift), focus, focus},
        {named("delete"), focus, focus},
        {named("left", cmd), focus, focus},
        {named("return"), focus, focus},
        {named("escape"), focus, focus},
        {named("tab", shift), focus, focus},
        {named("space"), perform(EditorCommand::playStop), focus},
        {typed("s", cmd), perform(EditorCommand::save), perform(EditorCommand::save)},
        {typed("s", opt), perform(EditorCommand::slicer), perform(EditorCommand::slicer)},
        {typed("y", opt), KeyPath::swallow, KeyPath::swallow},
        {typed("y", Shortcut::control), KeyPath::swallow, KeyPath::swallow},
        {named("left", opt), focus, focus},
        {typed("x", cmd), edit(TextEdit::cut), edit(TextEdit::cut)},
        {typed("c", cmd), edit(TextEdit::copy), edit(TextEdit::copy)},
        {typed("v", cmd), edit(TextEdit::paste), edit(TextEdit::paste)},
        {typed("a", cmd), edit(TextEdit::selectAll), edit(TextEdit::selectAll)},
        {typed("z", cmd), edit(TextEdit::undo), edit(TextEdit::undo)},
        {typed("z", shift | cmd), edit(TextEdit::redo), edit(TextEdit::redo)},
        {named("pageDown"), focus, focus},
        {repeated(typed("c")), focus, focus},
    };
    for (const Row &row : rows) {
        const std::string name = row.press.namedKey + row.press.plain + " " + std::to_string(row.press.modifiers);
        EXPECT_EQ(in(with(TextFocus::number), row.press), row.inNumber) << name;
        EXPECT_EQ(in(with(TextFocus::text), row.press), row.inText) << name;
    }
}

TEST_F(KeyRoutingTest, AnAdjustableControlTakesTheNumbers) {
    KeyContext cell;
    cell.takesNumbers = true;
    EXPECT_EQ(in({}, typed("1")), perform(EditorCommand::goToStart));
    EXPECT_EQ(in(cell, typed("1")), KeyRoute(KeyPath::focus));
    EXPECT_EQ(in(cell, typed("-")), KeyRoute(KeyPath::focus));
    EXPECT_EQ(in(cell, typed("1", cmd)), perform(EditorCommand::zoomIn));
    EXPECT_EQ(in(cell, typed("c")), perform(EditorCommand::loop));
    EXPECT_EQ(in(cell, named("space")), perform(EditorCommand::playStop));
}

TEST_F(KeyRoutingTest, EveryOtherCommandWaitsForASheet) {
    KeyContext outside;
    outside.hasSheet = true;
    KeyContext inside = outside;
    inside.focusIsInSheet = true;
    EXPECT_EQ(in(outside, named("space")), perform(EditorCommand::playStop));
    EXPECT_EQ(in(inside, named("space")), perform(EditorCommand::playStop));
    EXPECT_EQ(in(inside, repeated(named("space"))), KeyRoute(KeyPath::swallow));
    for (const KeyPress &press : {typed("c"), named("delete"), named("return"), typed("5"), typed("q", cmd)}) {
        EXPECT_EQ(in(outside, press), KeyRoute(KeyPath::sheet));
        EXPECT_EQ(in(inside, press), KeyRoute(KeyPath::focus));
    }
    KeyContext field = inside;
    field.text = TextFocus::number;
    store.store(Shortcut{"5", 0}, EditorCommand::verticalZoomIn);
    for (const KeyContext &context : {outside, inside, field}) {
        for (const KeyPress &press : {typed("s", cmd), typed("s", opt), typed("y", opt), typed("5", Shortcut::control)})
            EXPECT_EQ(in(context, press), KeyRoute(KeyPath::swallow)) << press.plain;
        EXPECT_EQ(in(context, typed("1", cmd)), perform(EditorCommand::zoomIn));
        EXPECT_EQ(in(context, repeated(typed("2", cmd))), perform(EditorCommand::zoomOut));
        const bool types = context.text == TextFocus::number;
        EXPECT_EQ(in(context, typed("z")), types ? KeyRoute(KeyPath::focus) : perform(EditorCommand::zoomSelection));
    }
    EXPECT_EQ(in(outside, typed("5")), KeyRoute(KeyPath::sheet)) << "a number, though a command's key";
    inside = field;
    EXPECT_EQ(in(inside, named("space")), perform(EditorCommand::playStop));
    EXPECT_EQ(in(inside, typed("z", cmd)), edit(TextEdit::undo));
}

TEST_F(KeyRoutingTest, RecordingTakesEveryPress) {
    KeyContext recording;
    recording.isRecording = true;
    recording.text = TextFocus::text;
    EXPECT_EQ(in(recording, typed("s", cmd)), KeyRoute(CaptureShortcut{{"s", cmd}}));
    EXPECT_EQ(in(recording, named("space")), KeyRoute(CaptureShortcut{{"space", 0}}));
    EXPECT_EQ(in(recording, typed("")), KeyRoute(KeyPath::swallow)) << "a key without a candidate leaves the recording on";
}

TEST_F(KeyRoutingTest, NothingFiresWhileComposingOrInAMenu) {
    KeyContext composing, menu;
    composing.isComposing = true;
    menu.hasPopup = true;
    for (const KeyContext &context : {composing, menu})
        for (const KeyPress &press : {named("space"), typed("c"), typed("s", cmd)})
            EXPECT_EQ(in(context, press), KeyRoute(KeyPath::focus));
}

TEST_F(KeyRoutingTest, TheUsersShortcutsCount) {
    store.store(Shortcut{"k", 0}, EditorCommand::playStop);
    EXPECT_EQ(in({}, typed("k")), perform(EditorCommand::playStop));
    EXPECT_EQ(in({}, named("space")), KeyRoute(KeyPath::focus));
    KeyContext sheet;
    sheet.hasSheet = true;
    EXPECT_EQ(in(sheet, typed("k")), perform(EditorCommand::playStop));
}

}  // namespace
}  // namespace kiv
