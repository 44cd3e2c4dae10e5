#include "Editor/Surfaces/RulerInput.h"
#include "Editor/Surfaces/RulerScene.h"
#include "Editor/Surfaces/SurfaceFixture.h"

namespace kiv {
namespace {

// 1000 columns behind the corner, ten frames each, from frame 10000 on; the lane begins at row 22.
struct RulerTest : SurfaceFixture {
    RulerInput input{model};

    RulerTest() {
        load(noise(100000, 2, 1), {12000, 15000}, FrameRange{13000, 14000});
        show(10000, 10);
        size = {1044, 40, 1};
    }
    RulerGeometry geometry() const { return rulerGeometry(state(), size); }
    void press(double x, double y, int clicks = 1) { input.press({x + 44, y, {}}, clicks, geometry()); }
    void move(double x, double y, bool control = false) { input.move({x + 44, y, {false, control}}, geometry()); }
    PointerShape shape(double x, double y) { return input.shape({x + 44, y, {}}, geometry()); }
};

TEST_F(RulerTest, AClickOnRulerOrCornerSwitchesTheUnit) {
    for (const auto &[x, y] : std::vector<std::pair<double, double>>{{500, 5}, {-20, 5}, {-20, 30}}) {
        const AudioEditorTimeUnit before = state().timeUnit;
        press(x, y);
        move(x + 2, y + 2);
        input.release();
        EXPECT_NE(state().timeUnit, before) << x << " " << y;
    }
    press(700, 30);
    EXPECT_EQ(notices([&] { input.release(); }), 0u);
}

TEST_F(RulerTest, ADragScrollsAndZoomsAroundTheGrabbedFrame) {
    press(400, 5);
    const double grabbed = geometry().axis.frameAt(400);
    EXPECT_EQ(shape(400, 5), PointerShape::arrow);
    move(300, 5);
    EXPECT_EQ(shape(300, 5), PointerShape::horizontalSize);
    EXPECT_TRUE(state().viewDragged);
    EXPECT_NEAR(firstVisibleFrame(state().view, 100000), 11000, 1);
    move(300, 5 + 64);
    EXPECT_NEAR(geometry().axis.framesPerColumn, 5, 1e-9);
    EXPECT_NEAR(geometry().axis.frameAt(300), grabbed, 5);
    move(300, 5 - 64);
    EXPECT_NEAR(geometry().axis.framesPerColumn, 20, 1e-9);
    EXPECT_NEAR(geometry().axis.frameAt(300), grabbed, 20);
    input.release();
    EXPECT_EQ(state().timeUnit, AudioEditorTimeUnit::seconds);
    press(400, 5);
    const AudioEditorZoom view = state().view;
    move(100, 50);
    EXPECT_TRUE(input.cancel());
    EXPECT_EQ(state().view, view);
}

TEST_F(RulerTest, MarkersAndLoopAnswerToClicks) {
    press(205, 26);  // the flag of the marker at column 200
    EXPECT_EQ(state().cursorFrame, 12000);
    EXPECT_FALSE(state().selection);
    press(205, 26, 2);
    EXPECT_EQ(state().selection, (FrameRange{12000, 15000}));
    press(509, 26, 2);
    EXPECT_EQ(state().selection, (FrameRange{15000, 100000}));
    press(350, 37, 2);
    EXPECT_EQ(state().selection, (FrameRange{13000, 14000}));
    model.placeCursor(7);
    for (const auto &[x, y, clicks] :
         std::vector<std::tuple<double, double, int>>{{350, 37, 1}, {350, 26, 2}, {290, 37, 2}, {250, 26, 1}}) {
        press(x, y, clicks);
        input.release();
        EXPECT_EQ(state().cursorFrame, 7) << x << " " << y;
        EXPECT_FALSE(state().selection);
    }
}

TEST_F(RulerTest, LoopPointsAreDraggedByTheirTabsInEditLoopAlone) {
    struct Row {
        double from, to;
        bool control;
        FrameRange loop;
    };
    // The loop stands from column 300 to 400, markers at 200 and 500, the cursor at 250.
    model.placeCursor(12500);
    press(302, 30);
    move(330, 30);
    input.release();
    EXPECT_EQ(state().loopPoints, (FrameRange{13000, 14000}));
    EXPECT_EQ(shape(302, 30), PointerShape::arrow);
    model.setEditLoopEnabled(true);
    EXPECT_EQ(shape(302, 30), PointerShape::horizontalSize);
    EXPECT_EQ(shape(350, 30), PointerShape::arrow);
    for (const Row &row :
         {Row{302, 332, false, {13300, 14000}}, Row{297, 150, false, {11530, 14000}}, Row{302, 206, false, {12000, 14000}},
          Row{302, 206, true, {12040, 14000}}, Row{302, 253, false, {12500, 14000}}, Row{302, 600, false, {13999, 14000}},
          Row{398, 500, false, {13000, 15000}}, Row{404, 460, false, {13000, 14560}}, Row{398, 100, false, {13000, 13001}},
          Row{302, 304, false, {13000, 14000}}}) {
        press(row.from, 30);
        move((row.from + row.to) / 2, 30);
        move(row.to, 30, row.control);
        EXPECT_EQ(shape(row.to, 0), PointerShape::horizontalSize) << row.to;
        input.release();
        EXPECT_EQ(state().loopPoints, row.loop) << row.from << " to " << row.to;
        EXPECT_EQ(model.canUndo(), row.loop != (FrameRange{13000, 14000}));
        if (model.canUndo()) model.undo();
    }
    press(302, 30);
    move(206, 30);
    for (const bool control : {true, false}) {
        input.modifiersChanged({false, control}, geometry());
        EXPECT_EQ(state().loopPoints->lo, control ? 12040 : 12000) << "Ctrl acts while the pointer rests";
    }
    EXPECT_TRUE(input.cancel());
    EXPECT_EQ(state().loopPoints, (FrameRange{13000, 14000}));
    EXPECT_FALSE(model.canUndo());
}

TEST_F(RulerTest, ADragInTheEmptyLaneMakesTheLoopInEditLoopAlone) {
    const auto drag = [&](double from, double to) {
        press(from, 30);
        move(to, 30);
        input.release();
        return state().loopPoints;
    };
    load(noise(100000, 2, 1), {12000});
    model.setView({10, 15000});
    EXPECT_EQ(drag(300, 400), std::nullopt);
    model.setEditLoopEnabled(true);
    EXPECT_EQ(drag(300, 303), std::nullopt) << "too little for a drag";
    EXPECT_EQ(drag(400, 300), (FrameRange{13000, 14000}));
    EXPECT_EQ(drag(600, 700), (FrameRange{13000, 14000})) << "the lane is not empty any more";
    model.undo();
    EXPECT_EQ(state().loopPoints, std::nullopt);
    press(205, 26);
    move(300, 26);
    EXPECT_EQ(state().cursorFrame, 12000) << "a marker's flag comes before the lane";
    EXPECT_EQ(state().loopPoints, std::nullopt);
}

TEST_F(RulerTest, OnlyWhatChangedIsPainted) {
    RulerScene last = rulerScene(state(), size, {});
    const auto damage = [&](auto act) {
        act();
        const RulerScene before = std::exchange(last, rulerScene(state(), size, last));
        return rulerDamage(before, last);
    };
    EXPECT_TRUE(damage([&] { model.setVerticalZoomDb(3); }).isNone());
    EXPECT_TRUE(damage([&] { model.select({0, 500}); }).isNone());
    model.setPlayheads({{1, 12000}});
    damage([] {});
    EXPECT_EQ(damage([&] { model.setPlayheads({{1, 12500}}); }).strips, (std::vector<PixelSpan>{{193, 207}, {243, 257}}));
    EXPECT_TRUE(damage([&] { model.toggleTimeUnit(); }).everything);
    EXPECT_EQ(last.unit, "Smp");
    EXPECT_TRUE(damage([&] { load(buffer().atRate(48000)); }).everything);
}

}  // namespace
}  // namespace kiv
