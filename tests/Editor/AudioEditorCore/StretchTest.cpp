#include "Editor/AudioEditorCore/AudioEditorStretch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "TestSounds.h"

namespace kiv {
namespace {

using Planar = std::vector<std::vector<float>>;

// The stretch by similarity as one would write it down: everything in 32-bit float, one place after the other.
class PlainWsola {
public:
    PlainWsola(const Planar &in, std::int64_t out, std::int64_t rate)
        : in_(in), frames_(std::int64_t(in[0].size())), out_(out) {
        window_ = std::max<std::int64_t>(std::min(std::int64_t(double(rate) * 0.04) / 2 * 2, frames_), 16);
        tolerance_ = std::max<std::int64_t>(std::min(frames_ / 2, std::int64_t(double(rate) * 0.01)), 1);
        for (std::int64_t i = 0; i < frames_; ++i) {
            float sum = 0;
            for (const auto &channel : in) sum += channel[std::size_t(i)];
            guide_.push_back(in.size() == 1 ? sum : sum * (1.0f / float(in.size())));
        }
    }

    Planar result() {
        Planar result(in_.size(), std::vector<float>(std::size_t(out_), 0.0f));
        std::vector<float> norm(std::size_t(out_), 0.0f);
        const std::int64_t hop = window_ / 2;
        for (std::int64_t k = 0, start = 0; k * hop < out_; ++k) {
            if (k > 0) start = next(k, start);
            for (std::int64_t i = 0; i < std::min(out_ - k * hop, window_); ++i) {
                const auto to = std::size_t(k * hop + i);
                const auto weight = float(0.5 - 0.5 * std::cos(2 * std::numbers::pi * double(i) / double(window_)));
                norm[to] += weight;
                for (std::size_t c = 0; c < in_.size(); ++c) result[c][to] += weight * at(in_[c], start + i);
            }
        }
        for (std::size_t c = 0; c < in_.size(); ++c)
            for (std::size_t j = 0; j < norm.size(); ++j)
                if (norm[j] > 0 && norm[j] < 0.999f) result[c][j] /= norm[j];
        for (std::size_t c = 0; c < in_.size(); ++c) result[c][0] = in_[c][0];
        return result;
    }

private:
    static float at(const std::vector<float> &x, std::int64_t i) { return i < std::int64_t(x.size()) ? x[std::size_t(i)] : 0; }

    float dot(std::int64_t a, std::int64_t b) const {
        float sums[16] = {};
        for (std::int64_t i = 0; i < window_; ++i) sums[i % 16] += at(guide_, a + i) * at(guide_, b + i);
        for (int half = 8; half > 0; half /= 2)
            for (int k = 0; k < half; ++k) sums[k] += sums[k + half];
        return sums[0];
    }

    float score(std::int64_t place, std::int64_t wanted) const {
        return dot(place, wanted) / (std::sqrt(dot(place, place)) + 1e-9f);
    }

    std::int64_t next(std::int64_t k, std::int64_t previous) const {
        const std::int64_t hop = window_ / 2, last = std::max<std::int64_t>(frames_ - window_, 0);
        const double step = double(frames_) * double(hop) / double(out_);
        const std::int64_t nominal = std::clamp<std::int64_t>(std::llround(double(k) * step), 0, last);
        const std::int64_t lo = std::max<std::int64_t>(nominal - tolerance_, 0), hi = std::min(last, nominal + tolerance_);
        std::int64_t best = nominal;
        float most = std::numeric_limits<float>::lowest();
        const auto consider = [&](std::int64_t place) {
            if (const float s = score(place, previous + hop); s > most) most = s, best = place;
        };
        for (std::int64_t place = lo; place <= hi; place += 4) consider(place);
        for (std::int64_t coarse = best, place = std::max(coarse - 3, lo); place <= std::min(hi, coarse + 3); ++place)
            if (place != coarse) consider(place);
        return best;
    }

