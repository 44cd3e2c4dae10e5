#include <gtest/gtest.h>

#include <QApplication>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QUrl>
#include <QtTest/QTest>
#include <algorithm>
#include <functional>

#include "Document/DocumentWorld.h"
#include "Document/Windows/AudioDrag.h"
#include "Document/Windows/DocumentWindowController.h"
#include "Document/Windows/DropWindowController.h"
#include "Document/Windows/MessageWindow.h"
#include "Editor/Views/KivStyle.h"
#include "Editor/Views/TestApplication.h"

namespace kiv {
namespace {

using enum EditorCommand;

// A document in its window, everything around it fake.
struct DocumentWindowTest : testing::Test {
    QApplication &application = testApplication();
    DocumentWorld world;
    ViewStyle style{AudioEditorTheme::dark()};
    ShortcutStore shortcuts{world.defaults};
    std::unique_ptr<DocumentWindowController> controller;
    std::vector<std::string> failures;
    int closed = 0;

    DocumentWindowTest() {
        QApplication::setQuitOnLastWindowClosed(false);
        QApplication::setStyle(new KivStyle);
        style.setReducesMotion(true);
        remake();
    }
    void remake() {
        closed = 0;
        controller = std::make_unique<DocumentWindowController>(
            WindowServices{{*world.files, world.jobs, world.settings, world.clipboard, &world.playback}, style, shortcuts});
        controller->onClosed = [this] { ++closed; };
        view().menuBar().addOwnMenu("File");
    }

