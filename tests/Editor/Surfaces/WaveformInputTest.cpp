#include "Editor/Surfaces/WaveformInput.h"

#include "Editor/Surfaces/PlayheadFollower.h"
#include "Editor/Surfaces/SurfaceFixture.h"
#include "Editor/Surfaces/WheelInput.h"

namespace kiv {
namespace {

// Ten frames a pixel from frame 10000 on; the middle of pixel x is frame 10000 + 10 x + 5.
struct WaveformInputTest : SurfaceFixture {
    WaveformInput input{model};

    WaveformInputTest() {
        load(noise(100000, 2, 1), {12000, 15000}, FrameRange{13000, 14000});
        show(10000, 10);
    }
    static PointerEvent at(double x, Modifiers modifiers = {}) { return {x, 50, modifiers}; }
    void press(double x, Modifiers modifiers = {}, int clicks = 1) { input.press(at(x, modifiers), clicks, geometry()); }
    void move(double x, Modifiers modifiers = {}) { input.move(at(x, modifiers), geometry()); }
    void drag(double from, double to, Modifiers modifiers = {}) {
        press(from);
        move(to, modifiers);
        input.release();
    }
    void key(ViewKey key, Modifiers modifiers = {}) { input.key(key, modifiers, geometry()); }
    std::optional<FrameRange> selection() const { return state().selection; }
};

constexpr Modifiers shift{true, false}, control{false, true};

TEST_F(WaveformInputTest, PressPlacesTheCursorAndDraggingSelectsFromThere) {
    model.select({50000, 60000});
    EXPECT_EQ(notices([&] { press(50); }), bits({Change::cursor, Change::selection, Change::pointer}));
    EXPECT_EQ(state().cursorFrame, 10505);
    EXPECT_FALSE(selection());
    move(52);  // not yet a drag
    EXPECT_FALSE(selection());
    EXPECT_EQ(notices([&] { move(90); }), bits({Change::selection, Change::pointer}));
    EXPECT_EQ(selection(), (FrameRange{10505, 10905}));
    move(20);
    EXPECT_EQ(selection(), (FrameRange{10205, 10505}));
    EXPECT_EQ(state().cursorFrame, 10205);
    input.release();
    EXPECT_FALSE(state().pointerMode);
    EXPECT_EQ(selection(), (FrameRange{10205, 10505}));
}

TEST_F(WaveformInputTest, ShiftExtendsFromTheFartherEdgeOrTheCursor) {
    model.placeCursor(11000);
    press(300, shift);
    EXPECT_EQ(selection(), (FrameRange{11000, 13005}));
    input.release();
    press(50, shift);  // the end is farther
    EXPECT_EQ(selection(), (FrameRange{10505, 13005}));
    move(600);
    EXPECT_EQ(selection(), (FrameRange{13005, 16005}));
}

TEST_F(WaveformInputTest, EdgesOfTheSelectionAreDraggedFromFivePixelsAway) {
    model.select({11000, 11500});  // pixels 100 and 150
    for (const double x : {95.0, 100.0, 105.9}) EXPECT_EQ(input.shape(at(x), geometry()), PointerShape::horizontalSize) << x;
    for (const double x : {94.9, 106.0, 125.0}) EXPECT_EQ(input.shape(at(x), geometry()), PointerShape::textBeam) << x;
    press(103);
    EXPECT_EQ(selection(), (FrameRange{11000, 11500}));
    EXPECT_TRUE(state().resizingEdge);
    move(103);
    EXPECT_EQ(selection(), (FrameRange{11000, 11500}));
    move(83);
    EXPECT_NEAR(double(selection()->lo), 10800, 10);
    EXPECT_EQ(selection()->hi, 11500);
    move(183);
    EXPECT_EQ(selection()->lo, 11500);
    input.release();
    EXPECT_FALSE(state().resizingEdge);
}

TEST_F(WaveformInputTest, DraggedEdgesStickToMarksUnlessCtrlIsHeld) {
    struct Row {
        double to;
        Modifiers modifiers;
        std::int64_t end;
    };
    for (const Row &row : {Row{196, {}, 12000}, Row{204, {}, 12000}, Row{206, {}, 12065}, Row{196, control, 11965},
                           Row{303, {}, 13000}, Row{398, {}, 14000}, Row{503, {}, 15000}}) {
        model.selectNone();
        drag(50, row.to, row.modifiers);
        EXPECT_EQ(selection()->hi, row.end) << row.to;
    }
    show(90000, 10);
    model.selectNone();
    drag(50, 997);
    EXPECT_EQ(selection()->hi, 100000);
}

TEST_F(WaveformInputTest, MoreClicksSelectBetweenMarksAndEverything) {
    struct Row {
        double x;
        FrameRange range;
    };
    for (const Row &row : {Row{100, {0, 12000}}, Row{250, {12000, 13000}}, Row{350, {13000, 14000}}, Row{450, {14000, 15000}},
                           Row{900, {15000, 100000}}}) {
        press(row.x);
        input.release();
        press(row.x, {}, 2);
        input.release();
        EXPECT_EQ(selection(), row.range) << row.x;
    }
    press(450, {}, 3);
    EXPECT_EQ(selection(), (FrameRange{0, 100000}));
}

TEST_F(WaveformInputTest, CancellingPutsEverythingBackAsAtThePress) {
    model.setCursorAndSelection(20000, FrameRange{20000, 30000});
    const AudioEditorZoom view = state().view;
    EXPECT_FALSE(input.cancel());
    press(50);
    move(1100);
    input.scroll(0.5, geometry());
    EXPECT_NE(state().view, view);
    EXPECT_TRUE(input.cancel());
    EXPECT_EQ(state().cursorFrame, 20000);
    EXPECT_EQ(selection(), (FrameRange{20000, 30000}));
    EXPECT_EQ(state().view, view);
    EXPECT_FALSE(state().pointerMode);
    move(400);
    EXPECT_EQ(selection(), (FrameRange{20000, 30000}));
}

TEST_F(WaveformInputTest, DraggingPastASideScrollsFasterWithDistance) {
    press(500);
    EXPECT_EQ(input.scrollSpeed(geometry()), 0);
    move(-10);
    const double slow = input.scrollSpeed(geometry());
    move(1050);
    EXPECT_LT(slow, 0);
    EXPECT_GT(input.scrollSpeed(geometry()), -slow);
    const double first = firstVisibleFrame(state().view, 100000), way = input.scrollSpeed(geometry());
    const std::int64_t end = selection()->hi;
    input.scroll(0.1, geometry());
    EXPECT_NEAR(firstVisibleFrame(state().view, 100000), first + way, 1);
    EXPECT_NEAR(double(selection()->hi), double(end) + way, 10);
    move(998);
    EXPECT_EQ(input.scrollSpeed(geometry()), 0);
    move(999);  // the last column, beyond which there may be no screen
    EXPECT_GT(input.scrollSpeed(geometry()), 0);
    input.release();
    EXPECT_EQ(input.scrollSpeed(geometry()), 0);
}

TEST_F(WaveformInputTest, TheMiddleButtonMovesTheView) {
    input.pressMiddle(at(500), geometry());
    EXPECT_EQ(input.shape(at(500), geometry()), PointerShape::closedHand);
    EXPECT_TRUE(state().viewDragged);
    EXPECT_EQ(notices([&] { move(400); }), bits({Change::view}));
    EXPECT_NEAR(firstVisibleFrame(state().view, 100000), 11000, 1e-6);
    // Zoomed by the wheel meanwhile, the frame that is held stays under the pointer.
    WheelInput(model).turn({3, 0, {}}, 400, 1000);
    const double perColumn = geometry().axis.framesPerColumn;
    move(300);
    EXPECT_NEAR(geometry().axis.framesPerColumn, perColumn, 1e-9);
    EXPECT_NEAR(firstVisibleFrame(state().view, 100000), 15000 - 300 * perColumn, 1e-6);
    input.release();
    EXPECT_FALSE(state().viewDragged);
}

TEST_F(WaveformInputTest, TheLoopIsDraggedWhileItIsEdited) {
    model.commitLoop(FrameRange{13000, 14000});  // pixels 300 and 400
    const auto steps = model.history().undoDepth();
    drag(303, 350);
    EXPECT_EQ(state().loopPoints, (FrameRange{13000, 14000})) << "not in this mode";
    model.setEditLoopEnabled(true);
    model.placeCursor(12500);
    struct Row {
        double from, to;
        Modifiers modifiers;
        FrameRange loop;
    };
    for (const Row &row :
         {Row{303, 353, {}, {13500, 14000}}, Row{396, 296, {}, {13000, 13001}}, Row{297, 250, {}, {12500, 14000}},
          Row{300, 203, {}, {12000, 14000}}, Row{300, 203, control, {12030, 14000}}, Row{400, 2000, {}, {13000, 20000}},
          Row{300, 900, {}, {13999, 14000}}}) {
        EXPECT_EQ(input.shape(at(row.from), geometry()), PointerShape::horizontalSize) << row.from;
        drag(row.from, row.to, row.modifiers);
        EXPECT_EQ(state().loopPoints, row.loop) << row.from << " to " << row.to;
        EXPECT_EQ(model.history().undoDepth(), steps + 1);
        EXPECT_EQ(state().cursorFrame, 12500);
        model.undo();
        EXPECT_EQ(state().loopPoints, (FrameRange{13000, 14000}));
    }
    press(303);
    move(353);
    EXPECT_TRUE(input.cancel());
    EXPECT_EQ(state().loopPoints, (FrameRange{13000, 14000}));
    EXPECT_EQ(model.history().undoDepth(), steps);
}

TEST_F(WaveformInputTest, TheNearestEdgeIsCaughtAndTheModesOwnWinTies) {
    model.setEditLoopEnabled(true);  // the loop at pixels 300 and 400
    struct Row {
        FrameRange selection;
        double x;
        std::optional<TimeEdge> edge;
    };
    using Kind = TimeEdge::Kind;
    for (const Row &row :
         {Row{{13000, 13500}, 300, TimeEdge{Kind::loop, true}}, Row{{13040, 13500}, 302, TimeEdge{Kind::loop, true}},
          Row{{13040, 13500}, 303, TimeEdge{Kind::selection, true}}, Row{{11000, 14060}, 405, TimeEdge{Kind::selection, false}},
          Row{{11000, 14110}, 406, TimeEdge{Kind::selection, false}}, Row{{11000, 11020}, 99, TimeEdge{Kind::selection, true}},
          Row{{11000, 11020}, 104, TimeEdge{Kind::selection, false}}, Row{{11000, 14200}, 406, {}}}) {
        model.select(row.selection);
        EXPECT_EQ(edgeNear(state(), geometry().axis, row.x, 1), row.edge) << row.x;
    }
}

TEST_F(WaveformInputTest, ARightClickOutsideTheSelectionSetsTheCursor) {
    model.select({11000, 12000});
    input.pressRight(at(150), geometry());
    EXPECT_EQ(selection(), (FrameRange{11000, 12000}));
    input.pressRight(at(300), geometry());
    EXPECT_FALSE(selection());
    EXPECT_EQ(state().cursorFrame, 13005);
}

TEST_F(WaveformInputTest, KeysMoveTheCursor) {
    struct Row {
        ViewKey key;
        Modifiers modifiers;
        std::int64_t cursor;
    };
    for (const Row &row : {Row{ViewKey::left, {}, 13490}, Row{ViewKey::right, {}, 13510}, Row{ViewKey::left, control, 13000},
                           Row{ViewKey::right, control, 14000}, Row{ViewKey::home, {}, 0}, Row{ViewKey::end, {}, 100000},
                           Row{ViewKey::pageUp, {}, 5500}, Row{ViewKey::pageDown, {}, 21500}}) {
        model.placeCursor(13500);
        show(10000, 10);
        key(row.key, row.modifiers);
        EXPECT_EQ(state().cursorFrame, row.cursor) << int(row.key);
        EXPECT_TRUE(isInView(state().view, double(row.cursor), 100000)) << int(row.key);
    }
    show(13480, 0.1);
    model.placeCursor(13500);
    key(ViewKey::right);
    EXPECT_EQ(state().cursorFrame, 13501);
    key(ViewKey::up);
    EXPECT_EQ(state().verticalZoomDb, 3);
    key(ViewKey::down);
    EXPECT_EQ(state().verticalZoomDb, 0);
}

TEST_F(WaveformInputTest, ShiftedKeysMoveTheEndThatMovedLast) {
    model.placeCursor(13500);
    key(ViewKey::right, shift);
    key(ViewKey::right, shift);
    EXPECT_EQ(selection(), (FrameRange{13500, 13520}));
    for (int i = 0; i < 3; ++i) key(ViewKey::left, shift);
    EXPECT_EQ(selection(), (FrameRange{13490, 13500}));
    key(ViewKey::home, shift);
    EXPECT_EQ(selection(), (FrameRange{0, 13500}));
    show(10000, 10);
    drag(80, 20);  // its start moved last
    key(ViewKey::left, shift);
    EXPECT_EQ(selection(), (FrameRange{10195, 10805}));
    model.select({11000, 12000});
    key(ViewKey::right, {true, true});
    EXPECT_EQ(selection(), (FrameRange{11000, 13000}));
}

TEST_F(WaveformInputTest, TheWheelZoomsScrollsAndZoomsVertically) {
    WheelInput wheel(model);
    const double under = geometry().axis.frameAt(250);
    wheel.turn({1, 0, {}}, 250, 1000);
    EXPECT_NEAR(geometry().axis.framesPerColumn, 8, 1e-9);
    EXPECT_NEAR(geometry().axis.frameAt(250), under, 8);
    wheel.turn({-0.5, 0, control}, 250, 1000);
    wheel.turn({-0.5, 0, {}}, 250, 1000);
    EXPECT_NEAR(geometry().axis.framesPerColumn, 10, 1e-9);
    EXPECT_NEAR(firstVisibleFrame(state().view, 100000), 10000, 1e-6);
    wheel.turn({-1, 0, shift}, 250, 1000);
    wheel.turn({0.2, -0.5, {}}, 250, 1000);
    EXPECT_NEAR(firstVisibleFrame(state().view, 100000), 11500, 1e-6);
    for (int i = 0; i < 5; ++i) wheel.turn({0.3, 0, {true, true}}, 250, 1000);
    EXPECT_EQ(state().verticalZoomDb, 3);
    wheel.turnVertical(-1);
    EXPECT_EQ(state().verticalZoomDb, 0);
    wheel.pinch(2, 250, 1000);
    EXPECT_NEAR(geometry().axis.framesPerColumn, 5, 1e-9);
}

TEST_F(WaveformInputTest, PressesCountAsClicksWhileQuickAndInOnePlace) {
    ClickCounter counter;
    struct Row {
        double at, x;
        int count;
    };
    for (const Row &row : {Row{0, 10, 1}, Row{300, 11, 2}, Row{600, 10, 3}, Row{900, 10, 1}, Row{1500, 10, 1}, Row{1600, 20, 1},
                           Row{1700, 20, 2}})
        EXPECT_EQ(counter.press(row.at, row.x, 5, 400, 5), row.count) << row.at;
}

struct PlayheadFollowerTest : WaveformInputTest {
    PlayheadFollower follower{model};

