#include "Editor/AudioEditorCore/AudioEditorPeaks.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "TestSounds.h"

namespace kiv {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float inf = std::numeric_limits<float>::infinity();

// The definition, one sample after the other.
AudioEditorPeaks plainPeaks(const AudioEditorBuffer &buffer) {
    const std::vector<float> samples = buffer.samples();
    const std::size_t channels = std::size_t(buffer.channels()), blocks = std::size_t((buffer.frames() + 255) / 256);
    AudioEditorPeaks peaks;
    peaks.mins.assign(channels, std::vector<float>(blocks, inf));
    peaks.maxs.assign(channels, std::vector<float>(blocks, -inf));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        float &low = peaks.mins[i % channels][i / channels / 256], &high = peaks.maxs[i % channels][i / channels / 256];
        if (samples[i] < low) low = samples[i];
        if (samples[i] > high) high = samples[i];
    }
    for (std::size_t c = 0; c < channels; ++c)
        for (std::size_t b = 0; b < blocks; ++b)
            if (peaks.mins[c][b] > peaks.maxs[c][b]) peaks.mins[c][b] = peaks.maxs[c][b] = 0;
    return peaks;
}

TEST(Peaks, AreTheExtremesOfEveryBlockForAllChannelCounts) {
    for (const std::int64_t channels : {1, 2, 3, 4, 6, 8, 16, 17, 64, 100})
        for (const std::int64_t frames : {0, 1, 15, 255, 256, 257, 511, 4099, 20'000}) {
            const AudioEditorBuffer buffer = noise(frames, channels, std::uint32_t(frames + channels));
            const AudioEditorPeaks peaks(buffer);
            ASSERT_EQ(std::int64_t(peaks.mins.size()), channels);
            ASSERT_EQ(peaks.blocks(), (frames + 255) / 256);
            ASSERT_EQ(peaks, plainPeaks(buffer)) << channels << " channels, " << frames << " frames";
            ASSERT_EQ(AudioEditorPeaks(inPieces(buffer)), peaks);
        }
    EXPECT_EQ(AudioEditorPeaks(noise(1'000'000, 2, 1)), plainPeaks(noise(1'000'000, 2, 1))) << "more than one task";
}

TEST(Peaks, PassOverWhatIsNoNumber) {
    for (const std::int64_t channels : {1, 2, 3}) {
        std::vector<float> samples = noiseSamples(1024 * channels, 1);
        std::fill_n(samples.begin() + 256 * channels, 256 * channels, nan);
        for (std::size_t i = 512 * std::size_t(channels); i < samples.size(); i += 3) samples[i] = i % 2 ? nan : inf;
        const AudioEditorBuffer buffer(samples, channels, 44100);
        const AudioEditorPeaks peaks(buffer);
        EXPECT_EQ(peaks, plainPeaks(buffer));
        EXPECT_EQ(peaks.mins[0][1], 0);
        EXPECT_EQ(peaks.maxs[0][1], 0);
    }
    const AudioEditorPeaks infinite(AudioEditorBuffer(std::vector<float>(256, -inf), 1, 44100));
    EXPECT_EQ(infinite.mins[0][0], -inf);
    EXPECT_EQ(infinite.maxs[0][0], -inf);
}

AudioEditorBuffer edited(const AudioEditorBuffer &buffer, std::mt19937 &chance) {
    const auto between = [&](std::int64_t lo, std::int64_t hi) {
        return lo + std::int64_t(chance() % std::uint64_t(hi - lo + 1));
    };
    const std::int64_t lo = between(0, buffer.frames()), hi = std::min(buffer.frames(), lo + between(0, 30'000));
    switch (chance() % 7) {
        case 0:
            return AudioEditorOps::scaled(buffer, {lo, hi}, 0.5);
        case 1:
            return AudioEditorOps::removing(buffer, {lo, hi});
        case 2:
            return AudioEditorOps::inserting(buffer, noise(between(0, 5000), buffer.channels(), chance()), lo);
        case 3:
            return AudioEditorOps::inserting(buffer, noise(256 * between(0, 9), buffer.channels(), chance()), lo);
        case 4:
            return AudioEditorOps::silenced(buffer, {lo, hi});
        case 5:
            return AudioEditorOps::slice(buffer, {0, hi});
        default:
            return buffer.replacing({lo, hi}, noise(hi - lo, buffer.channels(), chance()));
    }
}

bool covers(const AudioEditorPeaks &wide, const AudioEditorPeaks &exact) {
    for (std::size_t c = 0; c < exact.mins.size(); ++c)
        for (std::size_t b = 0; b < exact.mins[c].size(); ++b)
            if (wide.mins[c][b] > exact.mins[c][b] || wide.maxs[c][b] < exact.maxs[c][b]) return false;
    return wide.blocks() == exact.blocks();
}

// Carried over an edit, peaks are exact up to the loose ones, which cover the exact; measured again, they are those of the
// whole.
TEST(Peaks, FollowRandomEdits) {
    std::mt19937 chance(815);
    int loose = 0;
    for (const std::int64_t channels : {1, 2, 5}) {
        AudioEditorBuffer buffer = noise(100'000, channels, 1);
        AudioEditorPeaks peaks(buffer);
        for (int round = 0; round < 300; ++round) {
            const AudioEditorBuffer next = buffer.frames() < 2000
                                               ? AudioEditorOps::inserting(buffer, noise(80'000, channels, chance()), 0)
                                               : edited(buffer, chance);
            const AudioEditorPeaks whole = plainPeaks(next);
            ASSERT_EQ(AudioEditorPeaks(next, buffer, peaks), whole) << channels << " channels, round " << round;
            peaks = AudioEditorPeaks::carried(next, buffer, std::move(peaks));
            ASSERT_TRUE(covers(peaks, whole)) << channels << " channels, round " << round;
            const std::int64_t exact = std::min(peaks.looseFrom, peaks.blocks());
            for (std::size_t c = 0; c < whole.mins.size(); ++c) {
                ASSERT_TRUE(std::equal(whole.mins[c].begin(), whole.mins[c].begin() + exact, peaks.mins[c].begin())) << round;
                ASSERT_TRUE(std::equal(whole.maxs[c].begin(), whole.maxs[c].begin() + exact, peaks.maxs[c].begin())) << round;
            }
            loose += !peaks.isExact();
            if (chance() % 3 == 0 && !peaks.isExact()) {
                peaks.takeTail(peaks.measuredTail(next));
                ASSERT_EQ(peaks, whole) << channels << " channels, round " << round;
            }
            buffer = next;
        }
    }
    EXPECT_GT(loose, 200);
}

// Old peaks that say something else show where they were taken over and where the sound was read again.
TEST(Peaks, ReadOnlyWhatMayDiffer) {
    const AudioEditorBuffer before = noise(256 * 1000, 2, 1);
    AudioEditorPeaks marked(before);
    for (auto *side : {&marked.mins, &marked.maxs})
        for (auto &channel : *side) std::fill(channel.begin(), channel.end(), 99.0f);
    const auto readAgain = [&](const AudioEditorBuffer &now) {
        const AudioEditorPeaks peaks(now, before, marked);
        FrameRange read{peaks.blocks(), 0};
        for (std::int64_t b = 0; b < peaks.blocks(); ++b)
            if (peaks.maxs[1][std::size_t(b)] != 99.0f) read = {std::min(read.lo, b), b + 1};
        return read;
    };
    EXPECT_EQ(readAgain(before), (FrameRange{1000, 0})) << "nothing";
    EXPECT_EQ(readAgain(AudioEditorOps::scaled(before, {25'600, 51'200}, 0.5)), (FrameRange{100, 200}));
    EXPECT_EQ(readAgain(AudioEditorOps::scaled(before, {25'599, 51'201}, 0.5)), (FrameRange{99, 201}));
    EXPECT_EQ(readAgain(AudioEditorOps::removing(before, {128'000, 140'000})), (FrameRange{500, 954})) << "all behind";
    EXPECT_EQ(readAgain(AudioEditorOps::removing(before, {128'000, 140'800})), (FrameRange{950, 0})) << "whole blocks move";
    EXPECT_EQ(readAgain(AudioEditorOps::removing(before, {128'100, 140'900})), (FrameRange{500, 501}));
    EXPECT_EQ(readAgain(before.atRate(8000)), (FrameRange{1000, 0}));
}

TEST(Peaks, OfAnotherSoundAreNotTakenOver) {
    const AudioEditorBuffer stereo = noise(5000, 2, 1), mono = AudioEditorOps::mono(stereo, AudioEditorMonoSource::left);
    EXPECT_EQ(AudioEditorPeaks(mono, stereo, AudioEditorPeaks(stereo)), AudioEditorPeaks(mono));
    EXPECT_EQ(AudioEditorPeaks(stereo, mono, AudioEditorPeaks(mono)), AudioEditorPeaks(stereo));
    EXPECT_EQ(AudioEditorPeaks(stereo, stereo, AudioEditorPeaks()), AudioEditorPeaks(stereo)) << "peaks that were not there";
    const AudioEditorBuffer empty(2, 44100);
    EXPECT_EQ(AudioEditorPeaks(empty, stereo, AudioEditorPeaks(stereo)), AudioEditorPeaks(empty));
    EXPECT_EQ(AudioEditorPeaks(stereo, empty, AudioEditorPeaks(empty)), AudioEditorPeaks(stereo));
}

}  // namespace
}  // namespace kiv
