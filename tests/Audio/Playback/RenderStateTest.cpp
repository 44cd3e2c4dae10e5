#include "Audio/Playback/RenderState.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <mutex>
#include <random>

#include "Audio/Playback/Ramp.h"

namespace kiv {
namespace {

using testing::Each;
using testing::ElementsAre;

State playing(AudioEditorBuffer samples, FrameRange range) {
    State state;
    state.samples = std::move(samples);
    state.lower = state.position = range.lo;
    state.upper = range.hi;
    state.playing = true;
    return state;
}

std::vector<float> rendered(RenderShared &shared, std::int64_t frames, int channels = 1) {
    std::vector<float> out(std::size_t(frames * channels), -1.0f);
    render(shared, out, channels);
    return out;
}

std::vector<float> rendered(const State &state, std::int64_t frames, int channels = 1) {
    RenderShared shared;
    shared.state = state;
    return rendered(shared, frames, channels);
}

TEST(RenderState, OneShotFades) {
    State state = playing(ramp(400), {100, 200});
    state.fadeIn = 10;
    state.fadeOut = 20;
    const auto out = rendered(state, 110);
    const std::map<std::int64_t, double> gains{{100, 0}, {101, 0.1},  {105, 0.5}, {109, 0.9}, {110, 1},
                                               {179, 1}, {180, 0.95}, {189, 0.5}, {199, 0}};
    for (const auto &[frame, gain] : gains)
        EXPECT_FLOAT_EQ(out[std::size_t(frame - 100)], float(gain * rampSample(frame))) << "frame " << frame;
}

TEST(RenderState, TheLoopJointTurnsIntoWhatLeadsIntoTheLoopsStart) {
    State state = playing(ramp(3000), {1000, 2000});
    state.loop = true;
    state.crossfade = 100;
    const auto out = rendered(state, 2500);
    struct Case {
        std::int64_t at;  // frames after the start of playing
        double own;
        std::int64_t frame;
        double cross;
        std::int64_t crossFrame;
    };
    const Case cases[] = {
        {0, 1, 1000, 0, 0},     {899, 1, 1899, 0, 0},  {900, 0.99, 1900, 0.01, 900},  {950, 0.49, 1950, 0.51, 950},
        {999, 0, 1999, 1, 999}, {1000, 1, 1000, 0, 0}, {1950, 0.49, 1950, 0.51, 950}, {2499, 1, 1499, 0, 0}};
    for (const Case &c : cases)
        EXPECT_FLOAT_EQ(out[std::size_t(c.at)], float(c.own * rampSample(c.frame) + c.cross * rampSample(c.crossFrame)))
            << "after " << c.at;
}

TEST(RenderState, EqualPowerAddsUpToOneInSquares) {
    std::vector<float> samples(2000, 0.0f);
    std::fill(samples.begin(), samples.begin() + 1000, 1.0f);  // before the loop: the cross gain alone is heard
    State state = playing(AudioEditorBuffer(samples, 1, 44100), {1000, 2000});
    state.loop = state.equalPower = true;
    state.crossfade = 100;
    const auto cross = rendered(state, 1000);
    for (float &sample : samples) sample = 1.0f - sample;  // now the own gain alone
    state.samples = AudioEditorBuffer(samples, 1, 44100);
    const auto own = rendered(state, 1000);
    EXPECT_FLOAT_EQ(cross[949], float(std::sqrt(0.5)));
    EXPECT_FLOAT_EQ(cross[999], 1.0f);
    for (std::size_t i = 900; i < 1000; ++i) EXPECT_NEAR(own[i] * own[i] + cross[i] * cross[i], 1.0, 1e-6) << i;
}

TEST(RenderState, JointsAtTheEdges) {
    struct Case {
        const char *what;
        FrameRange range;
        std::int64_t start;
        bool loop;
        std::int64_t at;
        double expected;
    };
    const Case cases[] = {
        {"a one-shot has no joint", {1000, 2000}, 1000, false, 950, rampSample(1950)},
        {"frame 0 stands for what is before", {50, 1000}, 50, true, 850, 0.99 * rampSample(900) + 0.01 * rampSample(0)},
        {"half way to the sound's first frame", {50, 1000}, 50, true, 909, 0.4 * rampSample(959) + 0.6 * rampSample(9)},
        {"a loop shorter than its crossfade", {1000, 1050}, 1000, true, 0, 0.49 * rampSample(1000) + 0.51 * rampSample(950)},
        {"starting before the loop", {1000, 2000}, 400, true, 300, rampSample(700)},
        {"starting in the joint", {1000, 2000}, 1950, true, 0, 0.49 * rampSample(1950) + 0.51 * rampSample(950)},
        {"starting at the loop's end", {1000, 2000}, 2000, true, 0, rampSample(1000)},
    };
    for (const Case &c : cases) {
        State state = playing(ramp(2500), c.range);
        state.position = c.start;
        state.loop = c.loop;
        state.crossfade = 100;
        EXPECT_FLOAT_EQ(rendered(state, 1000)[std::size_t(c.at)], float(c.expected)) << c.what;
    }
}

TEST(RenderState, BeforeARangeThatFadesInThereIsSilence) {
    State state = playing(ramp(400), {100, 200});
    state.position = 50;
    state.fadeIn = 10;
    const auto out = rendered(state, 60);
    EXPECT_THAT(std::span(out).first(51), Each(0.0f));
    EXPECT_FLOAT_EQ(out[55], 0.5f * rampSample(105));
}

TEST(RenderState, OutputChannelsTakeTheirSourceChannelOrTheLast) {
    struct Case {
        std::int64_t fileChannels;
        int outputChannels;
        std::vector<float> frame;
    };
    const Case cases[] = {{1, 1, {4}}, {1, 2, {4, 4}},      {2, 2, {4, 100004}},
                          {2, 1, {4}}, {6, 2, {4, 100004}}, {2, 3, {4, 100004, 100004}}};
    for (const Case &c : cases)
        for (const std::int64_t fadeIn : {0, 1}) {  // untouched and shaped frames
            State state = playing(ramp(100, c.fileChannels), {2, 50});
            state.fadeIn = fadeIn;
            const auto out = rendered(state, 2, c.outputChannels);
            const std::vector<float> second(out.begin() + c.outputChannels, out.end());
            EXPECT_EQ(second, c.frame) << c.fileChannels << " to " << c.outputChannels;
        }
}

TEST(RenderState, HowAndInWhatBlocksASoundIsStoredAndAskedForDoesNotShow) {
    std::mt19937 random(1);
    const auto below = [&](std::int64_t n) { return std::int64_t(random() % std::uint32_t(n)); };
    const AudioEditorBuffer whole = ramp(6000, 2), parts = pieced(whole, 97);
    for (int round = 0; round < 100; ++round) {
        State state = playing(whole, {below(2000), 2001 + below(3999)});
        state.position = below(state.upper);
        state.loop = random() % 2;
        state.equalPower = random() % 2;
        state.crossfade = below(3) * below(900);
        state.fadeIn = below(3) * below(300);
        state.fadeOut = below(3) * below(300);
        RenderShared frameByFrame, inBlocks;
        frameByFrame.state = state;
        inBlocks.state = state;
        inBlocks.state.samples = parts;
        for (int block = 0; block < 12; ++block) {
            const std::int64_t frames = 1 + below(2048);
            const auto out = rendered(inBlocks, frames, 2);
            std::vector<float> expected;
            for (std::int64_t i = 0; i < frames; ++i)
                for (const float sample : rendered(frameByFrame, 1, 2)) expected.push_back(sample);
            ASSERT_EQ(out, expected) << "round " << round << ", block " << block;
            ASSERT_EQ(inBlocks.state.position, frameByFrame.state.position);
        }
    }
}

TEST(RenderState, AOneShotEndsInSilenceAndSaysSo) {
    RenderShared shared;
    shared.state = playing(ramp(400), {100, 103});
    EXPECT_THAT(rendered(shared, 3), ElementsAre(101, 102, 103));
    EXPECT_EQ(shared.position, 103);
    EXPECT_EQ(shared.finished, 0) << "not before it is asked for more";
    EXPECT_THAT(rendered(shared, 3), Each(0.0f));
    EXPECT_EQ(shared.finished, 1);
    EXPECT_FALSE(shared.state.playing);

    shared.state = playing(ramp(400), {100, 103});
    EXPECT_THAT(rendered(shared, 5), ElementsAre(101, 102, 103, 0, 0));
}

TEST(RenderState, SilentWithoutAnythingToPlay) {
    const State idle;
    State stopped = playing(ramp(10), {0, 10});
    stopped.playing = false;
    const State nothing = playing(ramp(10), {5, 5});
    for (const State &state : {idle, stopped, nothing}) EXPECT_THAT(rendered(state, 4, 2), Each(0.0f));
}

TEST(RenderState, OnlyWhatIsNoNumberIsChanged) {
    using Limits = std::numeric_limits<float>;
    // clang-format off
    const std::vector<float> samples{Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max(), 1e30f, -1.5f,
                                     Limits::denorm_min(), -0.0f, 0.1f};
    // clang-format on
    for (const std::size_t copies : {1, 5}) {  // too few and enough for the wide loop
        std::vector<float> sound;
        for (std::size_t i = 0; i < copies; ++i) sound.insert(sound.end(), samples.begin(), samples.end());
        const auto out =
            rendered(playing(AudioEditorBuffer(sound, 1, 44100), {0, std::int64_t(sound.size())}), std::int64_t(sound.size()));
        for (std::size_t i = 0; i < out.size(); ++i) {
            const float expected = std::isfinite(sound[i]) ? sound[i] : 0.0f;
            EXPECT_EQ(std::bit_cast<std::uint32_t>(out[i]), std::bit_cast<std::uint32_t>(expected)) << i;
        }
    }
}

TEST(RenderState, PeakIsTheLargestMagnitudeOfAllCalls) {
    for (const std::size_t at : {0, 7, 31, 32, 36}) {
        std::vector<float> samples(37, 0.25f);
        samples[at] = -0.75f;
        RenderShared shared;
        shared.state = playing(AudioEditorBuffer(samples, 1, 44100), {0, 37});
        rendered(shared, 37);
        EXPECT_EQ(shared.peak, 0.75f) << at;
    }
    RenderShared shared;
    shared.state = playing(ramp(100), {0, 100});
    shared.peak = 30;
    rendered(shared, 20);
    EXPECT_EQ(shared.peak, 30);
    rendered(shared, 20);
    EXPECT_EQ(shared.peak, 40);
}

TEST(RenderState, ABusyPeakIsDeliveredLater) {
    RenderShared shared;
    shared.state = playing(ramp(100), {0, 20});
    shared.state.loop = true;
    {
        const std::lock_guard busy(shared.peakLock);
        EXPECT_EQ(rendered(shared, 20)[4], 5) << "the sound goes on";
    }
    EXPECT_EQ(shared.peak, 0);
    rendered(shared, 5);
    EXPECT_EQ(shared.peak, 20);
    EXPECT_EQ(shared.state.peakCarry, 0);
}

TEST(RenderState, ABusyStateIsOneCallOfSilence) {
    RenderShared shared;
    shared.state = playing(ramp(100), {0, 100});
    {
        const std::lock_guard busy(shared.stateLock);
        EXPECT_THAT(rendered(shared, 8), Each(0.0f));
    }
    EXPECT_EQ(rendered(shared, 1)[0], 1);
    EXPECT_TRUE(shared.stateLock.try_lock()) << "left free";
}

}  // namespace
}  // namespace kiv
