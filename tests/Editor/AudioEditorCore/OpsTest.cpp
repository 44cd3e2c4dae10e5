#include "Editor/AudioEditorCore/AudioEditorOps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "TestSounds.h"

namespace kiv {
namespace {

using Samples = std::vector<float>;

AudioEditorBuffer sound(Samples samples, std::int64_t channels, std::int64_t rate = 44100) {
    return AudioEditorBuffer(samples, channels, rate);
}

// Every operation on a range, against its formula written out for one sample. The sound lies in three pieces, the ranges cross
// their borders and are longer than what one task works on; what is around the range must be the very same memory.
class RangeOps : public testing::TestWithParam<int> {
protected:
    template <class Expected>
    void check(const AudioEditorBuffer &result, FrameRange range, Expected expected) {
        const std::int64_t channels = sound_.channels();
        const Samples before = sound_.samples(), after = result.samples();
        ASSERT_EQ(after.size(), before.size());
        ASSERT_EQ(result.sampleRate(), sound_.sampleRate());
        EXPECT_EQ(result.sharedPrefix(sound_), range.lo);
        EXPECT_EQ(result.sharedSuffix(sound_), sound_.frames() - range.hi);
        Samples wanted = before;
        for (std::int64_t i = 0; i < range.count(); ++i)
            for (std::int64_t c = 0; c < channels; ++c)
                wanted[std::size_t((range.lo + i) * channels + c)] = expected(before, range, i, c);
        const auto differs = std::mismatch(after.begin(), after.end(), wanted.begin()).first - after.begin();
        ASSERT_EQ(differs, after.end() - after.begin()) << "range from " << range.lo << ", " << channels << " channels";
    }

    float input(const Samples &samples, FrameRange range, std::int64_t i, std::int64_t c) const {
        return samples[std::size_t((range.lo + i) * sound_.channels() + c)];
    }

