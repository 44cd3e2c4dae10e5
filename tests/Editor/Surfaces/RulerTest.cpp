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
    void move(double x, double y) { input.move({x + 44, y, {}}, geometry()); }
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
    EXPECT_EQ(input.shape(), PointerShape::arrow);
    move(300, 5);
    EXPECT_EQ(input.shape(), PointerShape::horizontalSize);
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
