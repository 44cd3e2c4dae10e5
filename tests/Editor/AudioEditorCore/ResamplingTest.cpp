#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
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

// A tone as it comes out of a conversion: what is left of it, where, and what else there is beside it.
struct Heard {
    double gainDb, shiftFrames, restDb;  // the rest against the tone that went in
};

Heard heard(double fromRate, double toRate, double hertz) {
    constexpr std::int64_t made = 16'384, margin = 4096;
    const auto in = sine(std::llround(double(made) * fromRate / toRate), hertz, fromRate);
    const auto out = AudioEditorOps::bandLimited({in}, fromRate, toRate, made)[0];
    const double w = 2 * std::numbers::pi * hertz / toRate;
    double cc = 0, ss = 0, cs = 0, xc = 0, xs = 0;
    for (std::int64_t i = margin; i < made - margin; ++i) {
        const double c = std::cos(w * double(i)), s = std::sin(w * double(i)), x = out[std::size_t(i)];
        cc += c * c, ss += s * s, cs += c * s, xc += x * c, xs += x * s;
    }
    const double det = cc * ss - cs * cs, a = (xc * ss - xs * cs) / det, b = (xs * cc - xc * cs) / det;
    double rest = 0;
    for (std::int64_t i = margin; i < made - margin; ++i) {
        const double toneThere = a * std::cos(w * double(i)) + b * std::sin(w * double(i));
        rest += std::pow(out[std::size_t(i)] - toneThere, 2) / double(made - 2 * margin);
    }
    return {20 * std::log10(std::hypot(a, b) / 0.5), std::atan2(a, b) / w, 10 * std::log10(rest / 0.125)};
}

double power(const std::vector<float> &x, std::size_t margin) {
    double sum = 0;
    for (std::size_t i = margin; i + margin < x.size(); ++i) sum += double(x[i]) * double(x[i]) / double(x.size() - 2 * margin);
    return sum;
}

// The bounds of a conversion fit for mastering, relative to the lower of both Nyquist frequencies: flat and in place below it,
// nothing of what lies above, and nothing new. Prints what is measured.
TEST(BandLimited, IsFitForMastering) {
    const double semitone = std::exp2(1 / 12.0);
    const std::pair<double, double> rates[] = {{44100, 48000},
                                               {48000, 44100},
                                               {44100, 96000},
                                               {96000, 44100},
                                               {8000, 44100},
                                               {44100, 8000},
                                               {44100 * std::pow(semitone, 3), 44100},
                                               {44100 * std::pow(semitone, -3.37), 44100},
                                               {88200, 44100}};
    for (const auto &[from, to] : rates) {
        const double nyquist = std::min(from, to) / 2;
        double ripple80 = 0, ripple90 = 0, shift = 0, images = -200, aliases = -200;
        for (double f = 0.01; f < 0.905; f += 0.0317) {
            const Heard h = heard(from, to, f * nyquist);
            double &ripple = f <= 0.8 ? ripple80 : ripple90;
            ripple = std::max(ripple, std::fabs(h.gainDb));
            shift = std::max(shift, std::fabs(h.shiftFrames));
            images = std::max(images, h.restDb);
        }
        for (double f = 1.1; f * nyquist < from / 2; f += 0.0417) {
            const auto out =
                AudioEditorOps::bandLimited({sine(40'000, f * nyquist, from)}, from, to, std::llround(40'000 * to / from));
            aliases = std::max(aliases, 10 * std::log10(power(out[0], out[0].size() / 4) / 0.125 + 1e-20));
        }
        std::printf("%8.1f to %7.1f Hz: ±%.5f dB to 0.80, ±%.5f dB to 0.90, %.6f frames off, images %.1f dB, aliases %.1f dB\n",
                    from, to, ripple80, ripple90, shift, images, aliases);
        EXPECT_LE(ripple80, 0.01);
        EXPECT_LE(ripple90, 0.1);
        EXPECT_LE(shift, 0.005);
        EXPECT_LE(images, -100);
        EXPECT_LE(aliases, -100);
    }
}

// A long sound is converted in sections; where they meet nothing is to be noticed.
TEST(WithSampleRate, IsTheSameInSectionsAsInOnePiece) {
    for (const auto &[from, to] : {std::pair{44100, 48000}, {48000, 44100}, {8000, 44100}, {96000, 8000}, {44100, 44099}}) {
        const auto x = noiseSamples(900'001, 3), y = noiseSamples(900'001, 4);
        std::vector<float> both;
        for (std::size_t i = 0; i < x.size(); ++i) both.insert(both.end(), {x[i], y[i]});
        const AudioEditorBuffer result = AudioEditorOps::withSampleRate(inPieces(AudioEditorBuffer(both, 2, from)), to);
        const std::int64_t count = result.frames();
        const auto whole = AudioEditorOps::bandLimited({x, y}, from, to, count);
        std::vector<float> channel(std::size_t(count), 0.0f);
        for (const std::int64_t c : {0, 1}) {
            result.copyChannel({0, count}, c, channel.data());
            EXPECT_LT(farthest(channel, whole[std::size_t(c)], 0), 3e-7f) << from << " to " << to;
        }
    }
}

TEST(Resampled, IsTheSplineAtEverySample) {
    const auto x = noiseSamples(50, 1);
    for (const double step : {0.25, 0.99, 1.0, 2.5, 49.0, 1000.0}) {
        const auto result = AudioEditorOps::resampled(x, step);
        ASSERT_EQ(result.size(), std::max<std::size_t>(std::size_t(std::llround(50 / step)), 1));
        for (std::size_t j = 0; j < result.size(); ++j) {
            const double q = step * double(j);
            const auto i = std::int64_t(q);
            const auto at = [&](std::int64_t k) { return x[std::size_t(std::clamp<std::int64_t>(k, 0, 49))]; };
            const float p0 = at(i - 1), p1 = at(i), p2 = at(i + 1), p3 = at(i + 2), u = float(q - double(i));
            const double a = -0.5 * p0 + 1.5 * p1 - 1.5 * p2 + 0.5 * p3, b = p0 - 2.5 * p1 + 2.0 * p2 - 0.5 * p3,
                         c = 0.5 * (p2 - p0);
            EXPECT_NEAR(result[j], ((a * u + b) * u + c) * u + p1, 1e-6);
        }
    }
    const std::vector<float> one{0.5f};
    EXPECT_EQ(AudioEditorOps::resampled(one, 2), one);
    for (const double step : {0.0, -1.0, std::nan("")}) EXPECT_EQ(AudioEditorOps::resampled(x, step), x);
}

}  // namespace
}  // namespace kiv
