#include <QMouseEvent>
#include <QPaintEvent>
#include <QScreen>
#include <QWheelEvent>
#include <functional>
#include <map>
#include <random>

#include "Editor/Surfaces/SurfaceFixture.h"
#include "Editor/Views/GutterView.h"
#include "Editor/Views/OverviewView.h"
#include "Editor/Views/RulerView.h"
#include "Editor/Views/TestApplication.h"
#include "Editor/Views/WaveformView.h"
#include "Platform/Fake/FakeJobs.h"

namespace kiv {
namespace {

// Writes down what each widget was asked to paint.
class PaintLog : public QObject {
public:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::Paint) painted[watched] += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
    std::map<QObject *, QRegion> painted;
};

// The four views as they stand in a window, 1000 columns wide, a hundred frames each.
struct SoundViewsTest : SurfaceFixture {
    QApplication &application = testApplication();
    InlineJobs jobs;
    WaveformRms rms{model, jobs};
    ViewStyle style{AudioEditorTheme::dark()};
    QWidget window;
    OverviewView overview{model, style, rms, &window};
    RulerView ruler{model, style, &window};
    GutterView gutter{model, style, &window};
    WaveformView waveform{model, style, rms, &window};
    PaintLog log;

    SoundViewsTest() {
        load(noise(100000, 2, 1), {20000}, FrameRange{60000, 80000});
        window.resize(1044, 400);
        overview.setGeometry(0, 0, 1044, 44);
        ruler.setGeometry(0, 44, 1044, 40);
        gutter.setGeometry(0, 84, 44, 316);
        waveform.setGeometry(44, 84, 1000, 316);
        window.show();
        settle();
        for (QWidget *view : std::initializer_list<QWidget *>{&overview, &ruler, &gutter, &waveform})
            view->installEventFilter(&log);
    }
    void settle() {
        for (int i = 0; i < 3; ++i) QApplication::processEvents();
    }
    template <class Act>
    const QRegion &painted(QWidget &view, Act act) {
        settle();
        log.painted.clear();
        act();
        settle();
        return log.painted[&view];
    }
    static int width(const QRegion &region) {
        int columns = 0;
        for (const QRect &rect : region) columns += rect.width();
        return columns;
    }
    template <class Event>
    void mouse(QWidget &view, Event type, double x, double y, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {}) {
        const bool isMove = type == QEvent::MouseMove, isRelease = type == QEvent::MouseButtonRelease;
        held_ = isMove ? held_ : isRelease ? held_ & ~Qt::MouseButtons(button) : held_ | button;
        QMouseEvent event(type, QPointF(x, y), view.mapToGlobal(QPointF(x, y)), isMove ? Qt::NoButton : button, held_,
                          modifiers);
        event.setTimestamp(clock_ += 1000);
        QApplication::sendEvent(&view, &event);
    }

private:
    Qt::MouseButtons held_;
    quint64 clock_ = 1000;
};

TEST_F(SoundViewsTest, NothingIsPaintedWhenNothingChanges) {
    for (QWidget *view : std::initializer_list<QWidget *>{&overview, &ruler, &gutter, &waveform}) {
        const QRegion &region = painted(*view, [&] {
            model.setMaxLevel(0.3f);
            model.setLoopEnabled(!state().loopEnabled);
            model.placeCursor(state().cursorFrame);
        });
        EXPECT_TRUE(region.isEmpty());
    }
}

TEST_F(SoundViewsTest, APlayheadStepPaintsTwoNarrowStrips) {
    model.setPlayheads({{1, 30000}});
    for (QWidget *view : std::initializer_list<QWidget *>{&overview, &ruler, &waveform}) {
        model.setPlayheads({{1, 30000}});
        const QRegion &region = painted(*view, [&] { model.setPlayheads({{1, 40000}}); });
        EXPECT_EQ(region.rectCount(), 2);
        EXPECT_LE(width(region), 28);
        EXPECT_GE(width(region), view == &overview ? 2 : 24);
    }
    EXPECT_TRUE(painted(gutter, [&] { model.setPlayheads({{1, 50000}}); }).isEmpty());
}

// What is on the screen after many small paintings is what one painting of everything gives.
TEST_F(SoundViewsTest, PartsComeOutAsTheWhole) {
    std::mt19937 random(7);
    const auto frame = [&] { return std::int64_t(random() % 100001); };
    const std::vector<std::function<void()>> acts{
        [&] { model.placeCursor(frame()); },
        [&] {
            model.select({frame() / 2, 50000 + frame() / 2});
        },
        [&] {
            model.setPlayheads({{1, double(frame())}});
        },
        [&] { model.setPlayheads({}); },
        [&] {
            model.commitLoop(FrameRange{frame() / 2, 50000 + frame() / 2});
        },
        [&] {
            model.setView({double(random() % 300 + 1), double(frame())});
        },
        [&] {
            model.setView({state().view.zoom, state().view.centerFrame + 300});
        },
        [&] { model.toggleTimeUnit(); },
        [&] { mouse(waveform, QEvent::MouseMove, double(random() % 1000), 50); },
    };
    for (int i = 0; i < 300; ++i) {
        const std::size_t act = random() % acts.size();
        acts[act]();
        settle();
        const QImage shown = window.screen()->grabWindow(window.winId()).toImage().convertToFormat(QImage::Format_RGB32);
        const QImage whole = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(shown, whole) << "after step " << i << ", act " << act;
    }
}

TEST_F(SoundViewsTest, ASelectionDragPaintsWhereItsEdgeWent) {
    mouse(waveform, QEvent::MouseButtonPress, 100, 50);
    mouse(waveform, QEvent::MouseMove, 300, 50);
    EXPECT_EQ(state().selection->lo, 10050);
    const QRegion &region = painted(waveform, [&] { mouse(waveform, QEvent::MouseMove, 330, 50); });
    EXPECT_LE(width(region), 30 + 2 * 14);
    mouse(waveform, QEvent::MouseButtonRelease, 330, 50);
    EXPECT_EQ(state().selection, (FrameRange{10050, 33050}));
}

TEST_F(SoundViewsTest, HoveringTellsWhereThePointerIsAndPaintsOneLine) {
    std::vector<std::optional<WaveformHover>> hovers;
    waveform.onHover = [&](std::optional<WaveformHover> hover) { hovers.push_back(hover); };
    mouse(waveform, QEvent::MouseMove, 200, 50);
    EXPECT_LE(width(painted(waveform, [&] { mouse(waveform, QEvent::MouseMove, 400, 50); })), 28);
    EXPECT_EQ(hovers.back()->frame, 40050);
    model.setView({2, 60000});  // the pointer rests, the sound moves
    EXPECT_EQ(hovers.back()->frame, 55025);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&waveform, &leave);
    EXPECT_FALSE(hovers.back());
    EXPECT_EQ(hovers.size(), 4u);
}