    const Planar &in_;
    std::vector<float> guide_;
    std::int64_t frames_, out_, window_ = 0, tolerance_ = 0;
};

float uniform(std::mt19937 &random) { return float(std::int32_t(random())) / 2147483648.0f; }

// Sounds that are hard to tell apart in one way or another: noise, many equal scores, a wave under a little noise, faint,
// silent in parts, a constant, strokes, next to nothing.
std::vector<float> oddSound(int kind, std::int64_t frames, std::mt19937 &random) {
    const double period = 5 + 200 * std::fabs(uniform(random));
    const float level = std::pow(10.0f, 6 * uniform(random) - 4);
    const auto wave = [&](std::int64_t i) { return float(std::sin(2 * std::numbers::pi * double(i) / period)); };
    const std::function<float(std::int64_t)> kinds[] = {
        [&](std::int64_t) { return uniform(random); },
        wave,
        [&](std::int64_t i) { return wave(i) + 0.001f * uniform(random); },
        [&](std::int64_t i) { return i % std::int64_t(period) < 3 ? 0.7f : 0.0f; },
        [&](std::int64_t) { return level * uniform(random); },
        [&](std::int64_t i) { return (i / 3000) % 2 == 0 ? 0.0f : uniform(random); },
        [&](std::int64_t) { return 0.25f; },
        [&](std::int64_t i) { return float(i % 4) * 0.125f; },
        [&](std::int64_t i) { return std::exp(-float(i % 1700) / 150) * uniform(random); },
        [&](std::int64_t) { return 1e-15f * uniform(random); },
    };
    std::vector<float> x;
    for (std::int64_t i = 0; i < frames; ++i) x.push_back(kinds[kind](i));
    return x;
}

TEST(Wsola, FindsWhatThePlainFormFinds) {
    std::mt19937 random(7);
    for (int round = 0; round < 320; ++round) {
        const auto lengths = round % 8 == 0 ? std::int64_t(60) : std::int64_t(round % 16 == 1 ? 40'000 : 4000);
        const std::int64_t frames = 2 + random() % lengths, rate = round % 32 == 3 ? 44100 : round % 3 == 0 ? 5513 : 8000;
        const double ratio = std::exp2(2 * double(uniform(random)));
        const std::int64_t out = std::max<std::int64_t>(std::llround(ratio * double(frames)), 1);
        Planar in;
        for (int c = 0; c < 1 + round % 3; ++c) in.push_back(oddSound(round % 10, frames, random));
        if (round % 40 == 39) in[0][std::size_t(frames / 2)] = std::numeric_limits<float>::quiet_NaN();
        if (round % 40 == 19) in[0][std::size_t(frames / 2)] = 1e25f;
        const Planar wanted = PlainWsola(in, out, rate).result(), got = AudioEditorOps::wsola(in, out, rate);
        for (std::size_t c = 0; c < in.size(); ++c) {
            const auto isSame = [](float x, float y) { return x == y || (std::isnan(x) && std::isnan(y)); };
            ASSERT_EQ(got[c].size(), std::size_t(out));
            const auto differs = std::mismatch(got[c].begin(), got[c].end(), wanted[c].begin(), wanted[c].end(), isSame);
            ASSERT_EQ(differs.first - got[c].begin(), out) << "round " << round << ", from " << frames << " frames at " << rate;
        }
    }
}

TEST(Wsola, OfTooLittleIsSilence) {
    EXPECT_TRUE(AudioEditorOps::wsola({}, 10, 44100).empty());
    EXPECT_EQ(AudioEditorOps::wsola({{0.5f}}, 3, 44100), (Planar{{0, 0, 0}}));
    EXPECT_EQ(AudioEditorOps::wsola({{1, 2}, {3, 4}}, 0, 44100), (Planar{{}, {}}));
}

struct CycleCase {
    std::int64_t frames, channels;
    int timePercent, cycle, semitones, cents;
};

// The stretch by cycles as it is defined, one sample after the other.
std::vector<float> plainCycles(const AudioEditorBuffer &in, const CycleCase &c) {
    const std::int64_t n = in.frames(), channels = in.channels();
    const double t = std::clamp(c.timePercent, 25, 400) / 100.0, p = AudioEditorOps::stretchPitchRatio(c.semitones, c.cents);
    const std::int64_t length = std::max<std::int64_t>(8, std::min<std::int64_t>(n, std::clamp(c.cycle, 50, 8000)));
    const std::int64_t fade =
        std::max<std::int64_t>(1, std::min<std::int64_t>(length / 2, std::llround(double(length) * 0.25)));
    const std::int64_t hop = length - fade, count = std::max<std::int64_t>(1, std::llround(t * double(n)));
    std::vector<float> out(std::size_t(count * channels), 0.0f);
    double x = 0;
    for (std::int64_t o = 0; o < count && x < double(n); o += hop, x += double(hop) / t)
        for (std::int64_t k = 0; k < length && o + k < count; ++k) {
            float weight = 1;
            if (o > 0 && k < fade) weight = (float(k) + 0.5f) / float(fade);
            if (k >= hop) weight = (float(fade - (k - hop)) - 0.5f) / float(fade);
            const double s = x + p * double(k);
            if (s > double(n - 1)) continue;
            const auto i = std::int64_t(s);
            const auto f = float(s - double(i));
            for (std::int64_t ch = 0; ch < channels; ++ch) {
                const float a = in.sample(i, ch), b = f == 0 ? 0 : in.sample(i + 1, ch);
                out[std::size_t((o + k) * channels + ch)] += weight * (f == 0 ? a : (1 - f) * a + f * b);
            }
        }
    return out;
}

TEST(TimeStretched, IsTheDefinitionSampleForSample) {
    const CycleCase cases[] = {
        {90'000, 2, 130, 1000, 0, 0},    {90'000, 1, 75, 333, 7, -13}, {200'000, 3, 400, 50, -12, 0},
        {50'000, 2, 100, 8000, 12, 100}, {3, 1, 400, 1000, 0, 0},      {2, 2, 50, 50, 3, 0},
        {700, 1, 25, 20, 0, 50},         {5000, 1, 10, 1, 20, 300},    {5000, 1, 1000, 9999, -20, -300},
    };
    for (const CycleCase &c : cases) {
        const AudioEditorBuffer sound = inPieces(noise(c.frames + 40, c.channels, 5));
        const FrameRange range{10, 10 + c.frames};
        const auto result = AudioEditorOps::timeStretched(sound, range, c.timePercent, c.cycle, c.semitones, c.cents);
        const auto wanted = plainCycles(sound.part(range), c);
        const std::int64_t made = std::int64_t(wanted.size()) / c.channels;
        ASSERT_EQ(result.frames(), made + 40);
        EXPECT_EQ(result.part({10, 10 + made}).samples(), wanted) << c.frames << " frames to " << c.timePercent << " %";
        EXPECT_EQ(result.part({0, 10}), sound.part({0, 10}));
        EXPECT_EQ(result.part({10 + made, 40 + made}), sound.part({10 + c.frames, 40 + c.frames}));
    }
}

TEST(StretchSettings, AreClampedAndTellTheNewLength) {
    const struct {
        StretchSettings settings;
        std::int64_t frames, after;
    } cases[] = {
        {{StretchMode::clean, 120}, 1001, 1201},  {{StretchMode::clean, 10}, 1000, 250},
        {{StretchMode::s950, 1000}, 1000, 4000},  {{StretchMode::s950, 25}, 2, 1},
        {{StretchMode::clean, 400}, 1, 1},        {{StretchMode::clean, 50}, 0, 0},
        {{StretchMode::clean, 100, 3}, 999, 999},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(stretchedFrames(c.settings, c.frames), c.after);
        const AudioEditorBuffer sound = noise(c.frames + 2, 2, 1);
        const AudioEditorBuffer result = AudioEditorOps::stretched(sound, {1, 1 + c.frames}, c.settings);
        EXPECT_EQ(result.frames(), c.after + 2);
        EXPECT_EQ(result.sampleRate(), 44100);
        EXPECT_EQ(leavesUnchanged(c.settings, c.frames), result.sharedPrefix(sound) == sound.frames());
    }
    EXPECT_EQ(clamped({StretchMode::s950, 0, 99, -999, 1}), (StretchSettings{StretchMode::s950, 25, 12, -100, 50}));
    EXPECT_TRUE(leavesUnchanged({StretchMode::clean, 100, 2, -200}, 99) == false) << "cents end at −100";
    EXPECT_TRUE(leavesUnchanged({StretchMode::s950, 100, 1, -100, 50}, 99));
    EXPECT_DOUBLE_EQ(AudioEditorOps::stretchPitchRatio(20, 0), 2);
    EXPECT_DOUBLE_EQ(AudioEditorOps::stretchPitchRatio(-12, -300), std::exp2(-13 / 12.0));
}

TEST(Stretched, SharesWhatIsAroundTheRange) {
    const AudioEditorBuffer sound = inPieces(noise(100'000, 2, 1));
    for (const StretchMode mode : {StretchMode::clean, StretchMode::s950}) {
        const auto result = AudioEditorOps::stretched(sound, {40'000, 60'000}, {mode, 150, -5, 20});
        EXPECT_EQ(result.frames(), 110'000);
        EXPECT_EQ(result.sharedPrefix(sound), 40'000);
        EXPECT_EQ(result.sharedSuffix(sound), 40'000);
    }
}

// How often the sound goes up through zero a second, by the first and the last time it does.
double pitchOf(const AudioEditorBuffer &sound) {
    const auto x = sound.samples();
    double first = -1, last = 0, count = -1;
    for (std::size_t i = 1; i < x.size(); ++i)
        if (x[i - 1] < 0 && x[i] >= 0) {
            last = double(i) - double(x[i]) / double(x[i] - x[i - 1]);
            if (first < 0) first = last;
            ++count;
        }
    return count / (last - first) * double(sound.sampleRate());
}

TEST(CleanStretched, MovesThePitchAndTheLengthAndNothingElse) {
    for (const auto &[percent, semitones] :
         {std::pair{50, 0}, {80, 0}, {120, 0}, {200, 0}, {400, 0}, {100, 3}, {100, -3}, {100, 12}, {100, -12}, {150, 7}})
        for (const double hertz : {110.0, 440.0, 3000.0}) {
            std::vector<float> x;
            for (int i = 0; i < 88'200; ++i) x.push_back(float(0.5 * std::sin(2 * std::numbers::pi * hertz * i / 44100)));
            const auto result =
                AudioEditorOps::cleanStretched(AudioEditorBuffer(x, 1, 44100), {0, 88'200}, percent, semitones, 0);
            ASSERT_EQ(result.frames(), 882 * percent);
            const auto middle = result.part({2000, result.frames() - 2000});
            EXPECT_NEAR(1200 * std::log2(pitchOf(middle) / hertz), 100 * semitones, 1) << percent << " %, " << hertz << " Hz";
            for (std::int64_t at = 0; at + 2205 <= middle.frames(); at += 2205) {
                double power = 0;
                for (const float s : middle.part({at, at + 2205}).samples()) power += double(s) * double(s) / 2205;
                EXPECT_NEAR(10 * std::log10(power / 0.125), 0, 0.35)
                    << percent << " %, " << semitones << ", " << hertz << " Hz";
            }
        }
}

// A stroke at the very start keeps its attack: the sound begins as it did.
TEST(CleanStretched, KeepsTheFirstAttackInPlace) {
    const auto firstLoud = [](const AudioEditorBuffer &sound) {
        const auto x = sound.samples();
        return std::find_if(x.begin(), x.end(), [](float s) { return std::fabs(s) > 0.25f; }) - x.begin();
    };
    std::vector<float> x = noiseSamples(66'150, 1);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] *= std::exp(-float(i % 11'025) / 1500);
    for (const auto &[percent, semitones] :
         {std::pair{50, 0}, {80, 0}, {120, 0}, {200, 0}, {100, 3}, {100, -3}, {100, 12}, {100, -12}}) {
        const auto result = AudioEditorOps::cleanStretched(AudioEditorBuffer(x, 1, 44100), {0, 66'150}, percent, semitones, 0);
        EXPECT_LE(firstLoud(result), 44) << percent << " %, " << semitones;
        EXPECT_GT(AudioEditorOps::peak(result, {0, 441}), 0.6f) << percent << " %, " << semitones;
    }
}

TEST(AutoCycle, IsAWholeNumberOfPeriodsNearAThousand) {
    const auto sine = [](double period, std::int64_t frames) {
        std::vector<float> x;
        for (std::int64_t i = 0; i < frames; ++i) x.push_back(float(std::sin(2 * std::numbers::pi * double(i) / period)));
        return AudioEditorBuffer(x, 1, 44100);
    };
    const AudioEditorBuffer spike = AudioEditorBuffer(std::vector<float>(20'000, 0.0f), 2, 44100);
    const struct {
        AudioEditorBuffer sound;
        int cycle;
    } cases[] = {{sine(100, 44'100), 1000},
                 {sine(90, 44'100), 990},
                 {sine(220, 44'100), 1100},
                 {sine(700, 44'100), 701},
                 {sine(50, 87), 1000},
                 {noise(44'100, 2, 1), 1000},
                 {spike, 1000}};
    for (const auto &c : cases) EXPECT_EQ(AudioEditorOps::autoCycle(c.sound, {0, c.sound.frames()}), c.cycle);
}

TEST(Stretched, CountsToTheEndAndStopsWhenCancelled) {
    const AudioEditorBuffer sound = noise(60'000, 2, 1);
    for (const auto &settings :
         {StretchSettings{StretchMode::clean, 150}, {StretchMode::clean, 100, 3}, {StretchMode::s950, 70}}) {
        Progress progress, cancelled;
        AudioEditorOps::stretched(sound, {0, 60'000}, settings, &progress);
        EXPECT_EQ(progress.fraction(), 1);
        cancelled.cancel();
        EXPECT_THROW(AudioEditorOps::stretched(sound, {0, 60'000}, settings, &cancelled), Cancelled);
    }
}

}  // namespace
}  // namespace kiv
