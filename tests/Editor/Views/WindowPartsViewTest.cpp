#include <QAccessible>
#include <QAction>
#include <QElapsedTimer>
#include <QWheelEvent>
#include <set>

#include "Editor/Views/AlertSheet.h"
#include "Editor/Views/BusyLine.h"
#include "Editor/Views/CommandMenu.h"
#include "Editor/Views/FocusRing.h"
#include "Editor/Views/InfoLine.h"
#include "Editor/Views/LevelSheet.h"
#include "Editor/Views/MonoSheet.h"
#include "Editor/Views/Notice.h"
#include "Editor/Views/SheetHost.h"
#include "Editor/Views/Tips.h"
#include "Editor/Views/TopBar.h"
#include "Editor/Views/WindowPartsFixture.h"

namespace kiv {
namespace {

using Item = TopBarItem;
using enum EditorCommand;

struct TopBarTest : WindowPartsFixture {
    TopBar bar{model, style, target, &window};
    TopBarTest() {
        bar.setGeometry(0, 0, 1280, 44);
        showWindow();
    }
};

TEST_F(TopBarTest, ButtonsPerformTheirCommandsOnReleaseInside) {
    for (const auto &[item, command] : {std::pair{Item::goToStart, goToStart},
                                        {Item::playStop, playStop},
                                        {Item::loop, loop},
                                        {Item::zoomIn, zoomIn},
                                        {Item::verticalZoomIn, verticalZoomIn},
                                        {Item::verticalZoomValue, verticalZoomReset},
                                        {Item::followPlayhead, followPlayhead}}) {
        target.performed.clear();
        click(bar.button(item));
        EXPECT_EQ(target.performed, std::vector{command});
    }
    target.performed.clear();
    QWidget *button = bar.button(Item::zoomIn);
    QMouseEvent press(QEvent::MouseButtonPress, {5, 5}, button->mapToGlobal(QPointF(5, 5)), Qt::LeftButton, Qt::LeftButton, {});
    QApplication::sendEvent(button, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, {500, 5}, button->mapToGlobal(QPointF(500, 5)), Qt::LeftButton, {}, {});
    QApplication::sendEvent(button, &release);
    EXPECT_TRUE(target.performed.empty());
}

TEST_F(TopBarTest, ShowsWhatCanActAndWhatIsOn) {
    target.disabled = {zoomSelection, slicer};
    target.checked = {loop};
    bar.refreshCommands();
    EXPECT_FALSE(bar.button(Item::zoomSelection)->isEnabled());
    EXPECT_FALSE(bar.button(Item::slicer)->isEnabled());
    EXPECT_TRUE(bar.button(Item::zoomFit)->isEnabled());
    EXPECT_TRUE(bar.button(Item::loop)->isChecked());
    click(bar.button(Item::loop));
    EXPECT_TRUE(bar.button(Item::loop)->isChecked()) << "a click alone turns nothing over";
    target.waits = true;
    target.disabled = {zoomFit};
    bar.refreshCommands();
    EXPECT_TRUE(bar.button(Item::zoomFit)->isEnabled()) << "does not grey out under a sheet";
}

TEST_F(TopBarTest, PlayTurnsIntoStop) {
    EXPECT_EQ(bar.button(Item::playStop)->look().icon, "play");
    model.setPlaying(true);
    EXPECT_EQ(bar.button(Item::playStop)->look().icon, "stop");
    EXPECT_TRUE(bar.button(Item::playStop)->look().isOn);
}

TEST_F(TopBarTest, TypedPositionsSetTheCursor) {
    load(AudioEditorBuffer(std::vector<float>(88200), 1, 44100));
    click(&bar.position());
    ASSERT_TRUE(bar.position().isEditing());
    auto *field = window.findChild<QLineEdit *>();
    field->setText("nonsense");
    key(field, Qt::Key_Return);
    EXPECT_TRUE(bar.position().isEditing()) << "what cannot be read is not applied";
    field->setText("1.5");
    key(field, Qt::Key_Return);
    EXPECT_FALSE(bar.position().isEditing());
    EXPECT_EQ(state().cursorFrame, 66150);
    EXPECT_EQ(bar.position().value(), "1.500 s");
    settle();
    click(&bar.position());
    field = window.findChild<QLineEdit *>();
    field->setText("0.1");
    key(field, Qt::Key_Escape);
    EXPECT_EQ(state().cursorFrame, 66150);
}

TEST_F(TopBarTest, PaintsWhatChangedAndNothingElse) {
    load(AudioEditorBuffer(std::vector<float>(88200), 1, 44100));
    PaintCount count(bar);
    const auto painted = [&](auto act) { return count.during([&] { act(), settle(); }); };
    EXPECT_EQ(painted([&] { model.setPlayheads({{1, 4410}}); }), (std::set<QWidget *>{&bar, &bar.position()}));
    EXPECT_TRUE(painted([&] {
                    model.setPlayheads({{1, 4410.2}});  // reads the same
                    model.setMaxLevel({});
                    model.setVerticalZoomDb(0);
                    model.setLoopEnabled(model.state().loopEnabled);
                    bar.refreshCommands();
                }).empty());
    EXPECT_TRUE(painted([&] { model.setView({2, 30000}); }).empty());
}

TEST_F(TopBarTest, PositionIsNeverCut) {
    model.toggleTimeUnit();
    for (const std::int64_t frames : {1000LL, 20'000'000LL}) {
        load(AudioEditorBuffer(std::vector<float>(std::size_t(frames)), 1, 44100));
        model.placeCursor(frames);
        EXPECT_LE(bar.position().textWidth(), bar.position().width() - ValueButton::reach) << frames;
    }
}

TEST_F(TopBarTest, MaxLevelIsResetByAClick) {
    model.setMaxLevel(1.5f);
    EXPECT_EQ(bar.button(Item::maxLevel)->look().text, "+3.5 dB");
    EXPECT_TRUE(bar.button(Item::maxLevel)->look().isOver);
    click(bar.button(Item::maxLevel));
    EXPECT_EQ(state().maxLevel, std::nullopt);
    EXPECT_EQ(bar.button(Item::maxLevel)->look().text, "–");
}

TEST_F(TopBarTest, WheelStepsTheVerticalZoomOverItsGroupOnly) {
    wheel(bar.button(Item::verticalZoomValue), 2);
    wheel(bar.button(Item::verticalZoomOut), -1);
    EXPECT_EQ(target.performed, (std::vector{verticalZoomIn, verticalZoomIn, verticalZoomOut}));
    wheel(bar.button(Item::zoomIn), 1);
    wheel(&bar, 1);
    EXPECT_EQ(target.performed.size(), 3u);
}

TEST_F(TopBarTest, TipsEndWithTheShortcut) {
    EXPECT_EQ(bar.button(Item::goToStart)->toolTip(), "Go to Start (1)");
    EXPECT_EQ(bar.button(Item::zoomIn)->toolTip(), "Zoom In (Ctrl+1)");
    EXPECT_EQ(bar.button(Item::followPlayhead)->toolTip(), "Follows Playhead");
    model.setVerticalZoomDb(6);
    EXPECT_EQ(bar.button(Item::verticalZoomValue)->toolTip(), "Reset vertical zoom (now +6 dB)");
}

TEST_F(TopBarTest, EveryControlHasANameForThoseWhoCannotSeeIt) {
    for (QPushButton *button : bar.findChildren<QPushButton *>()) {
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(button);
        EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty());
        EXPECT_TRUE(accessible->role() == QAccessible::Button || accessible->role() == QAccessible::CheckBox);
    }
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&bar)->role(), QAccessible::ToolBar);
}

