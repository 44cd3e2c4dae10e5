#include "App/KeyMonitor.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QWindow>
#include <QtTest/QTest>

#include "App/MainMenu.h"
#include "Document/Windows/KeyWindow.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/KivStyle.h"
#include "Editor/Views/TestApplication.h"
#include "Editor/Views/WindowPartsFixture.h"
#include "Platform/Fake/FakeDefaults.h"

namespace kiv {
namespace {

class FakeWindow : public QWidget, public KeyWindow {
public:
    explicit FakeWindow(FakeTarget &target) : target_(target) {}
    CommandTarget &commandTarget() override { return target_; }

    std::vector<int> reached;  // keys that came through to the focused control

protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->key() != Qt::Key_Shift && event->key() != Qt::Key_Control) reached.push_back(event->key());
    }

private:
    FakeTarget &target_;
};

struct KeyMonitorTest : testing::Test {
    QApplication &application = testApplication();
    FakeDefaults defaults;
    ShortcutStore store{defaults};
    ShortcutRecorder recorder{store};
    KeyMonitor monitor{store, recorder, std::make_unique<LearningKeyboard>()};
    ViewStyle style{AudioEditorTheme::dark()};
    FakeTarget target;
    FakeWindow window{target};

    KeyMonitorTest() {
        window.setFocusPolicy(Qt::StrongFocus);
        window.resize(300, 200);
        window.show();
        window.activateWindow();
        QApplication::processEvents();
        window.setFocus();
    }
    // As the platform delivers them: to the window.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
        QApplication::processEvents();
    }
    static void type(QWidget &into, const char *text) {
        for (; *text; ++text) QTest::keyClick(into.windowHandle(), *text);
        QApplication::processEvents();
    }
    Field &field(FieldContent content) {
        auto *made = new Field(style, content, &window);
        made->show();
        made->setFocus();
        return *made;
    }
};

TEST_F(KeyMonitorTest, CommandsNeverReachTheFocusedControl) {
    press(Qt::Key_Space);
    press(Qt::Key_S, Qt::ControlModifier);
    press(Qt::Key_G, Qt::ShiftModifier);
    EXPECT_EQ(target.performed, (std::vector{EditorCommand::playStop, EditorCommand::save, EditorCommand::gain}));
    EXPECT_TRUE(window.reached.empty());
}

TEST_F(KeyMonitorTest, OtherKeysDoAndOnce) {
    press(Qt::Key_Left);
    press(Qt::Key_Escape);
    EXPECT_EQ(window.reached, (std::vector<int>{Qt::Key_Left, Qt::Key_Escape}));
    EXPECT_TRUE(target.performed.empty());
}

TEST_F(KeyMonitorTest, TextsGetTheirKeysAndShortcuts) {
    Field &name = field(FieldContent::text);
    type(window, "c 1");
    EXPECT_EQ(name.text(), "c 1");
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(name.selectedText(), "c 1");
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(name.text(), "");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(name.text(), "c 1");
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(name.text(), "");
    EXPECT_TRUE(target.performed.empty());
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(target.performed, std::vector{EditorCommand::save});
}

TEST_F(KeyMonitorTest, NumberFieldsPassTheSpaceBarOn) {
    Field &number = field(FieldContent::number);
    type(window, "12 ");
    EXPECT_EQ(number.text(), "12");
    EXPECT_EQ(target.performed, std::vector{EditorCommand::playStop});
}

