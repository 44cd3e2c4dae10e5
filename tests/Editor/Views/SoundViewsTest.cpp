#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPaintEvent>
#include <QPointingDevice>
#include <QScreen>
#include <QWheelEvent>
#include <cmath>
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
    void mouse(QWidget &view, QEvent::Type type, double x, Qt::MouseButton button = Qt::LeftButton, double y = 50) {
        const bool isMove = type == QEvent::MouseMove, isRelease = type == QEvent::MouseButtonRelease;
        held_ = isMove ? held_ : isRelease ? held_ & ~Qt::MouseButtons(button) : held_ | button;
        QMouseEvent event(type, QPointF(x, y), view.mapToGlobal(QPointF(x, y)), isMove ? Qt::NoButton : button, held_, {});
        event.setTimestamp(clock_ += 1000);
        QApplication::sendEvent(&view, &event);
    }
    void hover(double x) { mouse(waveform, QEvent::MouseMove, x); }
    void pinch(QWidget &view, double x, double value, Qt::NativeGestureType type = Qt::ZoomNativeGesture) {
        QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, QPointF(x, 10), QPointF(x, 10),
                                  view.mapToGlobal(QPointF(x, 10)), value, {});
        QApplication::sendEvent(&view, &event);
    }
    static void turn(QWidget &view, double x, QPoint pixels, QPoint delta, Qt::ScrollPhase phase,
                     Qt::KeyboardModifiers modifiers = {}) {
        QWheelEvent event({x, 10}, view.mapToGlobal(QPointF(x, 10)), pixels, delta, {}, modifiers, phase, false);
        QApplication::sendEvent(&view, &event);
    }
    const std::vector<QWidget *> views{&overview, &ruler, &gutter, &waveform};

private:
    Qt::MouseButtons held_;
    quint64 clock_ = 1000;
};

TEST_F(SoundViewsTest, NothingIsPaintedWhenNothingChanges) {
    for (QWidget *view : views)
        EXPECT_TRUE(painted(*view, [&] {
                        model.setMaxLevel(0.3f);
                        model.setLoopEnabled(!state().loopEnabled);
                        model.placeCursor(state().cursorFrame);
                    }).isEmpty());
}

TEST_F(SoundViewsTest, OnlyWhatChangedIsPainted) {
    for (QWidget *view :
         {static_cast<QWidget *>(&overview), static_cast<QWidget *>(&ruler), static_cast<QWidget *>(&waveform)}) {
        model.setPlayheads({{1, 30000}});
        const QRegion &region = painted(*view, [&] { model.setPlayheads({{1, 40000}}); });
        EXPECT_EQ(region.rectCount(), 2);
        EXPECT_LE(width(region), 28);
        EXPECT_GE(width(region), view == &overview ? 2 : 24);
    }
    EXPECT_TRUE(painted(gutter, [&] { model.setPlayheads({{1, 50000}}); }).isEmpty());
    mouse(waveform, QEvent::MouseButtonPress, 100);
    hover(300);
    EXPECT_LE(width(painted(waveform, [&] { hover(330); })), 30 + 2 * 14);
    mouse(waveform, QEvent::MouseButtonRelease, 330);
    EXPECT_EQ(state().selection, (FrameRange{10050, 33050}));
    EXPECT_LE(width(painted(waveform, [&] { hover(400); })), 28);
    EXPECT_EQ(painted(waveform, [&] { style.setTheme(AudioEditorTheme::light()); }).boundingRect(), waveform.rect());
    EXPECT_EQ(painted(waveform, [&] { model.setVerticalZoomDb(6); }).boundingRect(), waveform.rect());
    EXPECT_EQ(painted(overview, [&] { load(noise(5000, 1, 2)); }).boundingRect(), overview.rect());
}