TEST_F(TopBarTest, AnyWheelOverADisabledButtonOfTheGroupStepsIt) {
    bar.button(Item::verticalZoomIn)->setEnabled(false);
    wheel(bar.button(Item::verticalZoomIn), -1);
    EXPECT_EQ(target.performed, std::vector{verticalZoomOut});
}

struct InfoLineViewTest : WindowPartsFixture {
    InfoLine line{model, style, &window};
    InfoLineViewTest() {
        load(AudioEditorBuffer(std::vector<float>(88200), 1, 44100));
        line.setGeometry(0, 0, 1280, 28);
        showWindow();
    }
};

TEST_F(InfoLineViewTest, ValuesTurnIntoFields) {
    model.select({22050, 44100});
    EXPECT_FALSE(line.value(InfoField::cursor)->isVisible());
    click(line.value(InfoField::selectionLength));
    auto *field = window.findChild<QLineEdit *>();
    ASSERT_TRUE(field);
    EXPECT_EQ(field->text(), "0.500 s");
    field->setText("1 s");
    key(field, Qt::Key_Enter);
    EXPECT_EQ(state().selection, (FrameRange{22050, 66150}));
}

TEST_F(InfoLineViewTest, SpeaksThePlacesOnlyWhenTheyChange) {
    std::vector<QString> spoken;
    line.onSpokenText = [&](const QString &text) { spoken.push_back(text); };
    model.placeCursor(44100);
    line.setPointer(WaveformHover{100, -3});
    line.setPointer({});
    EXPECT_EQ(spoken, std::vector<QString>{"Cursor 1.000 s"});
}

