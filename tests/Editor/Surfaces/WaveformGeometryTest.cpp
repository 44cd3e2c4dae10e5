#include <cmath>

#include "Editor/Surfaces/SurfaceFixture.h"

namespace kiv {
namespace {

struct LaneRow {
    std::int64_t channels;
    double height, scale;
    std::vector<PixelSpan> lanes;
    std::vector<int> centres;
};

class Lanes : public SurfaceFixture, public testing::WithParamInterface<LaneRow> {};

TEST_P(Lanes, AreEqualWithAnEdgeBetween) {
    const LaneRow &row = GetParam();
    load(noise(1000, row.channels, 1));
    const WaveformGeometry geometry = waveformGeometry(state(), {1000, row.height, row.scale});
    ASSERT_EQ(geometry.lanes.size(), row.lanes.size());
    for (std::size_t i = 0; i < row.lanes.size(); ++i) {
        EXPECT_EQ(geometry.lanes[i].rows, row.lanes[i]);
        EXPECT_EQ(geometry.lanes[i].centreRow(), row.centres[i]);
        // Full scale stands ten logical pixels inside the lane, above as below.
        const int room = int(std::round(10 * row.scale));
        EXPECT_EQ(geometry.rowOf(geometry.lanes[i], 1), row.lanes[i].lo + room);
        EXPECT_NEAR(geometry.rowOf(geometry.lanes[i], -1), row.lanes[i].hi - room, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, Lanes,
                         testing::Values(LaneRow{1, 616, 1, {{0, 616}}, {308}},
                                         LaneRow{2, 616, 1, {{0, 308}, {309, 616}}, {154, 462}},
                                         LaneRow{2, 616, 2, {{0, 615}, {617, 1232}}, {307, 924}},
                                         LaneRow{2, 400, 1.5, {{0, 300}, {301, 600}}, {150, 450}},
                                         LaneRow{3, 146, 1, {{0, 48}, {49, 97}, {98, 146}}, {24, 73, 122}},
                                         LaneRow{3, 145, 1, {{0, 145}}, {72}}, LaneRow{8, 300, 1, {{0, 300}}, {150}}));

using WaveformGeometryTest = SurfaceFixture;

TEST_F(WaveformGeometryTest, ASoundStillBeingReadHasItsLanesAlready) {
    AudioEditorModel unread(settings, clipboard);
    unread.expect(AudioEditorBuffer(2, 48000));
    EXPECT_EQ(waveformGeometry(unread.state(), size).lanes, geometry().lanes);
    EXPECT_EQ(waveformGeometry(unread.state(), size).lanes.size(), 2u);
    unread.load(AudioEditorBuffer(2, 48000), {}, {});
    EXPECT_EQ(waveformGeometry(unread.state(), size).lanes.size(), 1u);
}

TEST_F(WaveformGeometryTest, VerticalZoomScalesTheSoundAndNotItsLanes) {
    const int full = geometry().rowOf(geometry().lanes[0], 0.5);
    model.setVerticalZoomDb(6);
    EXPECT_LT(geometry().rowOf(geometry().lanes[0], 0.5), full);
    EXPECT_EQ(geometry().rowOf(geometry().lanes[0], 1), 0);
    model.setVerticalZoomDb(-6);
    EXPECT_GT(geometry().rowOf(geometry().lanes[0], 0.5), full);
}

TEST_F(WaveformGeometryTest, ColumnsCoverTheSameFramesHoweverFarTheViewIsScrolled) {
    load(noise(100000, 1, 1));
    std::mt19937 random(3);
    for (int i = 0; i < 200; ++i) {
        show(random() % 60000, 17.3);
        const TimeAxis axis = geometry().axis;
        EXPECT_DOUBLE_EQ(axis.framesPerColumn, 17.3);
        EXPECT_NEAR(axis.frameAt(0), firstVisibleFrame(state().view, 100000), 17.3 / 2 + 1e-6);
        EXPECT_EQ(axis.columnOf(axis.frameAt(123)), 123);
    }
}

TEST_F(WaveformGeometryTest, PointingFindsTheFrameWhoseMarkStandsUnderThePointer) {
    load(noise(100000, 1, 1));
    for (double framesPerPixel : {0.05, 0.4, 1.0, 3.7, 90.0}) {
        show(5000, framesPerPixel);
        const WaveformGeometry g = geometry();
        for (int x = 0; x < 1000; x += 7) {
            const double slack = std::max(0.5 / framesPerPixel, 0.5) + 0.5;
            EXPECT_NEAR(g.axis.columnOf(double(g.frameAt(x, 100000))), x, slack) << framesPerPixel;
        }
    }
    EXPECT_EQ(geometry().frameAt(-1e9, 100000), 0);
    EXPECT_EQ(geometry().frameAt(1e9, 100000), 100000);
}

TEST_F(WaveformGeometryTest, HeightsReadAsLevels) {
    const WaveformGeometry g = geometry();  // two lanes of 100 and 99, half 40 and 39.5
    EXPECT_EQ(g.levelDbAt(50), -std::numeric_limits<double>::infinity());
    EXPECT_NEAR(g.levelDbAt(10), 0, 1e-9);
    EXPECT_NEAR(g.levelDbAt(90), 0, 1e-9);
    EXPECT_NEAR(g.levelDbAt(30.9), -6.02, 0.01);
    EXPECT_NEAR(g.levelDbAt(0), 20 * std::log10(50.0 / 40), 1e-9);
    model.setVerticalZoomDb(12);
    EXPECT_NEAR(geometry().levelDbAt(10), -12, 1e-9);
}

}  // namespace
}  // namespace kiv
