#include <QAccessible>
#include <QAction>
#include <QElapsedTimer>
#include <QWheelEvent>
#include <set>

#include "Editor/Views/BusyLine.h"
#include "Editor/Views/CommandMenu.h"
#include "Editor/Views/FocusRing.h"
#include "Editor/Views/InfoLine.h"
#include "Editor/Views/Notice.h"
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
    EXPECT_FALSE(bar.button(Item::zoomSelection)->isEnabled() || bar.button(Item::slicer)->isEnabled());
    EXPECT_TRUE(bar.button(Item::zoomFit)->isEnabled());
    click(bar.button(Item::loop));
    EXPECT_TRUE(bar.button(Item::loop)->isChecked()) << "a click alone turns nothing over";
    target.waits = true;
    target.disabled = {zoomFit};
    bar.refreshCommands();
    EXPECT_TRUE(bar.button(Item::zoomFit)->isEnabled()) << "does not grey out under a sheet";
    EXPECT_EQ(bar.button(Item::playStop)->look().icon, "play");
    model.setPlaying(true);
    EXPECT_EQ(bar.button(Item::playStop)->look().icon, "stop");
    EXPECT_TRUE(bar.button(Item::playStop)->look().isOn);
    model.setMaxLevel(1.5f);
    EXPECT_EQ(bar.button(Item::maxLevel)->look().text, "+3.5 dB");
    EXPECT_TRUE(bar.button(Item::maxLevel)->look().isOver);
    click(bar.button(Item::maxLevel));
    EXPECT_EQ(bar.button(Item::maxLevel)->look().text, "–");
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
        EXPECT_LE(bar.position().textWidth(), bar.position().width() - ValueReadout::reach) << frames;
    }
}

TEST_F(TopBarTest, WheelStepsTheVerticalZoomOverItsGroupOnly) {
    bar.button(Item::verticalZoomIn)->setEnabled(false);
    wheel(bar.button(Item::verticalZoomValue), 2);
    wheel(bar.button(Item::verticalZoomIn), -1);
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

TEST_F(TopBarTest, AssistiveToolsReadAndPressItsControls) {
    for (QPushButton *button : bar.findChildren<QPushButton *>()) {
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(button);
        EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty());
        EXPECT_TRUE(accessible->role() == QAccessible::Button || accessible->role() == QAccessible::CheckBox);
    }
    QAccessible::queryAccessibleInterface(bar.button(Item::loop))->actionInterface()->doAction("Toggle");
    EXPECT_EQ(target.performed, std::vector{loop}) << "and does not only look so";
    QAccessibleInterface *position = QAccessible::queryAccessibleInterface(&bar.position());
    EXPECT_EQ(position->role(), QAccessible::SpinBox);
    EXPECT_EQ(position->text(QAccessible::Value), bar.position().valueText());
}

struct InfoLineViewTest : WindowPartsFixture {
    InfoLine line{model, style, &window};
    InfoLineViewTest() {
        load(AudioEditorBuffer(std::vector<float>(88200), 1, 44100));
        line.setGeometry(0, 0, 1280, 28);
        showWindow();
    }
};

// Position and info line: the same numbers, the same hands.
TEST_F(InfoLineViewTest, PlacesAreTypedScrolledDraggedAndReset) {
    TopBar bar{model, style, target, &window};
    bar.setGeometry(0, 40, 1280, 44);
    bar.show();
    ValueReadout *position = &bar.position(), *start = line.value(InfoField::selectionStart),
                 *end = line.value(InfoField::selectionEnd), *length = line.value(InfoField::selectionLength);
    const auto typeInto = [&](ValueReadout *readout, const char *text, int ending) {
        click(readout);
        auto *field = readout->inPlace().field();
        field->setText(text);
        key(field, ending);
        settle();
    };
    typeInto(position, "1.5", Qt::Key_Return);
    EXPECT_EQ(state().cursorFrame, 66150);
    typeInto(position, "0.1", Qt::Key_Escape);
    EXPECT_EQ(position->valueText(), "1.500 s");
    typeInto(position, "nonsense", Qt::Key_Return);
    EXPECT_TRUE(position->inPlace().isOpen()) << "what cannot be read is not applied";
    position->inPlace().close();
    wheel(position, 2);
    wheel(position, -1, Qt::ShiftModifier);
    EXPECT_EQ(position->valueText(), "1.519 s");
    drag(position, {20, 15}, {20, 31});
    EXPECT_EQ(position->valueText(), "1.499 s");
    const auto clickTwice = [&](ValueReadout *readout) {
        click(readout);
        pointer(readout->inPlace().field(), QEvent::MouseButtonDblClick, {8, 8});
    };
    clickTwice(position);
    EXPECT_EQ(state().cursorFrame, 0) << "two quick clicks are no typing";
    pointer(position, QEvent::MouseButtonDblClick, {8, 8});
    EXPECT_TRUE(position->inPlace().isOpen()) << "one that comes after the field has closed opens it again";
    position->inPlace().close();

    model.select({22050, 44100});
    typeInto(length, "1 s", Qt::Key_Enter);
    EXPECT_EQ(state().selection, (FrameRange{22050, 66150}));
    wheel(end, -1);
    EXPECT_EQ(state().selection, (FrameRange{22050, 65709}));
    pointer(start, QEvent::MouseButtonPress, {10, 10});
    pointer(start, QEvent::MouseMove, {10, -3000});
    EXPECT_EQ(state().selection, (FrameRange{65708, 65709})) << "an edge stays on its side of the other";
    key(&window, Qt::Key_Escape);
    EXPECT_EQ(state().selection, (FrameRange{22050, 65709})) << "as at the press";
    model.toggleTimeUnit();
    wheel(length, 1);
    EXPECT_EQ(state().selection, (FrameRange{22050, 65719}));
    for (ValueReadout *readout : {start, length}) clickTwice(readout);
    EXPECT_EQ(state().selection, (FrameRange{0, 88200}));
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

TEST_F(OverlaysTest, EveryNoticeIsShownAndAnnouncedOnce) {
    Notice notice(style, &window);
    showWindow();
    ShowCounter counter;
    notice.installEventFilter(&counter);
    for (const char *text : {"18 slices saved", "This file cannot store a loop", "This file cannot store a loop"})
        notice.tell(NoticeKind::warning, text);
    EXPECT_EQ(notice.accessibleName(), "18 slices saved");
    click(&notice);
    EXPECT_EQ(notice.accessibleName(), "This file cannot store a loop");
    EXPECT_TRUE(notice.isVisible());
    EXPECT_EQ(counter.shown, 2) << "also the one that takes another's place";
    click(&notice);
    EXPECT_FALSE(notice.isVisible()) << "what was told twice is shown once";
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