TEST_F(InfoLineViewTest, PaintsNothingWhenItReadsTheSame) {
    PaintCount count(line);
    EXPECT_TRUE(count
                    .during([&] {
                        model.setPlayheads({{1, 1000}});
                        model.setView({2, 30000});
                        model.setVerticalZoomDb(3);
                        line.setPointer({});
                        line.setFacts({});
                        settle();
                    })
                    .empty());
}

TEST_F(InfoLineViewTest, ShowsHowFarLongWorkHasComeAndNothingElseChanges) {
    line.setFacts({"WAV", "16-bit", 44100});
    const InfoLineScene before = line.scene();
    line.setProgress(0.429);
    EXPECT_EQ(line.scene().right.front().texts.front().text, "42 %");
    EXPECT_EQ(line.scene().left, before.left);
    line.setProgress({});
    EXPECT_EQ(line.scene(), before);
}

struct SheetTest : WindowPartsFixture {
    SheetHost host{style, &window};
    SheetTest() {
        load(AudioEditorBuffer(std::vector<float>(88200, 0.5f), 2, 44100));
        host.setRoom(72, 1280);
        showWindow();
    }
    template <class S, class... Arguments>
    S &show(Arguments &&...arguments) {
        auto made = std::make_unique<S>(std::forward<Arguments>(arguments)...);
        S &sheet = *made;
        host.show(std::move(made));
        settle();
        return sheet;
    }
    static KeyPress typed(const char *character, std::uint64_t modifiers) {
        KeyPress press;
        press.plain = press.unmodified = character;
        press.modifiers = modifiers;
        return press;
    }
    static QPushButton *button(const QWidget &sheet, const QString &text) {
        for (QPushButton *candidate : sheet.findChildren<QPushButton *>())
            if (candidate->text() == text) return candidate;
        return nullptr;
    }
};

TEST_F(SheetTest, HangsFromTheBarInTheMiddle) {
    model.openDialog(Dialog::gain);
    auto &sheet = show<LevelSheet>(model, Dialog::gain, style);
    EXPECT_EQ(QRect(sheet.mapTo(&window, QPoint()), sheet.size()), QRect(400, 72, 480, 152));
    EXPECT_TRUE(sheet.isAncestorOf(QApplication::focusWidget()));
    host.setRoom(72, 480);
    EXPECT_EQ(sheet.width(), 448) << "16 stay free at both sides";
}

