#include "Editor/Surfaces/OverviewImage.h"
#include "Editor/Surfaces/OverviewInput.h"
#include "Editor/Surfaces/OverviewScene.h"
#include "Editor/Surfaces/SurfaceFixture.h"

namespace kiv {
namespace {

// A strip of 1000 columns behind a gutter of 44, a hundred frames a column.
struct OverviewTest : SurfaceFixture {
    OverviewInput input{model};

    OverviewTest() {
        size = {1044, 44, 1};
        load(noise(100000, 2, 1), {20000}, FrameRange{40000, 60000});
        look(20000, 50000);
    }
    void look(double lo, double hi) {
        model.setView({100000 / (hi - lo), (lo + hi) / 2});
        told.clear();
    }
    OverviewGeometry geometry() const { return overviewGeometry(state(), size); }
    OverviewScene scene() const { return overviewScene(state(), size, 0); }
    // x counts in columns of the strip.
    void press(double x) { input.press({x + 44, 20, {}}, geometry()); }
    void move(double x) { input.move({x + 44, 20, {}}, geometry()); }
    void expectView(double lo, double hi) const {
        EXPECT_NEAR(firstVisibleFrame(state().view, 100000), lo, 60);
        EXPECT_NEAR(firstVisibleFrame(state().view, 100000) + visibleFrames(state().view, 100000), hi, 60);
    }
};

TEST_F(OverviewTest, TheBoxFramesThePartInView) {
    EXPECT_EQ(geometry().box, (PixelSpan{200, 500}));
    EXPECT_EQ(geometry().lane.centreRow(), 22);
    EXPECT_EQ(geometry().lane.half, 16);
    look(0, 100000);
    EXPECT_FALSE(geometry().box);
    look(50000, 50100);  // narrower than eight
    EXPECT_EQ(geometry().box, (PixelSpan{497, 505}));
    look(0, 100);
    EXPECT_EQ(geometry().box, (PixelSpan{0, 8}));
    look(99900, 100000);
    EXPECT_EQ(geometry().box, (PixelSpan{992, 1000}));
}

TEST_F(OverviewTest, PartsAreFoundWithTheirGrace) {
    using enum OverviewPart;
    const auto shapes = [&](double x) { return input.shape({x + 44, 20, {}}, geometry()); };
    for (const auto &[x, part] : std::vector<std::pair<double, OverviewPart>>{{195.9, outside},
                                                                              {196, leftGrip},
                                                                              {203, leftGrip},
                                                                              {204, box},
                                                                              {495.9, box},
                                                                              {497, rightGrip},
                                                                              {504, rightGrip},
                                                                              {504.1, outside}})
        EXPECT_EQ(overviewPartAt(geometry(), x), part) << x;
    EXPECT_EQ(shapes(200), PointerShape::horizontalSize);
    EXPECT_EQ(shapes(300), PointerShape::openHand);
    EXPECT_EQ(shapes(700), PointerShape::arrow);
    look(50000, 50100);
    EXPECT_EQ(overviewPartAt(geometry(), 501), box);
    EXPECT_EQ(overviewPartAt(geometry(), 497), leftGrip);
}

TEST_F(OverviewTest, DraggingInsideMovesTheView) {
    press(300);
    EXPECT_EQ(input.shape({344, 20, {}}, geometry()), PointerShape::closedHand);
    move(400);
    expectView(30000, 60000);
    move(-5000);
    expectView(0, 30000);
    EXPECT_TRUE(input.cancel());
    expectView(20000, 50000);
}

TEST_F(OverviewTest, DraggingAGripZoomsWithTheOtherEdgeFixed) {
    press(198);
    move(298);
    expectView(30000, 50000);
    move(900);  // not past the other edge
    EXPECT_NEAR(visibleFrames(state().view, 100000), 16, 1e-6);
    EXPECT_NEAR(state().view.centerFrame, 49992, 1);
    input.release();
    look(20000, 50000);
    press(502);
    move(802);
    expectView(20000, 80000);
    move(5000);
    expectView(20000, 100000);
}

TEST_F(OverviewTest, APressOutsideCentresThereAndDragsOn) {
    press(800);
    expectView(65000, 95000);
    move(700);
    expectView(55000, 85000);
    input.release();
    input.doubleClick();
    EXPECT_EQ(state().view.zoom, 1);
    press(800);
    EXPECT_EQ(input.shape({844, 20, {}}, geometry()), PointerShape::arrow)
        << "with all in view there is nothing to take hold of";
    EXPECT_FALSE(input.cancel());
}

TEST_F(OverviewTest, AShortSoundIsALineThroughAllChannels) {
    std::vector<float> samples;
    for (int i = 0; i < 50; ++i) samples.insert(samples.end(), {i < 25 ? 0.5f : -0.5f, 0});
    const Sound sound(AudioEditorBuffer(samples, 2, 44100));
    load(sound.buffer);
    const WaveformInk ink{0xFF000001, 0xFF000002, 0xFF000001, 0xFF000003, 0, 0};
    OverviewImage image;
    ASSERT_TRUE(image.update(sound.source(), geometry(), {ink, ink}));
    const auto at = [&](int x, int row) { return image.inside()[row * image.width() + x]; };
    for (const int column : {100, 400, 700, 900}) {
        EXPECT_EQ(at(column, column < 500 ? 14 : 30), ink.curve) << column;
        EXPECT_EQ(at(column, 22), ink.curve) << "the silent channel at " << column;
        EXPECT_EQ(at(column, column < 500 ? 30 : 14), 0u) << column;
    }
}

TEST_F(OverviewTest, MoreChannelsThanRowsAreDrawnByTheirExtremes) {
    const WaveformInk ink{0xFF000001, 0xFF000002, 0xFF000001, 0xFF000003, 0, 0};
    for (const int channels : {40, 50}) {
        std::vector<float> samples(std::size_t(channels) * 10, 0);
        for (std::size_t i = 0; i < samples.size(); i += std::size_t(channels)) samples[i] = 0.5f;
        const Sound sound(AudioEditorBuffer(samples, channels, 44100));
        load(sound.buffer);
        OverviewImage image;
        image.update(sound.source(), geometry(), {ink, ink});
        EXPECT_EQ(image.inside()[18 * image.width() + 500] != 0, channels == 50) << "between two lines";
    }
}

TEST_F(OverviewTest, KeysScrollAndZoom) {
    input.key(ViewKey::right);
    expectView(23000, 53000);
    input.key(ViewKey::home);
    expectView(0, 30000);
    input.key(ViewKey::pageDown);
    expectView(24000, 54000);
    input.key(ViewKey::up);
    EXPECT_NEAR(visibleFrames(state().view, 100000), 20000, 1e-6);
}

TEST_F(OverviewTest, OnlyWhatChangedIsPainted) {
    const auto damage = [&](auto act) {
        const OverviewScene before = scene();
        act();
        return overviewDamage(before, scene());
    };
    EXPECT_TRUE(damage([&] { model.setVerticalZoomDb(3); }).isNone());
    EXPECT_EQ(damage([&] { model.placeCursor(30000); }).strips, (std::vector<PixelSpan>{{-3, 3}, {297, 303}}));
    // The cursor gives way to the playhead.
    EXPECT_EQ(damage([&] { model.setPlayheads({{1, 40000}}); }).strips, (std::vector<PixelSpan>{{397, 403}, {297, 303}}));
    EXPECT_EQ(damage([&] { look(20000, 60000); }).strips, (std::vector<PixelSpan>{{197, 209}, {491, 603}}));
    EXPECT_TRUE(damage([&] { load(noise(100000, 2, 2)); }).everything);
}

}  // namespace
}  // namespace kiv
