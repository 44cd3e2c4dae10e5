#include "Editor/Surfaces/WaveformColumns.h"

#include <cmath>
#include <limits>

#include "Editor/Surfaces/SurfaceFixture.h"

namespace kiv {
namespace {

// Frame by frame, as the definition has it; whole blocks from 256 frames a column on.
ColumnLevel naive(const AudioEditorBuffer &buffer, double framesPerColumn, std::int64_t column, std::int64_t channel) {
    auto lo = std::int64_t(std::floor(double(column) * framesPerColumn));
    auto hi = std::max(std::int64_t(std::floor(double(column + 1) * framesPerColumn)), lo + 1);
    if (lo < 0 || lo >= buffer.frames()) return {};
    hi = std::min(hi, buffer.frames());
    if (framesPerColumn >= 256) {
        lo = lo / 256 * 256;
        hi = std::min((hi + 255) / 256 * 256, buffer.frames());
    }
    ColumnLevel level{2, -2, 0};
    double sum = 0;
    for (std::int64_t frame = lo; frame < hi; ++frame) {
        const float sample = buffer.sample(frame, channel);
        level.min = std::min(level.min, sample);
        level.max = std::max(level.max, sample);
        sum += double(sample) * double(sample);
    }
    level.rms = float(std::sqrt(sum / double(hi - lo)));
    return level;
}

TEST(WaveformColumns, HoldExtremesAndRmsOfTheirFrames) {
    for (const std::int64_t channels : {1, 2, 3, 8}) {
        // A multiple of the block size, so that the mean of block powers is the mean of squares.
        const Sound sound(inPieces(noise(256 * 90, channels, 7)));
        for (const double framesPerColumn : {0.3, 1.0, 2.5, 17.7, 255.0, 256.0, 700.0, 5000.0}) {
            WaveformColumns columns;
            const auto count = std::int64_t(std::ceil(256 * 90 / framesPerColumn)) + 2;
            columns.update(sound.source(), framesPerColumn, false, -1, std::min<std::int64_t>(count, 500));
            for (std::int64_t c = 0; c < channels; ++c)
                for (std::int64_t k = -1; k < columns.first() + columns.count(); ++k) {
                    const ColumnLevel want = naive(sound.buffer, framesPerColumn, k, c);
                    const ColumnLevel got = columns.lane(std::size_t(c))[std::size_t(k + 1)];
                    ASSERT_EQ(got.isEmpty(), want.isEmpty()) << framesPerColumn << " " << k;
                    if (want.isEmpty()) continue;
                    ASSERT_EQ(got.min, want.min) << framesPerColumn << " " << k;
                    ASSERT_EQ(got.max, want.max) << framesPerColumn << " " << k;
                    ASSERT_NEAR(got.rms, want.rms, 1e-5) << framesPerColumn << " " << k;
                }
        }
    }
}

TEST(WaveformColumns, MergedOnesSpanAllChannels) {
    const Sound sound(AudioEditorBuffer(std::vector<float>{0.5f, -0.25f, 0.1f, 0.2f, 0.3f, -0.75f}, 3, 44100));
    WaveformColumns columns;
    columns.update(sound.source(), 1, true, 0, 2);
    ASSERT_EQ(columns.lanes(), 1u);
    EXPECT_EQ(columns.lane(0)[0].min, -0.25f);
    EXPECT_EQ(columns.lane(0)[0].max, 0.5f);
    EXPECT_EQ(columns.lane(0)[1].min, -0.75f);
    EXPECT_NEAR(columns.lane(0)[0].rms, std::sqrt((0.25 + 0.0625 + 0.01) / 3), 1e-6);
}

TEST(WaveformColumns, PassOverWhatIsNoNumber) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Sound sound(AudioEditorBuffer(std::vector<float>{nan, 0.5f, nan, nan}, 1, 44100));
    WaveformColumns columns;
    columns.update(sound.source(), 2, false, 0, 2);
    EXPECT_EQ(columns.lane(0)[0].min, 0.5f);
    EXPECT_EQ(columns.lane(0)[0].max, 0.5f);
    EXPECT_EQ(columns.lane(0)[1], (ColumnLevel{0, 0, 0}));
}

TEST(WaveformColumns, WithAnUnknownBlockHaveNoRms) {
    Sound sound(noise(256 * 8, 1, 1));
    sound.powers.channels[0][5] = -1;
    WaveformColumns columns;
    columns.update(sound.source(), 512, false, 0, 4);
    EXPECT_GT(columns.lane(0)[1].rms, 0);
    EXPECT_LT(columns.lane(0)[2].rms, 0);
    EXPECT_LT(columns.lane(0)[2].min, 0);
}

TEST(WaveformColumns, AreMeasuredOnceWhileTheViewScrolls) {
    const Sound sound(noise(100000, 2, 1));
    WaveformColumns columns;
    EXPECT_EQ(columns.update(sound.source(), 10, false, 0, 500), 500);
    EXPECT_EQ(columns.update(sound.source(), 10, false, 0, 500), 0);
    EXPECT_EQ(columns.update(sound.source(), 10, false, 20, 500), 20);
    EXPECT_EQ(columns.update(sound.source(), 10, false, 5, 500), 15);
    EXPECT_EQ(columns.update(sound.source(), 10, false, 5000, 500), 500);
    EXPECT_EQ(columns.update(sound.source(), 10, false, 4990, 520), 20);
    EXPECT_EQ(columns.update(sound.source(2), 10, false, 4990, 520), 520);
    EXPECT_EQ(columns.update(sound.source(2), 11, false, 4990, 520), 520);
}

TEST(WaveformColumns, ScrollingGivesWhatMeasuringAnewGives) {
    const Sound sound(noise(100000, 2, 1));
    WaveformColumns scrolled;
    std::mt19937 random(5);
    for (int i = 0; i < 50; ++i) {
        const std::int64_t first = std::int64_t(random() % 900) - 100, count = 1 + random() % 300;
        WaveformColumns fresh;
        scrolled.update(sound.source(), 111, false, first, count);
        fresh.update(sound.source(), 111, false, first, count);
        for (std::size_t lane = 0; lane < 2; ++lane) ASSERT_EQ(scrolled.lane(lane), fresh.lane(lane));
    }
}

}  // namespace
}  // namespace kiv