TEST_F(SheetTest, FieldSliderAndModelAgree) {
    model.openDialog(Dialog::gain);
    auto &sheet = show<LevelSheet>(model, Dialog::gain, style);
    auto *field = sheet.findChild<QLineEdit *>();
    auto *slider = sheet.findChild<QSlider *>();
    EXPECT_EQ(field->text(), "0.0");
    type(field, "-4,5");
    EXPECT_EQ(state().gainDb, -4.5);
    EXPECT_EQ(slider->value(), -45);
    EXPECT_EQ(field->text(), "-4,5") << "is not rewritten while it is typed";
    slider->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(field->text(), "−4.5") << "but once it is left";
    wheel(field, 1);
    EXPECT_EQ(field->text(), "−4.0");
    key(slider, Qt::Key_Right, {}, Qt::ShiftModifier);
    EXPECT_EQ(field->text(), "−3.9");
    QMouseEvent twice(QEvent::MouseButtonDblClick, {20, 15}, {}, Qt::LeftButton, Qt::LeftButton, {});
    QApplication::sendEvent(slider, &twice);
    EXPECT_EQ(state().gainDb, 0);
}

TEST_F(SheetTest, UnreadableTextIsNotApplied) {
    model.openDialog(Dialog::gain);
    auto &sheet = show<LevelSheet>(model, Dialog::gain, style);
    auto *field = sheet.findChild<QLineEdit *>();
    type(field, "3x");
    EXPECT_FALSE(button(sheet, "Apply")->isEnabled());
    key(field, Qt::Key_Return);
    EXPECT_EQ(state().dialog, Dialog::gain);
    EXPECT_FALSE(model.canUndo());
    key(field, Qt::Key_Backspace);
    key(field, Qt::Key_Return);
    EXPECT_EQ(state().dialog, std::nullopt);
    EXPECT_TRUE(model.canUndo());
    EXPECT_NEAR(buffer().sample(0, 0), 0.5 * std::pow(10, 0.15), 1e-6);
}

TEST_F(SheetTest, NumbersTypedElsewhereGoToTheField) {
    model.openDialog(Dialog::normalize);
    auto &sheet = show<LevelSheet>(model, Dialog::normalize, style);
    window.setFocus();
    EXPECT_TRUE(sheet.takeKey(typed("-", 0)));
    EXPECT_EQ(QApplication::focusWidget(), sheet.findChild<QLineEdit *>());
    EXPECT_TRUE(state().dialogTypedAhead);
    EXPECT_EQ(state().dialogText, "-");
    EXPECT_FALSE(sheet.takeKey(typed("3", Shortcut::command)));
}

