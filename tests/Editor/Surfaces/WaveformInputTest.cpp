#include "Editor/Surfaces/WaveformInput.h"

#include <functional>

#include "Editor/Surfaces/PlayheadFollower.h"
#include "Editor/Surfaces/SurfaceFixture.h"
#include "Editor/Surfaces/WheelInput.h"

namespace kiv {
namespace {

constexpr Modifiers shift{true, false}, control{false, true}, both{true, true};

// Ten frames a pixel from frame 10000 on; the middle of pixel x is frame 10000 + 10 x + 5. Marks stand at the pixels 200 and
// 500, the loop at 300 and 400.
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
    void hold(Modifiers modifiers) { input.modifiersChanged(modifiers, geometry()); }
    void key(ViewKey key, Modifiers modifiers = {}) { input.key(key, modifiers, geometry()); }
    std::optional<FrameRange> selection() const { return state().selection; }
    double first() const { return firstVisibleFrame(state().view, 100000); }
};

TEST_F(WaveformInputTest, PressesAndDragsSelectAndStick) {
    struct Row {
        const char *rule;
        std::optional<FrameRange> selected;  // before; else the cursor is at 11000
        std::function<void()> act;
        std::int64_t cursor;
        std::optional<FrameRange> selection;
    };
    const FrameRange near{11000, 11500}, far{50000, 60000};  // pixels 100 and 150; out of view
    for (const Row &row : std::initializer_list<Row>{
             {"a press sets the cursor", far, [&] { press(50); }, 10505, {}},
             {"three pixels make a drag", far, [&] { press(50), move(52); }, 10505, {}},
             {"a drag selects", far, [&] { drag(50, 90); }, 10505, FrameRange{10505, 10905}},
             {"backwards too", {}, [&] { press(50), move(90), move(20); }, 10205, FrameRange{10205, 10505}},
             {"Shift extends from the cursor", {}, [&] { press(320, shift); }, 11000, FrameRange{11000, 13205}},
             {"from close by too", {}, [&] { press(102, shift); }, 11000, FrameRange{11000, 11025}},
             {"else from the farther edge", near, [&] { press(50, shift); }, 10505, FrameRange{10505, 11500}},
             {"and drags on", near, [&] { press(50, shift), move(603); }, 11500, FrameRange{11500, 16035}},
             {"an extended one sticks", {}, [&] { press(303, shift); }, 11000, FrameRange{11000, 13000}},
             {"unless Ctrl is held", {}, [&] { press(303, both); }, 11000, FrameRange{11000, 13035}},
             {"an edge that was only pressed stays", near, [&] { press(103), move(103); }, 11000, near},
             {"a dragged one keeps its distance", near, [&] { press(103), move(83); }, 10800, FrameRange{10800, 11500}},
             {"and turns round the other", near, [&] { press(103), move(183); }, 11500, FrameRange{11500, 11800}},
             {"a drag's end sticks", {}, [&] { drag(50, 196); }, 10505, FrameRange{10505, 12000}},
             {"from behind too", {}, [&] { drag(50, 204); }, 10505, FrameRange{10505, 12000}},
             {"not from six away", {}, [&] { drag(50, 206); }, 10505, FrameRange{10505, 12065}},
             {"nor with Ctrl held", {}, [&] { drag(50, 196, control); }, 10505, FrameRange{10505, 11965}},
             {"to a loop's start", {}, [&] { drag(50, 303); }, 10505, FrameRange{10505, 13000}},
             {"to its end", {}, [&] { drag(50, 398); }, 10505, FrameRange{10505, 14000}},
             {"its beginning sticks", {}, [&] { drag(203, 250); }, 12000, FrameRange{12000, 12505}},
             {"from before too", {}, [&] { drag(197, 250); }, 12000, FrameRange{12000, 12505}},
             {"to the cursor that the press took away", {}, [&] { drag(105.9, 150); }, 11000, FrameRange{11000, 11505}},
             {"not from six away", {}, [&] { drag(206, 250); }, 12065, FrameRange{12065, 12505}},
             {"nor with Ctrl held", {}, [&] { drag(203, 250, control); }, 12035, FrameRange{12035, 12505}},
             {"a press alone does not stick", {}, [&] { press(203), move(204); }, 12035, {}},
             {"Ctrl acts at once", {}, [&] { press(50), move(196), hold(control); }, 10505, FrameRange{10505, 11965}},
             {"and gives back", {}, [&] { press(50), move(196, control), hold({}); }, 10505, FrameRange{10505, 12000}},
             {"Ctrl without a drag is nothing", near, [&] { hold(control); }, 11000, near},
             {"a right click outside sets the cursor", near, [&] { input.pressRight(at(300), geometry()); }, 13005, {}},
             {"one inside does not", near, [&] { input.pressRight(at(130), geometry()); }, 11000, near},
             {"two clicks select between the marks", {}, [&] { press(250, {}, 2); }, 12000, FrameRange{12000, 13000}},
             {"a loop's points are such", {}, [&] { press(350, {}, 2); }, 13000, FrameRange{13000, 14000}},
             {"the file's start is one", {}, [&] { press(100, {}, 2); }, 0, FrameRange{0, 12000}},
             {"and its end", {}, [&] { press(900, {}, 2); }, 15000, FrameRange{15000, 100000}},
             {"three clicks select all", {}, [&] { press(450, {}, 3); }, 0, FrameRange{0, 100000}},
         }) {
        model.setCursorAndSelection(row.selected ? row.selected->lo : 11000, row.selected);
        told.clear();
        row.act();
        EXPECT_EQ(state().cursorFrame, row.cursor) << row.rule;
        EXPECT_EQ(selection(), row.selection) << row.rule;
        input.release();
        EXPECT_FALSE(state().pointerMode) << row.rule;
        EXPECT_EQ(selection(), row.selection) << row.rule;
    }
    show(90000, 10);
    drag(50, 997);
    EXPECT_EQ(selection()->hi, 100000);
    show(10000, 10);
    EXPECT_EQ(notices([&] { press(50); }), bits({Change::cursor, Change::selection, Change::pointer}));
    EXPECT_EQ(notices([&] { move(90); }), bits({Change::selection, Change::pointer}));
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
    move(400);
    EXPECT_EQ(state().cursorFrame, 20000);
    EXPECT_EQ(selection(), (FrameRange{20000, 30000}));
    EXPECT_EQ(state().view, view);
    EXPECT_FALSE(state().pointerMode);
}

TEST_F(WaveformInputTest, DraggingPastASideScrollsFasterWithDistance) {
    const auto speed = [&](double x) {
        move(x);
        return input.scrollSpeed(geometry());
    };
    press(500);
    EXPECT_EQ(input.scrollSpeed(geometry()), 0);
    EXPECT_EQ(speed(998), 0);
    EXPECT_GT(speed(999), 0) << "the last column, beyond which there may be no screen";
    EXPECT_LT(speed(-10), 0);
    EXPECT_GT(speed(1050), -speed(-10));
    const double before = first(), way = speed(1050);
    const std::int64_t end = selection()->hi;
    input.scroll(0.1, geometry());
    EXPECT_NEAR(first(), before + way, 1);
    EXPECT_NEAR(double(selection()->hi), double(end) + way, 10);
    input.release();
    EXPECT_EQ(input.scrollSpeed(geometry()), 0);
}

TEST_F(WaveformInputTest, TheMiddleButtonMovesTheView) {
    input.pressMiddle(at(500), geometry());
    EXPECT_EQ(input.shape(at(500), geometry()), PointerShape::closedHand);
    EXPECT_TRUE(state().viewDragged);
    EXPECT_EQ(notices([&] { move(400); }), bits({Change::view}));
    EXPECT_NEAR(first(), 11000, 1e-6);
    // Zoomed by the wheel meanwhile, the frame that is held stays under the pointer.
    WheelInput(model).turn({3, 0, {}}, 400, 1000);
    const double perColumn = geometry().axis.framesPerColumn;
    move(300);
    EXPECT_NEAR(first(), 15000 - 300 * perColumn, 1e-6);
    input.release();
    EXPECT_FALSE(state().viewDragged);
}

TEST_F(WaveformInputTest, TheLoopIsDraggedWhileItIsEdited) {
    model.commitLoop(FrameRange{13000, 14000});
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
    model.setEditLoopEnabled(true);
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
          Row{{11000, 11020}, 104, TimeEdge{Kind::selection, false}}, Row{{11000, 14200}, 406, {}},
          Row{{11000, 11500}, 95, TimeEdge{Kind::selection, true}}, Row{{11000, 11500}, 94.9, {}},
          Row{{11000, 11500}, 105.9, TimeEdge{Kind::selection, true}}, Row{{11000, 11500}, 106, {}}}) {
        model.select(row.selection);
        EXPECT_EQ(edgeNear(state(), geometry().axis, row.x, 1), row.edge) << row.x;
        const PointerShape shape = row.edge ? PointerShape::horizontalSize : PointerShape::textBeam;
        EXPECT_EQ(input.shape(at(row.x), geometry()), shape) << row.x;
    }
}