    PlayheadFollowerTest() { model.setFollowPlayhead(true); }
    void play(double frame) { model.setPlayheads({{1, frame}}); }
    double first() const { return firstVisibleFrame(state().view, 100000); }
};

TEST_F(PlayheadFollowerTest, TurnsTheViewWhenThePlayheadLeavesIt) {
    play(19000);
    EXPECT_NEAR(first(), 10000, 1);
    play(20010);
    EXPECT_NEAR(first(), 20010 - 1000, 1);
    play(5000);  // a loop begins again
    EXPECT_NEAR(first(), 4000, 1);
    model.setFollowPlayhead(false);
    play(50000);
    EXPECT_NEAR(first(), 4000, 1);
    model.setFollowPlayhead(true);
    EXPECT_NEAR(first(), 49000, 1);
}

TEST_F(PlayheadFollowerTest, WaitsAfterTheUserLookedElsewhere) {
    play(15000);
    show(40000, 10);
    play(15100);
    EXPECT_NEAR(first(), 40000, 1);
    show(12000, 10);  // in view again
    play(15200);
    play(22010);
    EXPECT_NEAR(first(), 21010, 1);
    show(40000, 10);
    model.setPlayheads({});
    play(60000);  // played anew
    EXPECT_NEAR(first(), 59000, 1);
}

TEST_F(PlayheadFollowerTest, DoesNotTurnUnderADrag) {
    play(19900);
    press(500);
    play(20100);
    EXPECT_NEAR(first(), 10000, 1);
    input.release();
    play(20200);
    EXPECT_NEAR(first(), 10000, 1);
    play(19900);
    input.pressMiddle(at(500), geometry());
    play(20100);
    EXPECT_NEAR(first(), 10000, 1);
}

}  // namespace
}  // namespace kiv