TEST_F(KeyMonitorTest, RecordingCapturesTheNextPress) {
    recorder.recording = EditorCommand::reverse;
    press(Qt::Key_Shift);
    EXPECT_TRUE(recorder.recording) << "a modifier alone is no shortcut";
    press(Qt::Key_K, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_FALSE(recorder.recording);
    EXPECT_EQ(store.shortcut(EditorCommand::reverse), (Shortcut{"k", Shortcut::command | Shortcut::option}));
    EXPECT_TRUE(target.performed.empty());
    press(Qt::Key_K, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(target.performed, std::vector{EditorCommand::reverse});
}

TEST_F(KeyMonitorTest, NothingFiresWhileAnInputMethodComposes) {
    Field &name = field(FieldContent::text);
    QInputMethodEvent composing("ka", {});
    QApplication::sendEvent(&name, &composing);
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(target.performed.empty());
    QInputMethodEvent composed;
    composed.setCommitString("か");
    QApplication::sendEvent(&name, &composed);
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(target.performed, std::vector{EditorCommand::save});
}

TEST_F(KeyMonitorTest, WindowsOfOthersAreLeftAlone) {
    QLineEdit dialog;
    dialog.show();
    dialog.activateWindow();
    QApplication::processEvents();
    type(dialog, "c");
    QTest::keyClick(dialog.windowHandle(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(dialog.text(), "c");
    EXPECT_TRUE(target.performed.empty());
}

TEST(LearningKeyboard, TellsPlainFromShifted) {
    testApplication();
    LearningKeyboard keyboard;
    const auto press = [&](int key, Qt::KeyboardModifiers modifiers, quint32 scanCode, const QString &text) {
        const QKeyEvent event(QEvent::KeyPress, key, modifiers, scanCode, 0, 0, text);
        return keyPress(event, keyboard);
    };
    EXPECT_EQ(press(Qt::Key_A, {}, 38, "a").plain, "a");
    const KeyPress letter = press(Qt::Key_G, Qt::ShiftModifier, 42, "G");
    EXPECT_EQ(letter.plain, "g");
    EXPECT_EQ(press(Qt::Key_At, Qt::ShiftModifier, 11, "@").plain, "@") << "not known yet";
    EXPECT_EQ(press(Qt::Key_2, {}, 11, "2").plain, "2");
    const KeyPress digit = press(Qt::Key_At, Qt::ShiftModifier, 11, "@");
    EXPECT_EQ(digit.plain + digit.unmodified, "2@");
    EXPECT_EQ(press(Qt::Key_S, Qt::ControlModifier, 39, "\x13").plain, "s");
    EXPECT_EQ(press(Qt::Key_S, Qt::ControlModifier, 39, "\x13").modifiers, Shortcut::command);
    EXPECT_EQ(press(Qt::Key_Enter, Qt::KeypadModifier, 104, "\r").namedKey, "return");
    EXPECT_EQ(press(Qt::Key_Backtab, Qt::ShiftModifier, 23, "").namedKey, "tab");
    EXPECT_EQ(press(Qt::Key_F5, {}, 71, "").plain, "");
}

struct MainMenuTest : testing::Test {
    QApplication &application = testApplication();
    FakeDefaults defaults;
    ShortcutStore store{defaults};
    ViewStyle style{AudioEditorTheme::dark()};
    FakeTarget target;
    int quits = 0;
    MenuBar bar{style};

    MainMenuTest() {
        fillMainMenu(bar, target, store, {[this] { ++quits; }, [] {}});
    }

    QMenu *menu(const QString &title) const {
        for (QAction *action : bar.actions())
            if (action->text() == title) return action->menu();
        return nullptr;
    }
    QString texts(const QString &title) const {
        QString all;
        for (QAction *action : menu(title)->actions()) all += action->isSeparator() ? "---|" : action->text() + "|";
        return all;
    }
    QAction *item(const QString &title, const QString &text) const {
        for (QAction *action : menu(title)->actions())
            if (action->text() == text) return action;
        return nullptr;
    }
};

TEST_F(MainMenuTest, HoldsEveryCommandInItsGroupWithRulesBetween) {
    QString titles;
    int commands = 0;
    for (QAction *action : bar.actions()) {
        titles += action->text() + " ";
        for (QAction *entry : action->menu()->actions()) commands += !entry->isSeparator();
    }
    EXPECT_EQ(titles, "File Edit Transport Audio View Loop Spectral Help ");
    EXPECT_EQ(commands, editorCommandCount + 2) << "and Quit and About";
    EXPECT_EQ(texts("File"), "Open…|---|Save|Save As…|Save Selection As…|Save Slices|Revert to Saved|---|Close|---|Quit|");
    EXPECT_EQ(texts("Transport"), "Play / Stop|Loop (Cycle)|Play Slice Under Mouse|---|Go to Start|Go to End|");
}

TEST_F(MainMenuTest, IsBroughtUpToDateWhenItOpens) {
    target.disabled = {EditorCommand::save};
    target.checked = {EditorCommand::loop};
    emit menu("File")->aboutToShow();
    emit menu("Transport")->aboutToShow();
    EXPECT_FALSE(item("File", "Save")->isEnabled());
    EXPECT_TRUE(item("Transport", "Loop (Cycle)")->isChecked());
    item("File", "Save As…")->trigger();
    EXPECT_EQ(target.performed, std::vector{EditorCommand::saveAs});
    item("File", "Quit")->trigger();
    EXPECT_EQ(quits, 1);
}

TEST_F(MainMenuTest, BindsNoKeys) {
    for (QAction *action : bar.actions())
        for (QAction *entry : action->menu()->actions()) {
            EXPECT_TRUE(entry->shortcut().isEmpty());
            EXPECT_FALSE(entry->text().contains('&'));
        }
}

}  // namespace
}  // namespace kiv