TEST_F(SheetTest, EscapeCancelsAndTabStaysInside) {
    model.openDialog(Dialog::gain);
    auto &sheet = show<LevelSheet>(model, Dialog::gain, style);
    for (int i = 0; i < 9; ++i) {
        key(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(sheet.isAncestorOf(QApplication::focusWidget()));
    }
    key(button(sheet, "Cancel"), Qt::Key_Escape);
    EXPECT_EQ(state().dialog, std::nullopt);
    EXPECT_FALSE(model.canUndo());
}

TEST_F(SheetTest, MonoTilesAreChosenByKeysAndConfirmed) {
    model.openDialog(Dialog::mono);
    auto &sheet = show<MonoSheet>(model, style);
    key(QApplication::focusWidget(), Qt::Key_L, "l");
    EXPECT_EQ(state().monoSource, AudioEditorMonoSource::left);
    key(QApplication::focusWidget(), Qt::Key_Right);
    EXPECT_EQ(state().monoSource, AudioEditorMonoSource::right);
    EXPECT_TRUE(button(sheet, "Right")->isChecked());
    click(button(sheet, "Left"));
    EXPECT_EQ(state().monoSource, AudioEditorMonoSource::left);
    key(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(buffer().channels(), 1);
}

TEST_F(SheetTest, AlertButtonsStandFromRightToLeftWithCancelLast) {
    std::vector<std::size_t> answers;
    auto &sheet = show<AlertSheet>(style, AlertTone::warning,
                                   DocumentUi::Question{"Save?", "It will be lost.", {"Save", "Don’t Save", "Cancel"}},
                                   [&](std::size_t answer) { answers.push_back(answer); });
    EXPECT_GT(button(sheet, "Save")->x(), button(sheet, "Don’t Save")->x());
    EXPECT_GT(button(sheet, "Don’t Save")->x(), button(sheet, "Cancel")->x());
    EXPECT_EQ(button(sheet, "Save"), QApplication::focusWidget());
    key(button(sheet, "Don’t Save"), Qt::Key_Return);
    sheet.cancel();
    EXPECT_EQ(answers, std::vector<std::size_t>{1}) << "answered once";
}

TEST_F(SheetTest, EscapeMeansCancelWhereverItStandsInTheList) {
    std::vector<std::size_t> answers;
    const auto answered = [&](std::size_t answer) {
        answers.push_back(answer);
        host.dismiss();
    };
    show<AlertSheet>(style, AlertTone::warning, DocumentUi::Question{"A?", "", {"Yes", "Cancel", "No"}}, answered).cancel();
    show<AlertSheet>(style, AlertTone::error, DocumentUi::Question{"Failed", "", {"OK"}}, answered).cancel();
    show<AlertSheet>(style, AlertTone::warning, DocumentUi::Question{"A?", "", {"Yes", "No"}}, answered).cancel();
    EXPECT_EQ(answers, (std::vector<std::size_t>{1, 0})) << "without a Cancel there is nothing that Esc could mean";
}

TEST_F(SheetTest, LongMessagesWrapWithinTheWidestAlert) {
    QString longText = "word ";
    auto &sheet = show<AlertSheet>(style, AlertTone::error,
                                   DocumentUi::Question{"Short", longText.repeated(60).toStdString(), {"OK"}}, nullptr);
    EXPECT_EQ(sheet.width(), 576);
    EXPECT_GT(sheet.height(), 160);
    EXPECT_LT(button(sheet, "OK")->geometry().bottom(), sheet.height());
}

TEST_F(SheetTest, OneAtATime) {
    bool isGone = false;
    host.onGone = [&] { isGone = true; };
    const auto alert = [&](const char *message) {
        return std::make_unique<AlertSheet>(style, AlertTone::error, DocumentUi::Question{message, "", {"OK"}}, nullptr);
    };
    host.show(alert("first"));
    host.show(alert("second"));
    EXPECT_EQ(host.current()->accessibleName(), "first");
    host.dismiss();
    EXPECT_EQ(host.current()->accessibleName(), "second");
    EXPECT_FALSE(isGone);
    host.dismiss();
    EXPECT_EQ(host.current(), nullptr);
    EXPECT_TRUE(isGone);
}

TEST_F(SheetTest, LevelsAreReadOutAsShown) {
    model.openDialog(Dialog::gain);
    model.setGainDb(-4.5);
    auto &sheet = show<LevelSheet>(model, Dialog::gain, style);
    QAccessibleInterface *slider = QAccessible::queryAccessibleInterface(sheet.findChild<QSlider *>());
    EXPECT_EQ(slider->role(), QAccessible::Slider);
    EXPECT_EQ(slider->text(QAccessible::Value), "−4.5 dB");
    slider->valueInterface()->setCurrentValue(3);
    EXPECT_EQ(state().gainDb, 3);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&sheet)->role(), QAccessible::Dialog);
}

struct OverlaysTest : WindowPartsFixture {};

TEST_F(OverlaysTest, FocusRingOnlyAfterAKey) {
    Button button(style, ButtonKind::bar, &window);
    button.setGeometry(100, 10, 40, 28);
    FocusRing ring(style, &window);
    ring.follow(&button);
    showWindow();
    button.setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(ring.isVisible());
    button.clearFocus();
    button.setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(ring.isVisible());
    EXPECT_EQ(ring.geometry(), QRect(97, 7, 46, 34));
    button.move(200, 10);
    EXPECT_EQ(ring.geometry().x(), 197);
    button.clearFocus();
    EXPECT_FALSE(ring.isVisible());
}

