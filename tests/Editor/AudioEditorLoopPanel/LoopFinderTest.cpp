#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numbers>

#include "Editor/AudioEditorCore/TestSounds.h"
#include "Editor/AudioEditorLoopPanel/NaiveLoopSearch.h"

namespace kiv {
namespace {

using AudioEditorLoopFinder::analyze;
using AudioEditorLoopFinder::LoopPoints;
using AudioEditorLoopFinder::zeroCrossing;

// A note: harmonics that swell, waver and die away over a little noise, differently on each channel.
AudioEditorBuffer note(double seconds, std::int64_t channels, std::int64_t rate, double hertz, std::uint32_t seed) {
    const auto frames = std::int64_t(seconds * double(rate));
    std::vector<float> samples = noiseSamples(frames * channels, seed);
    for (std::int64_t i = 0; i < frames; ++i) {
        const double t = double(i) / double(rate), phase = 2 * std::numbers::pi * hertz * t;
        const double gain = std::min(t / 0.05, 1.0) * std::exp(-0.5 * t);
        for (std::int64_t c = 0; c < channels; ++c) {
            double x = 0.001 * samples[std::size_t(i * channels + c)];
            for (int h = 1; h <= 6; ++h) x += 0.3 / h * std::sin(h * phase + 0.3 * h * double(c) + 0.2 * std::sin(30 * t));
            samples[std::size_t(i * channels + c)] = float(gain * x);
        }
    }
    return AudioEditorBuffer(samples, channels, rate);
}

AudioEditorBuffer sine(std::int64_t frames, std::int64_t rate, double period) {
    std::vector<float> samples;
    for (std::int64_t i = 0; i < frames; ++i)
        samples.push_back(float(0.5 * std::sin(2 * std::numbers::pi * double(i) / period)));
    return AudioEditorBuffer(samples, 1, rate);
}

TEST(LoopFinder, measuresASeamAsItIsDefined) {
    struct Case {
        std::int64_t frames, channels, start;
        FrameRange ends;
        std::int64_t w;
    };
    const Case cases[] = {
        {900, 1, 100, {120, 700}, 20},          // by transforms
        {20'000, 2, 3000, {500, 19'990}, 441},  // several blocks of them, up to where the sound ends
        {900, 3, 100, {120, 140}, 20},          // end by end
        {900, 2, 5, {600, 901}, 50},            // a start whose surroundings reach out of the sound
        {900, 2, 899, {-10, 920}, 50},          // at its end, with ends all around it
        {900, 1, 100, {-2000, 3000}, 16},
    };
    for (const Case &c : cases) {
        const std::vector<float> sound = noiseSamples(c.frames * c.channels, 5);
        const auto expected = NaiveLoopSearch::mismatch(sound, c.channels, c.start, c.ends, c.w);
        const auto found = AudioEditorLoopFinder::mismatch(sound, c.channels, c.start, c.ends, c.w);
        ASSERT_TRUE(found && expected);
        EXPECT_THAT(*found, testing::Pointwise(testing::DoubleNear(2e-6), *expected)) << c.frames << " " << c.channels;
    }
    const std::vector<float> sound = noiseSamples(100, 1), quiet(100, 0.000999f);
    using AudioEditorLoopFinder::mismatch;
    EXPECT_FALSE(mismatch(sound, 0, 10, {20, 30}, 4));
    EXPECT_FALSE(mismatch(sound, 1, 10, {20, 20}, 4));
    EXPECT_FALSE(mismatch(sound, 1, 10, {20, 30}, 0));
    EXPECT_FALSE(mismatch(sound, 1, 100, {20, 30}, 4));
    EXPECT_FALSE(mismatch(quiet, 1, 50, {20, 30}, 4)) << "−60 dB";
}

TEST(LoopFinder, findsWhatTheDefinitionFinds) {
    const AudioEditorBuffer sounds[] = {
        note(1.3, 2, 44100, 220, 1), note(0.7, 1, 48000, 97.3, 2), note(1.1, 3, 8000, 311, 3),
        note(30, 1, 150, 11, 4),     noise(30'000, 2, 6),          inPieces(note(0.9, 2, 96000, 441, 7)),
    };
    for (const AudioEditorBuffer &sound : sounds)
        for (const LoopPoints points : {LoopPoints::anywhere, LoopPoints::atRisingZeroCrossings}) {
            NaiveLoopSearch::Search naive{sound.samples(), sound.channels(), sound.sampleRate(),
                                          points != LoopPoints::anywhere};
            const auto expected = naive.run();
            const auto found = analyze(sound, points);
            ASSERT_EQ(found.size(), expected.size()) << sound.sampleRate();
            for (std::size_t i = 0; i < found.size(); ++i) {
                EXPECT_EQ(found[i].loop, expected[i].loop) << sound.sampleRate() << " Hz, candidate " << i;
                EXPECT_NEAR(found[i].match, expected[i].match, 1e-6);
            }
        }
}

TEST(LoopFinder, loopsASteadyToneByWholePeriods) {
    for (const double period : {100.0, 37.5, 441.0}) {
        const auto found = analyze(sine(44'100, 44'100, period), LoopPoints::anywhere);
        ASSERT_FALSE(found.empty());
        for (const auto &proposal : found) {
            const double periods = double(proposal.loop.count()) / period;
            EXPECT_NEAR(periods, std::round(periods), 0.51 / period);
            EXPECT_GT(proposal.match, 0.999);
            EXPECT_GE(proposal.loop.count(), 4278) << "a tenth of what may be searched";
        }
    }
}

TEST(LoopFinder, findsNothingInWhatIsTooQuietTooShortOrNoSound) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> bad(44'100, nan);
    const AudioEditorBuffer sounds[] = {
        AudioEditorBuffer(),
        AudioEditorBuffer(std::vector<float>(44'100, 0.0f), 1, 44'100),
        AudioEditorBuffer(std::vector<float>(44'100, 0.000999f), 1, 44'100),  // −60 dB
        sine(3000, 44'100, 100),                                              // 40 ms behind the attack
        AudioEditorBuffer(bad, 1, 44'100),
        AudioEditorBuffer(std::vector<float>{1}, 1, 1),
    };
    for (const AudioEditorBuffer &sound : sounds)
        for (const LoopPoints points : {LoopPoints::anywhere, LoopPoints::atRisingZeroCrossings})
            EXPECT_TRUE(analyze(sound, points).empty()) << sound.frames();
    EXPECT_FALSE(analyze(sine(4000, 44'100, 100), LoopPoints::anywhere).empty());
    const AudioEditorBuffer above(std::vector<float>(44'100, 0.5f), 1, 44'100);
    EXPECT_TRUE(analyze(above, LoopPoints::atRisingZeroCrossings).empty()) << "a sound that crosses no zero";
}

TEST(LoopFinder, canBeCancelled) {
    Progress progress;
    progress.cancel();
    EXPECT_THROW(analyze(sine(44'100, 44'100, 100), LoopPoints::anywhere, &progress), Cancelled);
}

TEST(ZeroCrossing, walksFromCrossingToCrossing) {
    //                        0  1   2   3  4  5   6  7
    const std::vector<float> x{1, 1, -1, -1, 1, 0, -1, 1};
    const AudioEditorBuffer mono(x, 1, 8000);
    struct Case {
        std::int64_t from;
        int direction, count;
        std::optional<std::int64_t> found;
    };
    const Case cases[] = {
        {0, 1, 1, 2},  {2, 1, 1, 4},  {2, 5, 2, 6},    {0, 1, 0, 2},    {0, 1, -3, 2}, {0, 1, 99, 7},
        {7, 1, 1, {}}, {7, -1, 1, 6}, {4, -1, 9, 2},   {2, -1, 1, {}},  {8, -1, 1, 7}, {100, -1, 1, 7},
        {-9, 1, 1, 2}, {4, 0, 1, {}}, {100, 1, 1, {}}, {-9, -1, 1, {}},
    };
    for (const Case &c : cases)
        EXPECT_EQ(zeroCrossing(mono, c.from, c.direction, c.count), c.found) << c.from << " " << c.direction;
    EXPECT_FALSE(zeroCrossing(AudioEditorBuffer(std::vector<float>{1}, 1, 8000), 0, 1, 1));
    // The sum of the channels counts: here it is never below 0.
    EXPECT_FALSE(zeroCrossing(AudioEditorBuffer(std::vector<float>{1, -1, -1, 1, 2, 0}, 2, 8000), 0, 1, 1));
    std::vector<float> long_(5000, 1.0f);
    long_[4000] = -1;
    EXPECT_EQ(zeroCrossing(AudioEditorBuffer(long_, 1, 8000), 0, 1, 1), 4000);
    EXPECT_EQ(zeroCrossing(AudioEditorBuffer(long_, 1, 8000), 4999, -1, 2), 4000);
}

}  // namespace
}  // namespace kiv