    const AudioEditorBuffer sound_ = inPieces(noise(400'000, GetParam(), 3));
    const std::vector<FrameRange> ranges_{{0, 400'000}, {10'000, 10'255}, {60'000, 360'001}, {133'000, 134'000}};
};

TEST_P(RangeOps, ScaledIsTheProductIn64Bit) {
    for (const FrameRange range : ranges_)
        for (const double factor : {0.1, 1 / 3.0, -7.3, 1e-42})
            check(AudioEditorOps::scaled(sound_, range, factor), range,
                  [&](const Samples &in, FrameRange r, auto i, auto c) { return float(double(input(in, r, i, c)) * factor); });
}

TEST_P(RangeOps, SilencedIsZero) {
    for (const FrameRange range : ranges_)
        check(AudioEditorOps::silenced(sound_, range), range, [](const Samples &, FrameRange, auto, auto) { return 0.0f; });
}

TEST_P(RangeOps, ReversedTurnsWholeFrames) {
    for (const FrameRange range : ranges_)
        check(AudioEditorOps::reversed(sound_, range), range,
              [&](const Samples &in, FrameRange r, auto i, auto c) { return input(in, r, r.count() - 1 - i, c); });
}

TEST_P(RangeOps, PeakIsTheLargestMagnitude) {
    for (const FrameRange range : ranges_) {
        const Samples in = sound_.part(range).samples();
        const float loudest =
            std::fabs(*std::max_element(in.begin(), in.end(), [](float a, float b) { return std::fabs(a) < std::fabs(b); }));
        EXPECT_EQ(AudioEditorOps::peak(sound_, range), loudest);
        // Found wherever it stands, and either way up.
        for (const std::int64_t at : {range.lo, range.lo + range.count() / 2, range.hi - 1}) {
            const AudioEditorBuffer louder = AudioEditorOps::scaled(sound_, {at, at + 1}, -1000);
            const float expected = 1000 * AudioEditorOps::peak(sound_, {at, at + 1});
            EXPECT_FLOAT_EQ(AudioEditorOps::peak(louder, range), expected);
        }
    }
}

TEST_P(RangeOps, EmptyRangesChangeNothing) {
    for (const std::int64_t at : {std::int64_t(0), std::int64_t(77'777), sound_.frames()}) {
        const FrameRange empty{at, at};
        for (const auto &result : {AudioEditorOps::silenced(sound_, empty), AudioEditorOps::reversed(sound_, empty),
                                   AudioEditorOps::reversed(sound_, {at - (at > 0), at}), AudioEditorOps::fadeIn(sound_, empty),
                                   AudioEditorOps::fadeOut(sound_, empty), AudioEditorOps::scaled(sound_, empty, 2)})
            EXPECT_EQ(result.sharedPrefix(sound_), sound_.frames());
        EXPECT_EQ(AudioEditorOps::peak(sound_, empty), 0);
        EXPECT_TRUE(AudioEditorOps::slice(sound_, empty).isEmpty());
    }
}

TEST_P(RangeOps, SliceInsertAndRemoveMoveFrames) {
    const std::int64_t channels = sound_.channels();
    const FrameRange range{100'000, 300'000};
    const AudioEditorBuffer middle = AudioEditorOps::slice(sound_, range);
    EXPECT_EQ(middle, sound_.part(range));
    const AudioEditorBuffer rest = AudioEditorOps::removing(sound_, range);
    EXPECT_EQ(rest.frames(), 200'000);
    EXPECT_EQ(AudioEditorOps::inserting(rest, middle, 100'000), sound_);
    const AudioEditorBuffer other = noise(10, channels, 9).atRate(8000);
    EXPECT_EQ(AudioEditorOps::inserting(sound_, other, -5).part({0, 10}).samples(), other.samples());
    const AudioEditorBuffer behind = AudioEditorOps::inserting(sound_, other, 1'000'000);
    EXPECT_EQ(behind.part({400'000, 400'010}).samples(), other.samples());
    EXPECT_EQ(behind.sampleRate(), 44100);
}

INSTANTIATE_TEST_SUITE_P(Channels, RangeOps, testing::Values(1, 2, 3, 6));

TEST(Slice, OfAMomentDoesNotKeepTheWholeSoundInMemory) {
    const AudioEditorBuffer buffer = noise(100'000, 2, 1);
    EXPECT_EQ(AudioEditorOps::slice(buffer, {0, 1000}).sharedPrefix(buffer), 0);
    EXPECT_EQ(AudioEditorOps::slice(buffer, {0, 1000}), buffer.part({0, 1000}));
}

// The exact gain, in more digits than a double has.
long double exactGain(std::int64_t j, std::int64_t last) {
    return std::sin((long double)(j) / (long double)(last)*1.57079632679489661923L);
}

float ulp(float value) { return std::nextafter(std::fabs(value), std::numeric_limits<float>::infinity()) - std::fabs(value); }

struct FadeCase {
    std::int64_t channels, frames;
};
class Fades : public testing::TestWithParam<FadeCase> {};

TEST_P(Fades, FollowAQuarterSineWithinHalfAnUlp) {
    const auto [channels, frames] = GetParam();
    const AudioEditorBuffer buffer = inPieces(noise(frames, channels, 11));
    const Samples in = buffer.samples(), up = AudioEditorOps::fadeIn(buffer, {0, frames}).samples(),
                  down = AudioEditorOps::fadeOut(buffer, {0, frames}).samples();
    const std::int64_t last = std::max<std::int64_t>(frames - 1, 1);
    for (std::int64_t i = 0; i < frames; ++i)
        for (std::int64_t c = 0; c < channels; ++c) {
            const auto s = std::size_t(i * channels + c);
            const long double rising = in[s] * exactGain(i, last), falling = in[s] * exactGain(last - i, last);
            ASSERT_LE(std::fabs(up[s] - rising), 0.5000001L * ulp(up[s])) << i << " of " << frames;
            ASSERT_LE(std::fabs(down[s] - falling), 0.5000001L * ulp(down[s])) << i << " of " << frames;
            // The plain formula in 64-bit float differs from it only where the two round to either side.
            const double plain = std::sin((1 - double(i) / double(last)) * 1.5707963267948966);
            ASSERT_LE(std::fabs(down[s] - float(in[s] * plain)), ulp(down[s])) << i << " of " << frames;
        }
    for (std::int64_t c = 0; c < channels; ++c) {
        const auto first = std::size_t(c), end = std::size_t((frames - 1) * channels + c);
        EXPECT_EQ(up[first], 0);
        EXPECT_EQ(down[first], in[first]);
        EXPECT_EQ(up[end], frames == 1 ? 0 : in[end]);
        EXPECT_EQ(down[end], frames == 1 ? in[end] : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, Fades,
                         testing::Values(FadeCase{1, 1}, FadeCase{2, 1}, FadeCase{1, 2}, FadeCase{2, 3}, FadeCase{3, 255},
                                         FadeCase{1, 256}, FadeCase{2, 257}, FadeCase{6, 513}, FadeCase{1, 300'000},
                                         FadeCase{2, 700'001}, FadeCase{3, 100'000}));

TEST(Ops, SamplesThatAreNoNumbersDoNoHarm) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    const AudioEditorBuffer odd = sound({nan, 0.5f, -0.75f, nan, 0.25f, nan}, 2);
    EXPECT_EQ(AudioEditorOps::peak(odd, {0, 3}), 0.75f);
    EXPECT_EQ(AudioEditorOps::peak(sound(Samples(100, nan), 1), {0, 100}), 0);
    EXPECT_EQ(AudioEditorOps::peak(sound({0, -inf, nan}, 1), {0, 3}), inf);
    EXPECT_EQ(AudioEditorOps::reversed(odd, {0, 3}).sample(2, 1), 0.5f);
    EXPECT_EQ(AudioEditorOps::scaled(odd, {0, 3}, 2).sample(1, 0), -1.5f);
    EXPECT_EQ(AudioEditorOps::withSampleRate(sound(Samples(5000, nan), 2), 48000).frames(), 2721);
}

TEST(Gain, FactorIsTenToTheTwentieth) {
    EXPECT_EQ(AudioEditorOps::gainFactor(0), 1.0) << "nothing to do must be told exactly";
    EXPECT_DOUBLE_EQ(AudioEditorOps::gainFactor(20), 10.0);
    EXPECT_DOUBLE_EQ(AudioEditorOps::gainFactor(-6), std::pow(10.0, -0.3));
}

TEST(Mono, KeepsTheChosenChannelOrTheMean) {
    using enum AudioEditorMonoSource;
    const Samples stereo{1, 3, -5, 7}, three{1, 2, 4, 0.1f, 0.2f, 0.4f};
    const struct {
        AudioEditorBuffer in;
        AudioEditorMonoSource source;
        Samples out;
    } cases[] = {
        {sound(stereo, 2), left, {1, -5}},   {sound(stereo, 2), right, {3, 7}},
        {sound(stereo, 2), mix, {2, 1}},     {sound(three, 3), left, {1, 0.1f}},
        {sound(three, 3), right, {2, 0.2f}}, {sound(three, 3), mix, {7 * (1 / 3.0f), (0.1f + 0.2f + 0.4f) * (1 / 3.0f)}},
        {sound(stereo, 1), right, stereo},   {sound({1, 2}, 3), mix, {}},
        {sound({1, 2}, 3), left, {}},
    };
    for (const auto &c : cases) {
        const AudioEditorBuffer result = AudioEditorOps::mono(c.in, c.source);
        EXPECT_EQ(result.samples(), c.out) << c.in.channels() << " channels, " << storedText(c.source);
        EXPECT_EQ(result.channels(), 1);
        EXPECT_EQ(result.sampleRate(), 44100);
    }
}

TEST(WithChannels, GivesEveryChannelTheMean) {
    const Samples six{1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 12};
    const float first = 21 * (1 / 6.0f), second = 12 * (1 / 6.0f);
    EXPECT_EQ(AudioEditorOps::withChannels(sound(six, 6), 2).samples(), (Samples{first, first, second, second}));
    EXPECT_EQ(AudioEditorOps::withChannels(sound({1, 3}, 2), 3).samples(), (Samples{2, 2, 2}));
    EXPECT_EQ(AudioEditorOps::withChannels(sound({1, 3}, 1), 2).samples(), (Samples{1, 1, 3, 3}));
    EXPECT_EQ(AudioEditorOps::withChannels(sound({1, 3}, 2), 0).samples(), Samples{2});
    const AudioEditorBuffer same = sound(six, 6);
    EXPECT_EQ(AudioEditorOps::withChannels(same, 6).sharedPrefix(same), 2);
}

// Over pieces and tasks, each frame the plain sum in channel order times the reciprocal.
TEST(WithChannels, IsTheMeanIn32BitEverywhere) {
    for (const std::int64_t from : {2, 3, 6}) {
        const AudioEditorBuffer buffer = inPieces(noise(400'000, from, 5));
        const Samples in = buffer.samples(), out = AudioEditorOps::withChannels(buffer, 1).samples();
        ASSERT_EQ(out.size(), 400'000u);
        for (std::size_t f = 0; f < out.size(); ++f) {
            float sum = 0;
            for (std::int64_t c = 0; c < from; ++c) sum += in[f * std::size_t(from) + std::size_t(c)];
            ASSERT_EQ(out[f], sum * (1.0f / float(from))) << f;
        }
    }
}

TEST(SliceFaded, IsLinearAtBothEnds) {
    const struct {
        std::int64_t in, out;
        Samples gains;  // of 5 frames
    } cases[] = {
        {0, 0, {1, 1, 1, 1, 1}},
        {2, 0, {0, 0.5f, 1, 1, 1}},
        {0, 2, {1, 1, 1, 0.5f, 0}},
        {4, 2, {0, 0.25f, 0.5f, 0.75f * 0.5f, 0}},
        {5, 99, {0, 0.2f * 0.6f, 0.4f * 0.4f, 0.6f * 0.2f, 0}},
        {1, 1, {0, 1, 1, 1, 0}},
    };
    const AudioEditorBuffer buffer = noise(5, 2, 1);
    for (const auto &c : cases) {
        const AudioEditorBuffer result = AudioEditorOps::sliceFaded(buffer, c.in, c.out);
        for (std::int64_t i = 0; i < 5; ++i)
            for (std::int64_t ch = 0; ch < 2; ++ch)
                EXPECT_FLOAT_EQ(result.sample(i, ch), buffer.sample(i, ch) * c.gains[std::size_t(i)]) << c.in << ", " << c.out;
    }
    EXPECT_EQ(AudioEditorOps::sliceFaded(buffer, 0, 0).sharedPrefix(buffer), 5);
    EXPECT_TRUE(AudioEditorOps::sliceFaded(AudioEditorBuffer(2, 8000), 3, 3).isEmpty());
}

TEST(Inserting, BringsMaterialToTheChannelCountAndKeepsTheRate) {
    const AudioEditorBuffer stereo = sound({1, 2, 3, 4}, 2);
    EXPECT_EQ(AudioEditorOps::inserting(stereo, sound({9}, 1, 8000), 1), sound({1, 2, 9, 9, 3, 4}, 2));
    EXPECT_EQ(AudioEditorOps::inserting(sound({5}, 1), stereo, 0), sound({1.5f, 3.5f, 5}, 1));
}

}  // namespace
}  // namespace kiv
