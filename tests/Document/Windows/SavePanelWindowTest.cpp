#include "Document/Windows/SavePanelWindow.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QElapsedTimer>
#include <QPointer>
#include <QtTest/QTest>

#include "Document/DocumentWorld.h"
#include "Document/Windows/DocumentWindowController.h"
#include "Editor/Views/Accessible.h"
#include "Editor/Views/KivStyle.h"
#include "Editor/Views/TestApplication.h"

namespace kiv {
namespace {

using enum SaveContainer;
using Target = DocumentUi::SaveTarget;

// The panel as a document's window shows it, over a disk in memory.
struct SavePanelWindowTest : testing::Test {
    QApplication &application = testApplication();
    DocumentWorld world;
    ViewStyle style{AudioEditorTheme::dark()};
    ShortcutStore shortcuts{world.defaults};
    std::unique_ptr<DocumentWindowController> controller;
    int answers = 0;
    std::optional<Target> target;
    std::optional<std::string> folder;
    QPointer<BrowsingPanel> panel;

    SavePanelWindowTest() {
        QApplication::setStyle(new KivStyle);
        installAccessibility();
        controller = std::make_unique<DocumentWindowController>(
            WindowServices{{*world.files, world.jobs, world.settings, world.clipboard, &world.playback}, style, shortcuts});
        for (const char *name : {"/music/one.wav", "/music/take 10.aif", "/music/take 2.flac", "/music/song.mp3"})
            world.disk.put(name, {});
        world.disk.makeFolder("/music/Album");
    }
    void ask(const char *path = "/music/drum.wav", std::optional<AudioSaveFormat> format = AudioSaveFormat{wav, 24}) {
        controller->chooseFile({"Save As", "", path, format}, [this](const std::optional<Target> &chosen) {
            ++answers;
            target = chosen;
        });
        find();
        settle();
    }
    void askForFolder(const char *path) {
        controller->chooseFolder({path, "Click Allow.", "Allow"}, [this](const std::optional<std::string> &chosen) {
            ++answers;
            folder = chosen;
        });
        find();
        settle();
    }
    void find() {
        for (QWidget *window : QApplication::topLevelWidgets())
            if (auto *found = dynamic_cast<BrowsingPanel *>(window); found && found->isVisible()) panel = found;
        panel->activateWindow();
    }
    void settle() {
        world.jobs.runAll();
        for (int i = 0; i < 3; ++i) QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    template <class Widget>
    Widget &part(const char *name) {
        for (auto *widget : panel->findChildren<Widget *>())
            if (widget->accessibleName() == name && widget->isVisible()) return *widget;
        throw std::logic_error(name);
    }
    Field &name() { return part<Field>("Name"); }
    RowList &files() { return part<RowList>("Files"); }
    std::string words() {
        for (auto *label : panel->findChildren<NoteLabel *>())
            if (label->isVisible()) return label->text().toStdString();
        return "";
    }
    std::vector<std::string> rows() {
        std::vector<std::string> texts;
        for (int i = 0; i < files().model()->rowCount(); ++i)
            texts.push_back(
                files().model()->index(i, 0).data(Qt::AccessibleTextRole).toString().section(',', 0, 0).toStdString());
        return texts;
    }
    QPushButton &button(const char *text) {
        for (auto *found : panel->findChildren<QPushButton *>())
            if (found->text() == text && found->isVisible()) return *found;
        throw std::logic_error(text);
    }
    void key(int code, Qt::KeyboardModifiers modifiers = {}, const QString &text = {}) {
        QKeyEvent press(QEvent::KeyPress, code, modifiers, text);
        QApplication::sendEvent(panel->focusWidget() ? panel->focusWidget() : panel.data(), &press);
        settle();
    }
    void type(const QString &text) {
        for (const QChar c : text) key(0, {}, c);
    }
};

TEST_F(SavePanelWindowTest, EnterSavesUnderTheNameTypedOverTheStem) {
    ask();
    EXPECT_EQ(name().selectedText(), "drum");
    EXPECT_EQ(rows(), (std::vector<std::string>{"Album", "one.wav", "song.mp3", "take 2.flac", "take 10.aif"}));
    type("kick");
    EXPECT_EQ(name().text(), "kick.wav");
    key(Qt::Key_Return);
    ASSERT_TRUE(target);
    EXPECT_EQ(target->path, "/music/kick.wav");
    EXPECT_EQ(target->format, (AudioSaveFormat{wav, 24}));
    EXPECT_FALSE(panel) << "it is gone with its answer";
    EXPECT_EQ(answers, 1);
}

TEST_F(SavePanelWindowTest, EscAndTheCloseButtonChooseNothing) {
    ask();
    key(Qt::Key_Escape);
    EXPECT_TRUE(answers == 1 && !target);
    ask();
    panel->close();
    settle();
    EXPECT_TRUE(answers == 2 && !target && !panel);
}

TEST_F(SavePanelWindowTest, TabGoesFromTheNameToTheButtonsAndBack) {
    ask();
    const char *stops[] = {"music", "New Folder", "Places", "Files", "WAV", "24", "Save", "Cancel"};
    const auto focused = [&] {
        QWidget *widget = panel->focusWidget();
        const auto *pressed = qobject_cast<QPushButton *>(widget);
        return pressed && !pressed->text().isEmpty() ? pressed->text() : widget->accessibleName();
    };
    for (const char *stop : stops) {
        key(Qt::Key_Tab);
        EXPECT_EQ(focused(), stop);
    }
    key(Qt::Key_Tab);
    EXPECT_EQ(focused(), "Name");
    for (int i = int(std::size(stops)) - 1; i >= 0; --i) {
        key(Qt::Key_Backtab, Qt::ShiftModifier);
        EXPECT_EQ(focused(), stops[i]);
    }
}

TEST_F(SavePanelWindowTest, FormatBitsAndExtensionGoTogether) {
    ask();
    for (int i = 0; i < 5; ++i) key(Qt::Key_Tab);
    key(Qt::Key_Right);
    EXPECT_EQ(name().text(), "drum.aiff");
    EXPECT_EQ(part<Segments>("Bits").count(), 4);
    key(Qt::Key_Tab);
    key(Qt::Key_Left);
    key(Qt::Key_Return);
    EXPECT_EQ(target->format, (AudioSaveFormat{aiff, 16})) << "Enter on a choice saves";
    ask("/music/part.wav", std::nullopt);
    EXPECT_THROW(part<Segments>("Format"), std::logic_error);
    key(Qt::Key_Return);
    EXPECT_EQ(target->format, std::nullopt);
}

TEST_F(SavePanelWindowTest, ListsAreWalkedByKeys) {
    ask();
    files().setFocus(Qt::TabFocusReason);
    type("tak");
    EXPECT_EQ(files().currentIndex().data().toString(), "take 2.flac");
    EXPECT_EQ(name().text(), "drum.wav") << "walking over a row is not choosing it";
    key(Qt::Key_Space, {}, " ");
    EXPECT_EQ(name().text(), "take 2.flac");
    EXPECT_EQ(part<Segments>("Format").chosen(), 2);
    key(Qt::Key_Home);
    key(Qt::Key_Return);
    EXPECT_EQ(panel->focusWidget(), &files());
    EXPECT_TRUE(rows().empty()) << "in the folder Album";
    key(Qt::Key_Backspace);
    EXPECT_EQ(rows().size(), 5u);
    key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(button("/").focusPolicy(), Qt::TabFocus);
    key(0, {}, "/");
    type("music/Al");
    EXPECT_EQ(name().text(), "/music/Album/");
    EXPECT_EQ(name().selectedText(), "bum/");
    key(Qt::Key_Tab);
    EXPECT_FALSE(name().hasSelectedText());
    type("in");
    key(Qt::Key_Return);
    EXPECT_EQ(target->path, "/music/Album/in.flac");
}

TEST_F(SavePanelWindowTest, WhatCannotBeIsSaidAndNotSaved) {
    world.disk.protect("/music");
    ask();
    EXPECT_FALSE(button("Save").isEnabled());
    EXPECT_EQ(words(), "This folder cannot be written to");
    key(Qt::Key_Return);
    EXPECT_EQ(answers, 0);
    world.disk.unprotect("/music");
    key(Qt::Key_F5);
    EXPECT_TRUE(button("Save").isEnabled());
    name().selectAll();
    key(Qt::Key_Delete);
    EXPECT_FALSE(button("Save").isEnabled());
    type("none/a");
    key(Qt::Key_Return);
    EXPECT_EQ(words(), "There is no folder “/music/none”");
    EXPECT_FALSE(name().isReadable());
    key(Qt::Key_Backspace);
    EXPECT_EQ(words(), "") << "gone with the next key";
    EXPECT_EQ(answers, 0);
}

TEST_F(SavePanelWindowTest, MakesFolders) {
    ask();
    key(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    Field &field = part<Field>("Name of the new folder");
    EXPECT_EQ(field.selectedText(), "New folder");
    type("Album");
    key(Qt::Key_Return);
    EXPECT_EQ(words(), "“Album” already exists");
    field.selectAll();
    type("Demos");
    for (int i = 0; i < 2; ++i) QTest::keyClick(&field, Qt::Key_Return);  // before the disk answers
    settle();
    EXPECT_EQ(words(), "");
    EXPECT_TRUE(world.disk.exists("/music/Demos"));
    key(Qt::Key_Return);
    EXPECT_EQ(target->path, "/music/Demos/drum.wav");
}

TEST_F(SavePanelWindowTest, PartsOfASoundGoWhereTheLastOneWent) {
    ask("/music/part.wav", std::nullopt);
    type("Album/a");
    key(Qt::Key_Return);
    EXPECT_EQ(target->path, "/music/Album/a.wav");
    ask("/music/part.wav", std::nullopt);
    key(Qt::Key_Return);
    EXPECT_EQ(target->path, "/music/Album/part.wav");
    ask();
    key(Qt::Key_Return);
    EXPECT_EQ(target->path, "/music/drum.wav") << "the whole goes where it is proposed";
}

TEST_F(SavePanelWindowTest, RemembersItsSizeAndKeepsTheWindowFromClosing) {
    ask();
    panel->resize(800, 700);
    controller->requestClose();
    settle();
    EXPECT_TRUE(panel && answers == 0);
    key(Qt::Key_Escape);
    ask();
    EXPECT_EQ(panel->size(), QSize(800, 700));
    style.setTheme(AudioEditorTheme::light());
    EXPECT_EQ(panel->grab().toImage().pixelColor(2, 2), toColor(style.colors()[AudioEditorThemeColor::dialogBg]));
}

TEST_F(SavePanelWindowTest, AssistiveToolsHearAllOfIt) {
    ask();
    const auto role = [](QWidget &widget) { return QAccessible::queryAccessibleInterface(&widget)->role(); };
    EXPECT_EQ(role(*panel), QAccessible::Dialog);
    EXPECT_EQ(role(files()), QAccessible::List);
    auto *list = QAccessible::queryAccessibleInterface(&files());
    EXPECT_TRUE(list->child(1)->text(QAccessible::Name).startsWith("one.wav, 0 bytes, "));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&part<Segments>("Bits"))->child(2)->text(QAccessible::Name), "24");
}

// The same window without files, names and formats.
TEST_F(SavePanelWindowTest, AFolderIsTakenTypedMadeOrRefused) {
    world.disk.makeFolder("/music/Album/Inner");
    world.disk.makeFolder("/locked");
    world.disk.protect("/locked");
    const auto path = [&] { return part<Field>("Path").text(); };
    askForFolder("/locked");
    EXPECT_EQ(words(), "Click Allow.");
    EXPECT_FALSE(button("Allow").isEnabled()) << "nothing can be written here";
    key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(path(), "/");
    panel->browser().goTo("/music");
    settle();
    EXPECT_EQ(part<RowList>("Folders").model()->rowCount(), 1) << "no files";
    part<RowList>("Folders").setFocus(Qt::TabFocusReason);
    type("al");
    EXPECT_EQ(path(), "/music") << "walking over a row is not choosing it";
    key(Qt::Key_Space, {}, " ");
    EXPECT_EQ(path(), "/music/Album");
    key(Qt::Key_Return);
    EXPECT_EQ(part<RowList>("Folders").model()->index(0, 0).data().toString(), "Inner") << "entered";
    key(Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(path(), "/music/Album/");
    type("none");
    key(Qt::Key_Return);
    EXPECT_FALSE(part<Field>("Path").isReadable());
    EXPECT_EQ(answers, 0);
    key(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    type("Slices");
    key(Qt::Key_Return);
    EXPECT_EQ(path(), "/music/Album/Slices");
    key(Qt::Key_Return);
    EXPECT_TRUE(answers == 1 && folder == "/music/Album/Slices" && !panel);
    askForFolder("/music");
    key(Qt::Key_Escape);
    EXPECT_TRUE(answers == 2 && !folder);
}

// Nothing comes back from the disk until the jobs are run.
TEST_F(SavePanelWindowTest, ADiskThatDoesNotAnswerHoldsNothingUp) {
    ask();
    panel->browser().goTo("/music/Album");
    QTest::qWait(250);
    EXPECT_EQ(files().accessibleDescription(), "Reading the folder…");
    EXPECT_EQ(files().model()->rowCount(), 0);
    key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_TRUE(files().accessibleDescription().isEmpty());
    EXPECT_EQ(rows().size(), 5u) << "another folder is read beside it";
    button("Save").click();
    QTest::qWait(250);
    EXPECT_EQ(words(), "Waiting for the disk…");
    EXPECT_FALSE(button("Save").isEnabled());
    name().setFocus();
    QKeyEvent typed(QEvent::KeyPress, 0, {}, "k");
    QApplication::sendEvent(&name(), &typed);
    EXPECT_TRUE(button("Save").isEnabled()) << "another name can be tried";
    settle();
    EXPECT_EQ(answers, 0) << "what was asked for the last one is dropped";
}

TEST_F(SavePanelWindowTest, TwentyThousandFilesDoNotHoldUpTheWindow) {
    for (int i = 0; i < 20'000; ++i) world.disk.put("/big/take " + std::to_string(i) + ".wav", {});
    ask();
    panel->browser().goTo("/big");
    while (world.jobs.work()) {
    }
    QElapsedTimer clock;
    clock.start();
    while (world.jobs.report()) {
    }
    for (int i = 0; i < 3; ++i) QApplication::processEvents();
    panel->grab();
    const qint64 took = clock.elapsed();
    EXPECT_EQ(rows().size(), 20'000u);
    EXPECT_EQ(rows()[10], "take 10.wav");
    RecordProperty("milliseconds", int(took));
    EXPECT_LT(took, 500) << "fifty is meant; ten times that is a fault on any machine";
}

}  // namespace
}  // namespace kiv