TEST_F(SoundViewsTest, WhileAButtonIsDownThereIsNoHoverLine) {
    mouse(waveform, QEvent::MouseMove, 400, 50);
    EXPECT_EQ(waveform.cursor().shape(), Qt::IBeamCursor);
    const auto pixel = [&] { return waveform.grab().toImage().pixel(400, 2); };
    const QRgb hovered = pixel();
    for (const Qt::MouseButton button : {Qt::MiddleButton, Qt::RightButton}) {
        mouse(waveform, QEvent::MouseButtonPress, 400, 50, button);
        model.placeCursor(90000);
        EXPECT_NE(pixel(), hovered);
        mouse(waveform, QEvent::MouseButtonRelease, 400, 50, button);
        EXPECT_EQ(pixel(), hovered);
    }
    model.select({39000, 60000});
    mouse(waveform, QEvent::MouseMove, 392, 50);
    EXPECT_EQ(waveform.cursor().shape(), Qt::SizeHorCursor);
}

TEST_F(SoundViewsTest, EscPutsADragBack) {
    model.setCursorAndSelection(70000, FrameRange{70000, 75000});
    mouse(waveform, QEvent::MouseButtonPress, 100, 50);
    mouse(waveform, QEvent::MouseMove, 300, 50);
    EXPECT_TRUE(waveform.cancelDrag());
    EXPECT_FALSE(waveform.cancelDrag());
    EXPECT_EQ(state().selection, (FrameRange{70000, 75000}));
}

