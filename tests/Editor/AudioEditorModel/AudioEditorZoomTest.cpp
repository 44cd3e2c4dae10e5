#include "Editor/AudioEditorModel/AudioEditorZoom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace kiv {

void PrintTo(const AudioEditorZoom &view, std::ostream *out) { *out << view.zoom << "x at " << view.centerFrame; }

namespace {

TEST(Zoom, leavesAtLeastSixteenFramesInView) {
    const std::pair<std::int64_t, double> cases[] = {{0, 1},       {1, 1},  {15, 1},     {16, 1},
                                                     {17, 1.0625}, {32, 2}, {1600, 100}, {172'800'000, 10'800'000}};
    for (const auto &[frames, most] : cases) EXPECT_EQ(maximumZoom(frames), most) << frames;
}

TEST(Zoom, isKeptWithinItsLimits) {
    const double nan = std::nan(""), inf = std::numeric_limits<double>::infinity();
    const struct {
        AudioEditorZoom view;
        std::int64_t frames;
        AudioEditorZoom clamped;
    } cases[] = {
        // clang-format off
        {{1, 500}, 1000, {1, 500}}, {{1, 0}, 1000, {1, 500}}, {{0.2, 500}, 1000, {1, 500}}, {{4, 0}, 1000, {4, 125}},
        {{4, 999}, 1000, {4, 875}}, {{4, 300}, 1000, {4, 300}}, {{999, 500}, 1600, {100, 500}}, {{5, 3}, 10, {1, 5}},
        {{7, 7}, 0, {1, 0.5}}, {{nan, 300}, 1000, {1, 500}}, {{4, nan}, 1000, {4, 125}}, {{inf, inf}, 1600, {100, 1592}},
        // clang-format on
    };
    for (const auto &[view, frames, clamped] : cases) EXPECT_EQ(clampedView(view, frames), clamped) << frames;
}

TEST(Zoom, theCentreStaysHalfAFrameFromTheEndsHoweverFarTheZoom) {
    EXPECT_EQ(clampedCenter({1e9, 0}, 1000).centerFrame, 0.5);
    EXPECT_EQ(clampedCenter({1e9, 1000}, 1000).centerFrame, 999.5);
}

TEST(Zoom, toFitShowsTheWholeSoundAndCentresAnEmptyOneOnHalfAFrame) {
    EXPECT_EQ(zoomedToFit(1000), (AudioEditorZoom{1, 500}));
    EXPECT_EQ(zoomedToFit(1), (AudioEditorZoom{1, 0.5}));
    EXPECT_EQ(zoomedToFit(0), (AudioEditorZoom{1, 0.5}));
}

TEST(Zoom, toARangeShowsItExactlyAsFarAsTheLimitsAllow) {
    EXPECT_EQ(zoomedToRange({100, 350}, 1000), (AudioEditorZoom{4, 225}));
    EXPECT_EQ(zoomedToRange({0, 1000}, 1000), (AudioEditorZoom{1, 500}));
    EXPECT_EQ(zoomedToRange({500, 501}, 1600), (AudioEditorZoom{100, 500.5}));
    EXPECT_EQ(zoomedToRange({0, 2}, 1600), (AudioEditorZoom{100, 8}));
    EXPECT_EQ(zoomedToRange({2, 5}, 10), (AudioEditorZoom{1, 5}));
}

TEST(Zoom, keepsTheAnchorWhereItIsOnTheScreen) {
    const std::int64_t frames = 100'000;
    const AudioEditorZoom view{10, 40'000};
    const AudioEditorZoom in = zoomedAround(view, 20, 42'000, frames);
    EXPECT_DOUBLE_EQ(in.zoom, 20);
    EXPECT_DOUBLE_EQ((42'000 - firstVisibleFrame(in, frames)) / visibleFrames(in, frames), 0.7);
    EXPECT_EQ(zoomedAround(view, 20, 40'000, frames), (AudioEditorZoom{20, 40'000}));
    EXPECT_EQ(zoomedAround(view, 0.01, 42'000, frames), zoomedToFit(frames));
}

// The fraction of the view at which a frame stands is the same after any zoom that does not meet the sound's ends.
TEST(Zoom, keepsTheFrameUnderThePointer) {
    const std::int64_t frames = 100'000;
    std::mt19937 random(3);
    const auto number = [&](double lo, double hi) { return std::uniform_real_distribution(lo, hi)(random); };
    for (int i = 0; i < 200; ++i) {
        const AudioEditorZoom view{number(10, 1000), number(30'000, 70'000)};
        const double width = number(100, 2000), x = number(0, width);
        const AudioEditorZoom after = zoomedAt(view, number(10, 1000), x, width, frames);
        const auto under = [&](const AudioEditorZoom &v) {
            return firstVisibleFrame(v, frames) + x / width * visibleFrames(v, frames);
        };
        EXPECT_NEAR(under(after), under(view), 1e-6);
    }
}

TEST(Zoom, takesAPointerOutsideTheViewAsItsNearerEnd) {
    const AudioEditorZoom view{10, 40'000};
    EXPECT_EQ(zoomedAt(view, 20, -50, 800, 100'000), zoomedAt(view, 20, 0, 800, 100'000));
    EXPECT_EQ(zoomedAt(view, 20, 900, 800, 100'000), zoomedAt(view, 20, 800, 800, 100'000));
    EXPECT_EQ(firstVisibleFrame(zoomedAt(view, 20, 0, 800, 100'000), 100'000), 35'000);
    EXPECT_EQ(zoomedAt(view, 20, 0, 0, 100'000), (AudioEditorZoom{20, 40'000}));
    EXPECT_EQ(zoomedAt({1, 5}, 8, 0, 800, 10), (AudioEditorZoom{1, 5}));
}

TEST(Zoom, scrollsUpToTheEnds) {
    EXPECT_EQ(scrolledBy({10, 500}, 20, 1000), (AudioEditorZoom{10, 520}));
    EXPECT_EQ(scrolledBy({10, 500}, -900, 1000), (AudioEditorZoom{10, 50}));
    EXPECT_EQ(scrolledBy({10, 500}, 900, 1000), (AudioEditorZoom{10, 950}));
    EXPECT_EQ(scrolledBy({1, 500}, 900, 1000), (AudioEditorZoom{1, 500}));
}

TEST(Zoom, revealsAFrameAtATenthOfTheViewUnlessItIsInIt) {
    const AudioEditorZoom view{10, 500};  // frames 450 … 550
    for (const double inView : {450.0, 500.0, 550.0}) EXPECT_EQ(revealing(view, inView, 1000), view) << inView;
    EXPECT_EQ(revealing(view, 551, 1000), (AudioEditorZoom{10, 591}));
    EXPECT_EQ(revealing(view, 300, 1000), (AudioEditorZoom{10, 340}));
    EXPECT_EQ(revealing(view, 2, 1000), (AudioEditorZoom{10, 50}));
    EXPECT_EQ(revealing(view, 999, 1000), (AudioEditorZoom{10, 950}));
}

}  // namespace
}  // namespace kiv