TEST_F(OverlaysTest, NoticeStandsOverTheFootAndGoesAtAClick) {
    Notice notice(style, &window);
    notice.placeOver({44, 100, 1236, 300});
    showWindow();
    notice.tell(NoticeKind::done, "18 slices saved");
    EXPECT_TRUE(notice.isVisible());
    EXPECT_EQ(notice.height(), 36);
    EXPECT_EQ(notice.geometry().bottom(), 399 - 24);
    EXPECT_NEAR(notice.geometry().center().x(), 44 + 618, 1);
    click(&notice);
    EXPECT_FALSE(notice.isVisible());
}

// An assistive tool is told of a widget that appears.
struct ShowCounter : QObject {
    int shown = 0;
    bool eventFilter(QObject *, QEvent *event) override {
        shown += event->type() == QEvent::Show;
        return false;
    }
};

TEST_F(OverlaysTest, EveryNoticeIsAnnounced) {
    Notice notice(style, &window);
    showWindow();
    ShowCounter counter;
    notice.installEventFilter(&counter);
    notice.tell(NoticeKind::done, "18 slices saved");
    notice.tell(NoticeKind::warning, "This file cannot store a loop");
    EXPECT_EQ(counter.shown, 2) << "also the one that takes another's place";
    EXPECT_EQ(notice.accessibleName(), "This file cannot store a loop");
}

TEST_F(OverlaysTest, TipsShowTheControlsHelpUntilAPress) {
    Tips tips(style);
    QPushButton control(&window);
    control.setToolTip("Zoom In (Ctrl+1)");
    showWindow();
    QHelpEvent help(QEvent::ToolTip, {2, 2}, control.mapToGlobal(QPoint(2, 2)));
    QApplication::sendEvent(&control, &help);
    EXPECT_TRUE(tips.isShown());
    click(&control);
    EXPECT_FALSE(tips.isShown());
    control.setToolTip({});
    QApplication::sendEvent(&control, &help);
    EXPECT_FALSE(tips.isShown());
}

TEST_F(OverlaysTest, BusyLineShowsLongWorkOnly) {
    BusyLine line(style, &window);
    showWindow();
    line.setBusy(true, [] { return 0.5; });
    line.setBusy(false, {});
    const auto waitUntilVisible = [&](int milliseconds) {
        QElapsedTimer clock;
        clock.start();
        while (!line.isVisible() && clock.elapsed() < milliseconds)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
        return clock.elapsed();
    };
    waitUntilVisible(400);
    EXPECT_FALSE(line.isVisible());
    line.setBusy(true, [] { return 0.5; });
    EXPECT_GE(waitUntilVisible(5000), 250);
    EXPECT_TRUE(line.isVisible());
    line.setBusy(false, {});
    EXPECT_FALSE(line.isVisible());
}

TEST_F(OverlaysTest, MenusMirrorTheirCommands) {
    Menu menu(style);
    addCommand(menu, saveAs, target);
    addCommand(menu, loop, target);
    target.disabled = {saveAs};
    target.checked = {loop};
    refreshCommands(menu, target);
    const QList<QAction *> actions = menu.actions();
    EXPECT_EQ(actions[0]->text(), "Save As…");
    EXPECT_FALSE(actions[0]->isEnabled());
    EXPECT_TRUE(actions[0]->shortcut().isEmpty()) << "the key belongs to the monitor";
    EXPECT_TRUE(actions[1]->isChecked());
    actions[1]->trigger();
    EXPECT_EQ(target.performed, std::vector{loop});
    EXPECT_EQ(menu.actionGeometry(actions[0]).height(), 28);
    EXPECT_EQ(menu.actionGeometry(actions[1]).top() - menu.actionGeometry(actions[0]).top(), 28);
}

}  // namespace
}  // namespace kiv