TEST_F(SoundViewsTest, ARightClickAsksForTheMenu) {
    QPoint asked;
    waveform.onContextMenu = [&](QPoint global) { asked = global; };
    mouse(waveform, QEvent::MouseButtonPress, 100, 50, Qt::RightButton);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(100, 50), QPoint(7, 9));
    QApplication::sendEvent(&waveform, &event);
    EXPECT_EQ(state().cursorFrame, 10050);
    EXPECT_EQ(asked, QPoint(7, 9));
}

TEST_F(SoundViewsTest, WheelsAndKeysReachTheModel) {
    const auto turn = [](QWidget &view, QPointF at, QPoint pixels, QPoint delta, Qt::KeyboardModifiers modifiers,
                         Qt::ScrollPhase phase) {
        QWheelEvent event(at, view.mapToGlobal(at), pixels, delta, {}, modifiers, phase, false);
        QApplication::sendEvent(&view, &event);
    };
    const auto wheel = [&](QWidget &view, QPoint delta, Qt::KeyboardModifiers modifiers, QPointF at = {500, 10}) {
        turn(view, at, {}, delta, modifiers, Qt::NoScrollPhase);
    };
    wheel(waveform, {0, 120}, {});
    EXPECT_NEAR(state().view.zoom, 1.25, 1e-9);
    wheel(overview, {0, 240}, {});
    EXPECT_NEAR(state().view.zoom, 1.25 * 1.25 * 1.25, 1e-9);
    wheel(ruler, {0, -360}, {});
    EXPECT_NEAR(state().view.zoom, 1, 1e-9);
    wheel(gutter, {0, 120}, {});
    EXPECT_EQ(state().verticalZoomDb, 3);
    wheel(ruler, {0, 120}, {}, {20, 10});  // the gutter's upper end
    EXPECT_EQ(state().verticalZoomDb, 6);
    // Fingers move the picture as far as they go, and zoom by 2 in 64 pixels.
    model.setView({4, 50000});
    turn(waveform, {500, 10}, {30, 1}, {900, 30}, {}, Qt::ScrollUpdate);
    EXPECT_NEAR(state().view.centerFrame, 50000 - 30 * 25, 1e-6);
    turn(waveform, {500, 10}, {0, -20}, {0, -900}, Qt::ShiftModifier, Qt::ScrollUpdate);
    EXPECT_NEAR(state().view.centerFrame, 50000 - 10 * 25, 1e-6);
    turn(waveform, {500, 10}, {0, 64}, {0, 900}, {}, Qt::ScrollUpdate);
    EXPECT_NEAR(state().view.zoom, 8, 1e-9);
    // Of a wheel that says so too, its pixels mean nothing.
    turn(waveform, {500, 10}, {0, 640}, {0, 120}, {}, Qt::NoScrollPhase);
    EXPECT_NEAR(state().view.zoom, 10, 1e-9);
    QKeyEvent end(QEvent::KeyPress, Qt::Key_End, Qt::NoModifier);
    QApplication::sendEvent(&waveform, &end);
    EXPECT_EQ(state().cursorFrame, 100000);
}

TEST_F(SoundViewsTest, RulerAndOverviewTakeThePointer) {
    mouse(ruler, QEvent::MouseButtonPress, 500, 5);
    mouse(ruler, QEvent::MouseButtonRelease, 500, 5);
    EXPECT_EQ(state().timeUnit, AudioEditorTimeUnit::samples);
    model.setView({4, 20000});
    mouse(overview, QEvent::MouseButtonPress, 844, 20);
    mouse(overview, QEvent::MouseMove, 744, 20);
    EXPECT_NEAR(state().view.centerFrame, 70000, 100);
    EXPECT_TRUE(overview.cancelDrag());
    EXPECT_EQ(state().view.centerFrame, 20000);
}

TEST_F(SoundViewsTest, ANewThemeAndNewPowersPaintEverything) {
    EXPECT_EQ(painted(waveform, [&] { style.setTheme(AudioEditorTheme::light()); }).boundingRect(), waveform.rect());
    EXPECT_EQ(painted(waveform, [&] { model.setVerticalZoomDb(6); }).boundingRect(), waveform.rect());
    EXPECT_EQ(painted(overview, [&] { load(noise(5000, 1, 2)); }).boundingRect(), overview.rect());
}

}  // namespace
}  // namespace kiv