// What is on the screen after many small paintings is what one painting of everything gives.
TEST_F(SoundViewsTest, PartsComeOutAsTheWhole) {
    std::mt19937 random(7);
    const auto frame = [&] { return std::int64_t(random() % 100001); };
    const auto range = [&] { return FrameRange{frame() / 2, 50000 + frame() / 2}; };
    const auto play = [&](double at) { model.setPlayheads({{1, at}}); };
    const auto look = [&](double zoom, double at) { model.setView({zoom, at}); };
    const std::vector<std::function<void()>> acts{
        [&] { model.placeCursor(frame()); },
        [&] { model.select(range()); },
        [&] { play(double(frame())); },
        [&] { model.setPlayheads({}); },
        [&] { model.commitLoop(range()); },
        [&] { look(double(random() % 300 + 1), double(frame())); },
        [&] { look(state().view.zoom, state().view.centerFrame + 300); },
        [&] { model.toggleTimeUnit(); },
        [&] { hover(double(random() % 1000)); },
        [&] { model.placeCursor(100000); },
        [&] { play(100000); },
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

TEST_F(SoundViewsTest, HoveringTellsWhereThePointerIsButDrawsNoLineWhileAButtonIsDown) {
    std::vector<std::optional<WaveformHover>> hovers;
    waveform.onHover = [&](std::optional<WaveformHover> hover) { hovers.push_back(hover); };
    hover(200);
    hover(400);
    EXPECT_EQ(hovers.back()->frame, 40050);
    const auto pixel = [&] { return waveform.grab().toImage().pixel(400, 2); };
    const QRgb hovered = pixel();
    for (const Qt::MouseButton button : {Qt::MiddleButton, Qt::RightButton}) {
        mouse(waveform, QEvent::MouseButtonPress, 400, button);
        model.placeCursor(90000);
        EXPECT_NE(pixel(), hovered);
        mouse(waveform, QEvent::MouseButtonRelease, 400, button);
        EXPECT_EQ(pixel(), hovered);
    }
    model.setView({2, 60000});  // the pointer rests, the sound moves
    EXPECT_EQ(hovers.back()->frame, 55025);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&waveform, &leave);
    EXPECT_FALSE(hovers.back());
    EXPECT_EQ(hovers.size(), 4u);
}

TEST_F(SoundViewsTest, CtrlAndEscActOnADragThatRests) {
    model.setCursorAndSelection(70000, FrameRange{70000, 75000});
    mouse(waveform, QEvent::MouseButtonPress, 100);
    hover(197);
    EXPECT_EQ(state().selection->hi, 20000) << "at a marker";
    waveform.setControlHeld(true);
    EXPECT_EQ(state().selection->hi, 19750);
    waveform.setControlHeld(false);
    EXPECT_EQ(state().selection->hi, 20000);
    EXPECT_TRUE(waveform.cancelDrag());
    EXPECT_FALSE(waveform.cancelDrag());
    EXPECT_EQ(state().selection, (FrameRange{70000, 75000}));
}

TEST_F(SoundViewsTest, TheFocusIsShownInsideTheEdgeAfterAKeyMovedIt) {
    const auto isRinged = [&] {
        const QImage image = waveform.grab().toImage();
        const QRgb accent = style.color(AudioEditorThemeColor::accentBg).rgb();
        return image.pixel(0, 150) == accent && image.pixel(1, 150) == accent && image.pixel(998, 150) == accent &&
               image.pixel(500, 315) == accent && image.pixel(2, 150) != accent;
    };
    model.placeCursor(50000);
    for (const auto &[reason, isShown] :
         {std::pair(Qt::MouseFocusReason, false), std::pair(Qt::TabFocusReason, true), std::pair(Qt::OtherFocusReason, false),
          std::pair(Qt::BacktabFocusReason, true), std::pair(Qt::ShortcutFocusReason, true)}) {
        QFocusEvent in(QEvent::FocusIn, reason), out(QEvent::FocusOut, reason);
        QApplication::sendEvent(&waveform, &in);
        EXPECT_EQ(isRinged(), isShown) << reason;
        QApplication::sendEvent(&waveform, &out);
        EXPECT_FALSE(isRinged()) << reason;
    }
}

TEST_F(SoundViewsTest, WheelsTouchpadsPinchesAndKeysReachTheModel) {
    struct Row {
        const char *rule;
        QWidget *view;
        double x;
        QPoint pixels, delta;  // pixels with a phase are fingers
        Qt::ScrollPhase phase;
        double pinch;
        int times;
        double zoom, center;
        int verticalDb;
    };
    constexpr auto wheel = Qt::NoScrollPhase, fingers = Qt::ScrollUpdate;
    for (const Row &row : std::initializer_list<Row>{
             {"a notch over the waveform", &waveform, 500, {}, {0, 120}, wheel, 0, 1, 5, 50000, 0},
             {"over the overview", &overview, 544, {}, {0, 240}, wheel, 0, 1, 6.25, 50000, 0},
             {"over the ruler", &ruler, 544, {}, {0, -360}, wheel, 0, 1, 2.048, 50000, 0},
             {"over the gutter", &gutter, 20, {}, {0, 120}, wheel, 0, 1, 4, 50000, 3},
             {"over its upper end", &ruler, 20, {}, {0, 120}, wheel, 0, 1, 4, 50000, 3},
             {"fingers move the picture", &waveform, 500, {30, 1}, {900, 30}, fingers, 0, 1, 4, 49250, 0},
             {"and zoom by 2 in 64", &waveform, 500, {0, 64}, {0, 900}, fingers, 0, 1, 8, 50000, 0},
             {"pixel by pixel", &waveform, 500, {0, 1}, {0, 1}, fingers, 0, 64, 8, 50000, 0},
             {"a wheel's pixels mean nothing", &waveform, 500, {0, 640}, {0, 120}, wheel, 0, 1, 5, 50000, 0},
             {"a pinch", &waveform, 500, {}, {}, wheel, 0.5, 1, 6, 50000, 0},
             {"in small steps", &waveform, 500, {}, {}, wheel, 0.01, 10, 4 * std::pow(1.01, 10), 50000, 0},
             {"together, at its place", &waveform, 0, {}, {}, wheel, -0.5, 1, 2, 62500, 0},
             {"over the ruler", &ruler, 544, {}, {}, wheel, 1, 1, 8, 50000, 0},
             {"over the overview", &overview, 544, {}, {}, wheel, 1, 1, 8, 50000, 0},
         }) {
        model.setView({4, 50000});
        model.setVerticalZoomDb(0);
        for (int i = 0; i < row.times; ++i)
            row.pinch != 0 ? pinch(*row.view, row.x, row.pinch) : turn(*row.view, row.x, row.pixels, row.delta, row.phase);
        EXPECT_NEAR(state().view.zoom, row.zoom, 1e-9) << row.rule;
        EXPECT_NEAR(state().view.centerFrame, row.center, 1e-6) << row.rule;
        EXPECT_EQ(state().verticalZoomDb, row.verticalDb) << row.rule;
    }
    turn(waveform, 500, {0, -20}, {0, -900}, fingers, Qt::ShiftModifier);
    EXPECT_NEAR(state().view.centerFrame, 50000 + 20 * 12.5, 1e-6);
    pinch(waveform, 500, 0.5, Qt::RotateNativeGesture);
    EXPECT_NEAR(state().view.zoom, 8, 1e-9);
    QKeyEvent end(QEvent::KeyPress, Qt::Key_End, Qt::NoModifier);
    QApplication::sendEvent(&waveform, &end);
    EXPECT_EQ(state().cursorFrame, 100000);
}

TEST_F(SoundViewsTest, EachTakesThePointer) {
    QPoint asked;
    waveform.onContextMenu = [&](QPoint global) { asked = global; };
    mouse(waveform, QEvent::MouseButtonPress, 100, Qt::RightButton);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(100, 50), QPoint(7, 9));
    QApplication::sendEvent(&waveform, &event);
    EXPECT_EQ(state().cursorFrame, 10050);
    EXPECT_EQ(asked, QPoint(7, 9));
    EXPECT_EQ(waveform.cursor().shape(), Qt::IBeamCursor);
    model.select({39000, 60000});
    hover(392);
    EXPECT_EQ(waveform.cursor().shape(), Qt::SizeHorCursor);
    mouse(ruler, QEvent::MouseButtonPress, 500, Qt::LeftButton, 5);
    mouse(ruler, QEvent::MouseButtonRelease, 500, Qt::LeftButton, 5);
    EXPECT_EQ(state().timeUnit, AudioEditorTimeUnit::samples);
    model.setView({4, 20000});
    mouse(overview, QEvent::MouseButtonPress, 844, Qt::LeftButton, 20);
    mouse(overview, QEvent::MouseMove, 744, Qt::LeftButton, 20);
    EXPECT_NEAR(state().view.centerFrame, 70000, 100);
    EXPECT_TRUE(overview.cancelDrag());
    EXPECT_EQ(state().view.centerFrame, 20000);
}

}  // namespace
}  // namespace kiv
