#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "TestSounds.h"

namespace kiv {
namespace {

std::vector<float> sine(std::int64_t frames, double hertz, double rate) {
    std::vector<float> samples(std::size_t(frames), 0.0f);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = float(0.5 * std::sin(2 * std::numbers::pi * hertz * double(i) / rate));
    return samples;
}

// The largest difference away from both ends, where the sound begins and breaks off.
float farthest(const std::vector<float> &a, const std::vector<float> &b, std::size_t margin) {
    float most = 0;
    for (std::size_t i = margin; i + margin < a.size(); ++i) most = std::max(most, std::fabs(a[i] - b[i]));
    return most;
}

TEST(WithSampleRate, GivesTheRoundedNumberOfFramesForEveryLength) {
    for (const auto &[from, to] : {std::pair{44100, 48000}, {48000, 44100}, {44100, 22050}, {8000, 192000}, {44100, 44101}})
        for (std::int64_t frames = 2; frames < 3000; frames = frames * 5 / 4 + 1) {
            const AudioEditorBuffer result = AudioEditorOps::withSampleRate(noise(frames, 1, 1).atRate(from), to);
            ASSERT_EQ(result.frames(), std::max<std::int64_t>(std::llround(double(to) * double(frames) / from), 1))
                << frames << " frames from " << from << " to " << to;
            ASSERT_EQ(result.sampleRate(), to);
        }
}

TEST(WithSampleRate, LeavesTheSameRateAndSingleFramesAlone) {
    const AudioEditorBuffer buffer = noise(1000, 2, 1), frame = noise(1, 2, 1);
    EXPECT_EQ(AudioEditorOps::withSampleRate(buffer, 44100).sharedPrefix(buffer), 1000);
    EXPECT_EQ(AudioEditorOps::withSampleRate(frame, 48000), frame) << "with its own rate";
    EXPECT_EQ(AudioEditorOps::withSampleRate(AudioEditorBuffer(2, 44100), 48000).sampleRate(), 44100);
    EXPECT_EQ(AudioEditorOps::withSampleRate(buffer, 0).frames(), 1);
}

// Half of full scale times 0.0002 dB, the ripple of the resampler's pass band. A shift by a hundredth of a frame would show.
constexpr float rippleOfHalf = 1.2e-5f;

// A tone stays where it is in time, keeps its level, and each channel keeps its own.
TEST(WithSampleRate, KeepsTonesInPlace) {
    constexpr std::int64_t from = 44100, frames = 200'000;
    for (const std::int64_t to : {48000, 22050, 96000, 32000}) {
        const std::vector<float> low = sine(frames, 440, from), high = sine(frames, 9000, from);
        std::vector<float> stereo;
        for (std::size_t i = 0; i < low.size(); ++i) stereo.insert(stereo.end(), {low[i], high[i]});
        const AudioEditorBuffer result = AudioEditorOps::withSampleRate(inPieces(AudioEditorBuffer(stereo, 2, from)), to);
        const std::int64_t count = result.frames();
        std::vector<float> left(std::size_t(count), 0.0f), right = left;
        result.copyChannel({0, count}, 0, left.data());
        result.copyChannel({0, count}, 1, right.data());
        EXPECT_LT(farthest(left, sine(count, 440, double(to)), 2000), rippleOfHalf) << to;
        EXPECT_LT(farthest(right, sine(count, 9000, double(to)), 2000), rippleOfHalf) << to;
    }
}

// A soft pulse close to the end, in a sound shorter than the resampler's filter.
TEST(WithSampleRate, KeepsTheEndOfShortSounds) {
    const auto pulse = [](std::int64_t frames, double rate) {
        std::vector<float> samples(std::size_t(frames), 0.0f);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = float(std::exp(-std::pow((double(i) / rate - 0.005) * 3000, 2)));
        return samples;
    };
    const AudioEditorBuffer result = AudioEditorOps::withSampleRate(AudioEditorBuffer(pulse(265, 44100), 1, 44100), 48000);
    EXPECT_LT(farthest(result.samples(), pulse(result.frames(), 48000), 0), 1e-4f);
    EXPECT_GT(AudioEditorOps::peak(result, {230, 250}), 0.99f);
}

TEST(WithSampleRate, RemovesWhatTheNewRateCannotHold) {
    const AudioEditorBuffer high(sine(100'000, 15000, 44100), 1, 44100);
    const AudioEditorBuffer result = AudioEditorOps::withSampleRate(high, 22050);
    EXPECT_LT(AudioEditorOps::peak(result, {1000, 49'000}), 1e-6f);
}

TEST(BandLimited, GivesExactlyTheFramesAskedFor) {
    const std::vector<std::vector<float>> two{noiseSamples(5000, 1), noiseSamples(5000, 2)};
    const double ratio = std::pow(2.0, 7 / 12.0);
    for (const std::int64_t count : {0, 1, 2000, 3337, 20'000}) {
        const auto result = AudioEditorOps::bandLimited(two, ratio * 44100, 44100, count);
        ASSERT_EQ(result.size(), 2u);
        for (const auto &channel : result) EXPECT_EQ(channel.size(), std::size_t(count));
    }
    const auto padded = AudioEditorOps::bandLimited(two, ratio * 44100, 44100, 20'000);
    EXPECT_EQ(std::count(padded[0].begin() + 4000, padded[0].end(), 0.0f), 16'000) << "silence behind the end";
    EXPECT_NE(padded[0][1000], padded[1][1000]);
    EXPECT_TRUE(AudioEditorOps::bandLimited({}, 1, 2, 10).empty());
    EXPECT_EQ(AudioEditorOps::bandLimited({{}}, 1, 2, 3)[0], std::vector<float>(3, 0.0f));
    EXPECT_THROW(AudioEditorOps::bandLimited(two, 0, 44100, 10), std::runtime_error);
}

TEST(BandLimited, ShiftsPitchByTheRatioOfTheRates) {
    const double ratio = std::pow(2.0, 7 / 12.0);
    const auto count = std::llround(100'000 / ratio);
    const auto result = AudioEditorOps::bandLimited({sine(100'000, 1000, 44100)}, ratio * 44100, 44100, count);
    EXPECT_LT(farthest(result[0], sine(count, 1000 * ratio, 44100), 2000), rippleOfHalf);
}

}  // namespace
}  // namespace kiv