TEST_F(WaveformInputTest, KeysMoveTheCursorOrTheEndThatMovedLast) {
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
        model.placeCursor(13500);
        key(row.key, {true, row.modifiers.control});
        EXPECT_EQ(selection(),
                  (FrameRange{std::min<std::int64_t>(row.cursor, 13500), std::max<std::int64_t>(row.cursor, 13500)}))
            << int(row.key);
    }
    show(10000, 10);
    model.placeCursor(13500);
    for (const ViewKey pressed : {ViewKey::right, ViewKey::left, ViewKey::left}) key(pressed, shift);
    EXPECT_EQ(selection(), (FrameRange{13490, 13500}));
    drag(80, 20);  // its start moved last
    key(ViewKey::left, shift);
    EXPECT_EQ(selection(), (FrameRange{10195, 10805}));
    model.select({11000, 12000});
    key(ViewKey::right, both);
    EXPECT_EQ(selection(), (FrameRange{11000, 13000}));
    show(13480, 0.1);
    model.placeCursor(13500);
    key(ViewKey::right);
    EXPECT_EQ(state().cursorFrame, 13501) << "a frame is wider than a pixel";
    key(ViewKey::up);
    EXPECT_EQ(state().verticalZoomDb, 3);
    key(ViewKey::down);
    EXPECT_EQ(state().verticalZoomDb, 0);
}

