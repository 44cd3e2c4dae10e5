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

// The next output frame as it is defined: the range's fades, and the loop's joint with what leads into its start, where the
// sound's first frame stands for what would be before it.
std::vector<double> plainFrame(State &s, int outputs) {
    std::vector<double> frame(std::size_t(outputs), 0.0);
    if (s.position >= s.upper && s.loop) s.position = s.lower;
    if (s.position >= s.upper) return frame;
    const std::int64_t joint = s.upper - s.crossfade, into = s.position - joint, from = s.position - s.lower;
    double own = 1, cross = 0;
    if (s.loop && s.crossfade > 0 && into >= 0) {
        const double t = double(into + 1) / double(s.crossfade);
        cross = s.equalPower ? std::sin(t * 3.14159265358979 / 2) : t;
        own = s.equalPower ? std::cos(t * 3.14159265358979 / 2) : 1 - t;
    }
    const std::int64_t left = s.upper - 1 - s.position;
    if (s.fadeIn > 0 && from < s.fadeIn) own *= double(std::max<std::int64_t>(from, 0)) / double(s.fadeIn);
    if (s.fadeOut > 0 && left < s.fadeOut) own *= double(left) / double(s.fadeOut);
    for (std::size_t k = 0; k < frame.size(); ++k) {
        const auto channel = std::min(std::int64_t(k), s.samples.channels() - 1);
        frame[k] = own * double(s.samples.sample(s.position, channel));
        if (cross > 0)
            frame[k] += cross * double(s.samples.sample(std::max<std::int64_t>(s.lower - s.crossfade + into, 0), channel));
    }
    ++s.position;
    return frame;
}

TEST(RenderState, IsTheDefinitionHoweverASoundIsStoredAndAskedFor) {
    std::mt19937 random(1);
    const auto below = [&](std::int64_t n) { return std::int64_t(random() % std::uint32_t(n)); };
    const AudioEditorBuffer wholes[] = {ramp(6000), ramp(6000, 2), ramp(6000, 6)};
    for (int round = 0; round < 200; ++round) {
        const AudioEditorBuffer &whole = wholes[below(3)];
        const int outputs = 1 + int(below(3));
        State plain = playing(whole, {below(2000), 2001 + below(round % 4 ? 3999 : 99)});
        plain.position = below(plain.upper + 1);
        plain.loop = random() % 2;
        plain.equalPower = random() % 2;
        plain.crossfade = below(3) * below(900);
        plain.fadeIn = below(3) * below(300);
        plain.fadeOut = below(3) * below(300);
        RenderShared frameByFrame, inBlocks;
        frameByFrame.state = inBlocks.state = plain;
        inBlocks.state.samples = pieced(whole, 97);
        for (int block = 0; block < 8; ++block) {
            const std::int64_t frames = 1 + below(2048);
            const auto out = rendered(inBlocks, frames, outputs);
            for (std::int64_t i = 0; i < frames; ++i) {
                const auto single = rendered(frameByFrame, 1, outputs);
                const auto wanted = plainFrame(plain, outputs);
                for (std::size_t k = 0; k < wanted.size(); ++k) {
                    ASSERT_EQ(out[std::size_t(i) * wanted.size() + k], single[k]) << "round " << round << ", block " << block;
                    ASSERT_NEAR(double(single[k]), wanted[k], 1e-6 * std::fabs(wanted[k]) + 1e-2) << "round " << round;
                }
            }
            ASSERT_EQ(inBlocks.state.position, plain.position);
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