    void open(const std::string &bytes = Wav::file(Wav::ramp(8000))) {
        world.put(bytes);
        controller->open(DocumentWorld::path, [this](const std::string &error) { failures.push_back(error); });
        world.jobs.runAll();
        view().resize(1280, 800);
        view().activateWindow();
        settle();
    }
    DocumentHostingView &view() { return controller->view(); }
    AudioEditorModel &model() { return controller->document().model(); }
    static void settle() {
        for (int i = 0; i < 4; ++i) QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    // The open sheet, by the name it tells assistive tools.
    std::string sheet() { return view().openSheet() ? view().openSheet()->accessibleName().toStdString() : "none"; }
    void press(const char *label) {
        for (QPushButton *button : view().openSheet()->findChildren<QPushButton *>())
            if (button->text() == label) return button->click();
        FAIL() << "no button " << label;
    }
    void key(int code, Qt::KeyboardModifiers modifiers = {}) {
        QKeyEvent event(QEvent::KeyPress, code, modifiers);
        QApplication::sendEvent(view().focusWidget(), &event);
    }
};

TEST_F(DocumentWindowTest, OpensWithTheSoundAndItsFacts) {
    bool isComplete = false;
    controller->onComplete = [&] { isComplete = true; };
    open();
    EXPECT_TRUE(view().isVisible() && isComplete);
    EXPECT_TRUE(failures.empty());
    EXPECT_EQ(view().windowTitle(), "drum.wav[*] — Kiv Audio Editor");
    const auto &right = view().infoLine().scene().right;
    EXPECT_EQ(right.front().texts.front().text, "WAV · 16-bit · 8 kHz · Mono");
    EXPECT_EQ(right.back().texts.front().text, "1.000 s");
    EXPECT_EQ(view().focusWidget(), &view().waveform());
    EXPECT_EQ(view().waveform().geometry(), QRect(44, 156, 1236, 616));
}

TEST_F(DocumentWindowTest, StaysAwayWhenTheFileCannotBeRead) {
    open("no sound at all");
    EXPECT_FALSE(view().isVisible());
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_NE(failures[0], "");
}

TEST_F(DocumentWindowTest, AppearsWhileALongFileIsRead) {
    world.put(Wav::file(Wav::ramp(10)));
    controller->open(DocumentWorld::path, [](const std::string &) {});
    EXPECT_FALSE(view().isVisible());
    QElapsedTimer clock;
    clock.start();
    while (!view().isVisible() && clock.elapsed() < 5000) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    EXPECT_TRUE(view().isVisible());
    EXPECT_FALSE(controller->isEnabled(playStop));
    world.jobs.runAll();
    EXPECT_TRUE(controller->isEnabled(playStop));
}

TEST_F(DocumentWindowTest, MarksUnsavedChanges) {
    open();
    EXPECT_FALSE(view().isWindowModified());
    controller->perform(reverse);
    EXPECT_TRUE(view().isWindowModified());
    controller->perform(undo);
    EXPECT_FALSE(view().isWindowModified());
    controller->perform(reverse);
    controller->perform(save);
    world.jobs.runAll();
    EXPECT_FALSE(view().isWindowModified());
}

TEST_F(DocumentWindowTest, ANameWithTheMarkInItIsShownAsItIs) {
    const std::string odd = "/music/a[*]b.wav";
    const auto bytes = Wav::file(Wav::ramp(10));
    const auto raw = std::as_bytes(std::span(bytes));
    world.disk.put(odd, {raw.begin(), raw.end()});
    controller->open(odd, [](const std::string &) {});
    EXPECT_EQ(view().windowTitle(), "a[*][*]b.wav[*] — Kiv Audio Editor");
}

TEST_F(DocumentWindowTest, EditDialogsAreSheets) {
    open();
    for (const auto &[command, name] : {std::pair{gain, "Gain"}, {normalize, "Normalize"}}) {
        controller->perform(command);
        EXPECT_EQ(sheet(), name);
        key(Qt::Key_Escape);
        EXPECT_EQ(sheet(), "none");
        EXPECT_EQ(model().state().dialog, std::nullopt);
    }
    controller->perform(mono);
    EXPECT_EQ(sheet(), "none") << "a mono file";
    EXPECT_EQ(view().focusWidget(), &view().waveform()) << "the keyboard is back with the sound";
}

TEST_F(DocumentWindowTest, OtherCommandsWaitForTheSheet) {
    open();
    controller->perform(gain);
    for (EditorCommand command :
         {reverse, save, undo, goToEnd, EditorCommand::open, EditorCommand::close, normalize, selectAll}) {
        EXPECT_FALSE(controller->isEnabled(command)) << row(command).raw;
        EXPECT_TRUE(controller->isWaiting(command));
        controller->perform(command);
    }
    EXPECT_EQ(sheet(), "Gain");
    EXPECT_FALSE(model().canUndo());
    EXPECT_TRUE(controller->isEnabled(playStop));
    EXPECT_TRUE(controller->isEnabled(zoomIn));
    EXPECT_TRUE(view().topBar().button(TopBarItem::goToStart)->isEnabled()) << "the bar does not grey out";
    model().setGainDb(-6);
    press("Apply");
    EXPECT_TRUE(model().canUndo());
    EXPECT_TRUE(controller->isEnabled(reverse));
}

TEST_F(DocumentWindowTest, OffersNoModeThatItCannotShow) {
    open();
    for (EditorCommand command : {slicer, saveSlices, playSliceUnderMouse, editLoop, findLoop, applyLoopCrossfade, spectral,
                                  spectralClear, spectralReset, spectralSwapBrush, eq}) {
        controller->perform(command);
        EXPECT_FALSE(controller->isEnabled(command)) << row(command).raw;
    }
    EXPECT_FALSE(model().state().slicerEnabled || model().state().editLoopEnabled);
}

TEST_F(DocumentWindowTest, UnderASheetThePointerMovesOnlyTheView) {
    open();
    model().commitLoop(FrameRange{1000, 2000});
    model().setCursorAndSelection(5000, FrameRange{5000, 6000});
    model().setView({2, 4000});
    QWidget *ruler = nullptr;
    for (QWidget *child : view().findChildren<QWidget *>())
        if (dynamic_cast<RulerView *>(child)) ruler = child;
    const auto drag = [&](QWidget &part, QPoint from, Qt::MouseButton button) {
        QTest::mousePress(&part, button, {}, from);
        const QPointF to = from + QPoint(60, 0);
        QMouseEvent move(QEvent::MouseMove, to, part.mapToGlobal(to), Qt::NoButton, button, {});
        QApplication::sendEvent(&part, &move);
        QTest::mouseRelease(&part, button, {}, from + QPoint(60, 0));
    };
    const auto pointEverywhere = [&] {
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) drag(view().waveform(), {100, 300}, button);
        QTest::mouseDClick(&view().waveform(), Qt::LeftButton, {}, {200, 300});
        for (int x = 0; x < ruler->width(); ++x) QTest::mouseClick(ruler, Qt::LeftButton, {}, {x, ruler->height() - 3});
        QTest::mouseClick(ruler, Qt::LeftButton, {}, {500, 5});
    };
    controller->perform(gain);
    pointEverywhere();
    EXPECT_EQ(model().state().selection, (FrameRange{5000, 6000}));
    EXPECT_EQ(model().state().cursorFrame, 5000);
    EXPECT_EQ(model().state().timeUnit, AudioEditorTimeUnit::seconds);
    EXPECT_TRUE(view().openSheet()->isAncestorOf(view().focusWidget())) << "a click does not take the focus";
    drag(view().waveform(), {100, 300}, Qt::MiddleButton);
    const double dragged = model().state().view.centerFrame;
    EXPECT_LT(dragged, 4000);
    drag(*ruler, {200, 5}, Qt::LeftButton);
    EXPECT_LT(model().state().view.centerFrame, dragged);
    press("Cancel");
    pointEverywhere();
    EXPECT_NE(model().state().selection, (FrameRange{5000, 6000}));
}

TEST_F(DocumentWindowTest, WhileTheFileIsReadAgainThePointerChangesNothing) {
    open();
    model().setCursorAndSelection(5000, std::nullopt);
    controller->perform(revert);
    for (const std::int64_t cursor : {5000, 2003}) {
        QTest::mouseClick(&view().waveform(), Qt::LeftButton, {}, {309, 300});
        EXPECT_EQ(model().state().cursorFrame, cursor);
        EXPECT_EQ(view().focusWidget(), &view().waveform());
        key(Qt::Key_F6), key(Qt::Key_F6, Qt::ShiftModifier);
        EXPECT_EQ(view().focusWidget(), &view().waveform());
        world.jobs.runAll();
    }
}

TEST_F(DocumentWindowTest, AsksBeforeChangesAreLost) {
    const struct {
        const char *button;
        int closed;
        bool writes;
    } rows[] = {{"Cancel", 0, false}, {"Don’t Save", 1, false}, {"Save", 1, true}};
    for (const auto &[button, wanted, writes] : rows) {
        remake();
        open();
        const std::string before = world.onDisk();
        controller->perform(reverse);
        controller->perform(EditorCommand::close);
        controller->requestClose();
        EXPECT_EQ(sheet(), "Save changes to “drum.wav” before closing?") << "asked once";
        press(button);
        world.jobs.runAll();
        settle();
        EXPECT_EQ(closed, wanted) << button;
        EXPECT_EQ(sheet(), "none");
        EXPECT_EQ(world.onDisk() != before, writes) << button;
    }
}

TEST_F(DocumentWindowTest, ClosesAtOnceWithoutChangesAndGivesUpAnOpenDialog) {
    open();
    controller->perform(gain);
    controller->requestClose();
    world.jobs.runAll();
    settle();
    EXPECT_EQ(closed, 1);
    EXPECT_FALSE(model().canUndo() || view().isVisible());
}

TEST_F(DocumentWindowTest, AFailedSaveIsShownAndKeepsTheWindow) {
    open();
    controller->perform(reverse);
    world.disk.protect("/music");
    world.disk.failAt(1, std::errc::no_space_on_device, FakeFileSystem::Lasting::on);
    controller->requestClose();
    press("Save");
    world.jobs.runAll();
    settle();
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(sheet(), "“drum.wav” could not be saved");
    key(Qt::Key_Return);
    EXPECT_EQ(sheet(), "none");
    EXPECT_TRUE(view().isWindowModified());
}

TEST_F(DocumentWindowTest, RemembersItsFrame) {
    controller->onPlacing = [] { return Box{30, 40, 900, 500}; };
    open();
    EXPECT_EQ(view().geometry().topLeft(), QPoint(30, 40));
    view().setGeometry(50, 60, 1000, 700);
    controller->requestClose();
    world.jobs.runAll();
    EXPECT_EQ(parseFrame(world.settings.get(Setting::documentWindowFrame)), (Box{50, 60, 1000, 700}));
}

TEST_F(DocumentWindowTest, EscapeStopsPlaybackOnceNothingElseIsToBeEnded) {
    open();
    controller->perform(playStop);
    ASSERT_TRUE(controller->document().player().isPlaying());
    controller->perform(gain);
    key(Qt::Key_Escape);
    EXPECT_TRUE(controller->document().player().isPlaying());
    key(Qt::Key_Escape);
    EXPECT_FALSE(controller->document().player().isPlaying());
}

TEST_F(DocumentWindowTest, F6GoesFromPartToPart) {
    open();
    key(Qt::Key_F6);
    EXPECT_EQ(view().focusWidget(), view().topBar().button(TopBarItem::goToStart));
    key(Qt::Key_F6);
    key(Qt::Key_F6);
    EXPECT_EQ(view().focusWidget(), view().infoLine().value(InfoField::cursor));
    key(Qt::Key_F6);
    EXPECT_EQ(view().focusWidget(), &view().waveform());
    key(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_EQ(view().focusWidget(), view().infoLine().value(InfoField::cursor));
    controller->perform(gain);
    EXPECT_TRUE(view().openSheet()->isAncestorOf(view().focusWidget()));
    press("Cancel");
    EXPECT_EQ(view().focusWidget(), view().infoLine().value(InfoField::cursor)) << "where a key had gone before the sheet";
}

// Nor does what gives the focus back when it closes.
TEST_F(DocumentWindowTest, TheWaveformShowsTheFocusOnlyAfterAKeyMovedItThere) {
    open();
    const auto isRinged = [&] {
        return view().waveform().grab().toImage().pixel(1, 300) == style.color(AudioEditorThemeColor::accentBg).rgb();
    };
    struct Row {
        const char *way;
        std::function<void()> act;
        bool isRinged;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"at first", [] {}, false},
             {"around by F6",
              [&] {
                  for (int i = 0; i < 4; ++i) key(Qt::Key_F6);
              },
              true},
             {"a position entered",
              [&] { QTest::mouseClick(&view().topBar().position(), Qt::LeftButton), key(Qt::Key_Return); }, false},
             {"a sheet", [&] { controller->perform(gain), press("Cancel"); }, false},
             {"back by Tab", [&] { key(Qt::Key_Tab), key(Qt::Key_Backtab); }, true},
         }) {
        row.act();
        settle();
        EXPECT_EQ(view().focusWidget(), &view().waveform()) << row.way;
        EXPECT_EQ(isRinged(), row.isRinged) << row.way;
    }
}

TEST_F(DocumentWindowTest, CtrlFreesAnEdgeThatRestsAtAMark) {
    open();
    model().load(model().state().buffer, {4000}, {});
    const auto mouse = [&](QEvent::Type type, double x) {
        QMouseEvent event(type, QPointF(x, 50), QPointF(x, 50), Qt::LeftButton, Qt::LeftButton, {});
        QApplication::sendEvent(&view().waveform(), &event);
    };
    mouse(QEvent::MouseButtonPress, 100);
    mouse(QEvent::MouseMove, 615);
    EXPECT_EQ(model().state().selection->hi, 4000);
    key(Qt::Key_Control);
    EXPECT_NE(model().state().selection->hi, 4000);
    QKeyEvent letGo(QEvent::KeyRelease, Qt::Key_Control, Qt::ControlModifier);
    QApplication::sendEvent(view().focusWidget(), &letGo);
    EXPECT_EQ(model().state().selection->hi, 4000);
    mouse(QEvent::MouseButtonRelease, 615);
}

TEST_F(DocumentWindowTest, SheetsSlideUnlessTheDesktopWantsNoMotion) {
    open();
    for (const bool reduces : {false, true}) {
        style.setReducesMotion(reduces);
        controller->perform(gain);
        const QWidget &sheet = *view().openSheet();
        EXPECT_EQ(sheet.y() == 0, reduces);
        EXPECT_TRUE(QTest::qWaitFor([&] { return sheet.y() == 0; }, 1000));
        press("Cancel");
        settle();
    }
}

TEST_F(DocumentWindowTest, TabFollowsTheOrderOfTheScreen) {
    open();
    std::vector<QWidget *> stops;
    for (QWidget *next = view().waveform().nextInFocusChain(); next != &view().waveform(); next = next->nextInFocusChain())
        if (next->focusPolicy() & Qt::TabFocus && next->isVisible() && next->isEnabled()) stops.push_back(next);
    const auto place = [&](QWidget *widget) { return std::find(stops.begin(), stops.end(), widget) - stops.begin(); };
    const auto &bar = view().topBar();
    EXPECT_EQ(place(bar.button(TopBarItem::goToStart)), 0);
    EXPECT_LT(place(bar.button(TopBarItem::loop)), place(&bar.position()));
    EXPECT_LT(place(&bar.position()), place(bar.button(TopBarItem::maxLevel)));
    EXPECT_EQ(place(view().infoLine().value(InfoField::cursor)), std::ptrdiff_t(stops.size()) - 1);
}

TEST_F(DocumentWindowTest, FilesDroppedOnItAreHandedOn) {
    open();
    std::vector<std::string> dropped;
    view().onDropped = [&](const std::vector<std::string> &paths) { dropped = paths; };
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile("/a/x.WAV"), QUrl::fromLocalFile("/a/y.txt"), QUrl("http://host/z.wav"),
                  QUrl::fromLocalFile("/a/b c.aiff")});
    QDragEnterEvent enter({10, 10}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&view(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&view(), &drop);
    EXPECT_EQ(dropped, (std::vector<std::string>{"/a/x.WAV", "/a/b c.aiff"}));
    data.setUrls({QUrl::fromLocalFile("/a/y.txt")});
    QDragEnterEvent other({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
    other.ignore();
    QApplication::sendEvent(&view(), &other);
    EXPECT_FALSE(other.isAccepted());
}

bool isVisibleOverview(const QWidget *widget) { return dynamic_cast<const OverviewView *>(widget) && widget->isVisible(); }

TEST_F(DocumentWindowTest, LowWindowsHideTheOverview) {
    open();
    view().resize(640, 440);
    settle();
    EXPECT_EQ(std::ranges::count_if(view().findChildren<QWidget *>(), isVisibleOverview), 1);
    view().resize(640, 400);
    settle();
    EXPECT_EQ(std::ranges::count_if(view().findChildren<QWidget *>(), isVisibleOverview), 0);
    EXPECT_EQ(view().infoLine().geometry().bottom(), 399);
}

TEST(DropWindow, OffersToOpen) {
    testApplication();
    ViewStyle style(AudioEditorTheme::light());
    FakeDefaults defaults;
    ShortcutStore shortcuts(defaults);
    DropWindowController controller(style, shortcuts);
    int opened = 0;
    controller.onOpenCommand = [&] { ++opened; };
    controller.show();
    auto *button = controller.window().findChild<QPushButton *>();
    EXPECT_EQ(button->text(), "Choose a file (Ctrl+O)");
    button->click();
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, {});
    QApplication::sendEvent(&controller.window(), &enter);
    EXPECT_EQ(opened, 2);
    shortcuts.store(std::nullopt, EditorCommand::open);
    shortcuts.save();
    EXPECT_EQ(button->text(), "Choose a file");
}

TEST(MessageWindow, IsClosedByEnter) {
    testApplication();
    QApplication::setQuitOnLastWindowClosed(false);
    ViewStyle style(AudioEditorTheme::dark());
    QPointer<QWidget> window = showMessageWindow(style, "“x.wav” could not be opened", "No.");
    EXPECT_EQ(window->size(), QSize(480, 172));
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, {});
    QApplication::sendEvent(window->findChild<QPushButton *>(), &enter);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window.isNull());
}

}  // namespace
}  // namespace kiv