TEST_F(WaveformInputTest, TheWheelZoomsScrollsAndZoomsVertically) {
    WheelInput wheel(model);
    struct Row {
        std::vector<WheelTurn> turns;
        double first, framesPerPixel;
        int verticalDb;
    };
    for (const Row &row : std::initializer_list<Row>{{{{1, 0, {}}}, 10500, 8, 0},
                                                     {{{-0.5, 0, control}, {-0.5, 0, {}}}, 10000, 10, 0},
                                                     {{{-1, 0, shift}}, 11000, 10, 0},
                                                     {{{0.2, -0.5, {}}}, 11500, 10, 0},
                                                     {{{0.3, 0, both}, {0.3, 0, both}, {0.3, 0, both}}, 11500, 10, 0},
                                                     {{{0.3, 0, both}}, 11500, 10, 3}}) {
        for (const WheelTurn &turn : row.turns) wheel.turn(turn, 250, 1000);
        EXPECT_NEAR(geometry().axis.framesPerColumn, row.framesPerPixel, 1e-9);
        EXPECT_NEAR(first(), row.first, 1e-6);
        EXPECT_EQ(state().verticalZoomDb, row.verticalDb);
    }
    wheel.turnVertical(-1);
    EXPECT_EQ(state().verticalZoomDb, 0);
    wheel.pinch(2, 250, 1000);
    EXPECT_NEAR(geometry().axis.framesPerColumn, 5, 1e-9);
}

TEST(ClickCounter, CountsPressesWhileQuickAndInOnePlace) {
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
    // Where the view begins once the playhead stands at a frame.
    double playedTo(double frame) {
        model.setPlayheads({{1, frame}});
        return first();
    }
};

TEST_F(PlayheadFollowerTest, TurnsTheViewWhenThePlayheadLeavesIt) {
    EXPECT_NEAR(playedTo(19000), 10000, 1);
    EXPECT_NEAR(playedTo(20010), 19010, 1);
    EXPECT_NEAR(playedTo(5000), 4000, 1) << "a loop begins again";
    model.setFollowPlayhead(false);
    EXPECT_NEAR(playedTo(50000), 4000, 1);
    model.setFollowPlayhead(true);
    EXPECT_NEAR(first(), 49000, 1);
}

TEST_F(PlayheadFollowerTest, WaitsAfterTheUserLookedElsewhere) {
    playedTo(15000);
    show(40000, 10);
    EXPECT_NEAR(playedTo(15100), 40000, 1);
    show(12000, 10);  // in view again
    playedTo(15200);
    EXPECT_NEAR(playedTo(22010), 21010, 1);
    show(40000, 10);
    model.setPlayheads({});
    EXPECT_NEAR(playedTo(60000), 59000, 1) << "played anew";
}

TEST_F(PlayheadFollowerTest, DoesNotTurnUnderADrag) {
    playedTo(19900);
    press(500);
    EXPECT_NEAR(playedTo(20100), 10000, 1);
    input.release();
    EXPECT_NEAR(playedTo(20200), 10000, 1);
    playedTo(19900);
    input.pressMiddle(at(500), geometry());
    EXPECT_NEAR(playedTo(20100), 10000, 1);
}

}  // namespace
}  // namespace kiv
