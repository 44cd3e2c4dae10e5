#include "Editor/AudioEditorCore/AudioEditorSlicer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "Editor/AudioEditorCore/TestSounds.h"

namespace kiv {
namespace {

namespace Slicer = AudioEditorSlicer;
using Slices = std::vector<FrameRange>;

// Silence with bursts of noise that die away, each from a frame on.
struct Burst {
    std::int64_t at;
    float level;
    double decay = 0.9985;  // a frame
};

AudioEditorBuffer bursts(std::int64_t frames, std::int64_t channels, const std::vector<Burst> &all, float background = 0) {
    std::vector<float> samples = noiseSamples(frames * channels, 3);
    std::vector<float> gains(std::size_t(frames), background);
    for (const Burst &burst : all) {
        double gain = burst.level;
        for (std::int64_t f = burst.at; f < frames; ++f, gain *= burst.decay) gains[std::size_t(f)] += float(gain);
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        float &x = samples[i];
        x = (x < 0 ? -0.6f : 0.6f) + 0.4f * x;  // no sample is small by chance
        x *= gains[i / std::size_t(channels)];
    }
    return AudioEditorBuffer(samples, channels, 44'100);
}

Slices transients(const AudioEditorBuffer &sound, Slicer::TransientSettings settings = {}) {
    return Slicer::transients(sound, Slicer::Energy(sound), settings);
}

TEST(SlicerEnergy, isThatOfTheLoudestChannelOfEachHop) {
    for (const std::int64_t channels : {1, 2, 3, 16})
        for (const std::int64_t frames : {1, 127, 128, 40'000}) {
            const AudioEditorBuffer sound = inPieces(noise(frames, channels, 8));
            const Slicer::Energy energy(sound);
            const std::vector<float> x = sound.samples();
            ASSERT_EQ(energy.hops.size(), std::size_t((frames + 127) / 128));
            for (std::int64_t i = 0; i < std::int64_t(energy.hops.size()); ++i) {
                double hop = 0, edge = 0;
                const std::int64_t first = i * 128, end = std::min(first + 128, frames);
                for (std::int64_t c = 0; c < channels; ++c) {
                    double square = 0, difference = 0;
                    for (std::int64_t f = first; f < end; ++f) {
                        const double now = x[std::size_t(f * channels + c)];
                        square += now * now;
                        if (f > 0) difference += std::pow(now - double(x[std::size_t((f - 1) * channels + c)]), 2);
                    }
                    hop = std::max(hop, square / double(end - first));
                    edge = std::max(edge, difference / double(end - first));
                }
                EXPECT_NEAR(energy.hops[std::size_t(i)], hop, 1e-6 * hop) << i;
                EXPECT_NEAR(energy.edges[std::size_t(i)], edge, 1e-6 * edge + 1e-12) << i;
            }
        }
    EXPECT_TRUE(Slicer::Energy(AudioEditorBuffer()).hops.empty());
}

TEST(EnergyWindows, meanOverWhatFollowsAndWhatCameBefore) {
    const Slicer::EnergyWindows windows({4, 0, 2, 6, 8, 10, 12, 14, 16, 18, 20}, 3, 2);
    EXPECT_EQ(windows.sums.back(), 110);
    EXPECT_EQ(windows.level[0], 2);
    EXPECT_EQ(windows.level[9], 19) << "shortened at the end";
    EXPECT_EQ(windows.level[10], 20);
    EXPECT_NEAR(windows.floor, 8.0 / 3, 1e-12) << "the second lowest of eleven";
    EXPECT_EQ(windows.loudest, 20);
    EXPECT_EQ(windows.before(2), 2);
    EXPECT_NEAR(windows.before(1), (4 + windows.floor) / 2, 1e-12);
    EXPECT_EQ(Slicer::EnergyWindows(std::vector<float>(20, 0.0f), 3, 2).floor, 1e-13);
}

TEST(Transients, beginAtTheAttackLessThePreRoll) {
    for (const std::int64_t channels : {1, 2}) {
        const AudioEditorBuffer sound = bursts(44'100, channels, {{5000, 0.5f}, {15'001, 0.9f}, {30'127, 0.2f}});
        EXPECT_THAT(transients(sound), testing::ElementsAre(testing::Field(&FrameRange::lo, 5000 - 220),
                                                            testing::Field(&FrameRange::lo, 15'001 - 220),
                                                            testing::Field(&FrameRange::lo, 30'127 - 220)));
        EXPECT_EQ(transients(sound, {.preRollMs = 0}).at(1).lo, 15'001);
        EXPECT_EQ(transients(sound, {.preRollMs = 100})[1].lo, 15'001 - 4410);
    }
    EXPECT_EQ(transients(bursts(9000, 1, {{100, 0.5f}}))[0].lo, 0) << "not before the sound";
    EXPECT_EQ(transients(bursts(9000, 1, {{0, 0.5f}}))[0].lo, 0);
}

TEST(Transients, takeSofterHitsTheMoreSensitiveTheyAre) {
    // Hits that rise by some 5, 11 and 19 dB above a steady noise.
    const AudioEditorBuffer sound =
        bursts(60'000, 1, {{10'000, 0.01f, 0.999}, {25'000, 0.03f, 0.999}, {40'000, 0.09f, 0.999}}, 0.01f);
    EXPECT_EQ(transients(sound, {.sensitivity = 0}).size(), 0u);
    EXPECT_EQ(transients(sound, {.sensitivity = 50}).size(), 1u);
    EXPECT_EQ(transients(sound, {.sensitivity = 80}).size(), 2u);
    EXPECT_EQ(transients(sound, {.sensitivity = 100}).size(), 3u);
    EXPECT_EQ(transients(sound, {.sensitivity = 500}), transients(sound, {.sensitivity = 100}));
    const AudioEditorBuffer quiet = bursts(60'000, 1, {{10'000, 1}, {40'000, 0.0005f}});
    EXPECT_EQ(transients(quiet, {.sensitivity = 100}).size(), 1u) << "66 dB under the loudest";
}

TEST(Transients, areFoundAtEveryTempoToAMillisecond) {
    for (int bpm = 60; bpm <= 200; bpm += 10) {
        std::vector<Burst> hits;  // eighths, each second one 18 dB softer
        for (int k = 0; k < 16; ++k) hits.push_back({5000 + k * 44'100 * 30 / bpm, k % 2 ? 0.1f : 0.8f, 0.9985});
        const Slices found = transients(bursts(5000 + 17 * 44'100 * 30 / bpm, 2, hits, 0.001f), {.preRollMs = 0});
        ASSERT_EQ(found.size(), hits.size()) << bpm;
        for (std::size_t k = 0; k < hits.size(); ++k)
            EXPECT_NEAR(double(found[k].lo), double(hits[k].at), 44) << bpm << " " << k;
    }
}

TEST(Transients, endWhereTheSoundHasFallenOrTheNextHitIs) {
    const AudioEditorBuffer sound = bursts(60'000, 1, {{10'000, 0.8f, 0.999}, {20'000, 0.8f, 1.0}, {40'000, 0.8f, 1.0}});
    const Slices slices = transients(sound, {.sensitivity = 30});
    ASSERT_EQ(slices.size(), 2u) << "the third does not rise above what rings on";
    // 20 dB take 2301 frames; windows of 10 ms and hops make it a little later.
    EXPECT_NEAR(double(transients(sound, {.tailDb = -20})[0].hi), 10'000 + 2301, 3 * 384 + 128);
    EXPECT_LE(slices[0].hi, slices[1].lo);
    EXPECT_EQ(slices[1].hi, 60'000);
    const AudioEditorBuffer noisy = bursts(60'000, 1, {{10'000, 0.8f, 0.999}}, 0.008f);
    const FrameRange inNoise = transients(noisy, {.tailDb = -120}).at(0);
    EXPECT_LT(inNoise.hi, 20'000) << "it is over once it has fallen into the noise";
}

TEST(Transients, lengthIsAShareOfWhatWasFoundUpToTheNext) {
    const AudioEditorBuffer sound = bursts(44'100, 1, {{5000, 0.5f, 0.998}, {20'000, 0.5f, 0.998}, {30'000, 0.5f, 0.998}});
    const Slices whole = transients(sound);
    ASSERT_EQ(whole.size(), 3u);
    const auto scaled = [&](int percent) { return transients(sound, {.lengthPercent = percent}); };
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(scaled(50)[i], (FrameRange{whole[i].lo, whole[i].lo + (whole[i].count() + 1) / 2}));
        EXPECT_EQ(scaled(0)[i].count(), 1);
        EXPECT_EQ(scaled(500)[i].hi, i < 2 ? whole[i + 1].lo : 44'100);
    }
    // Hits nearer to each other than the pre-roll part it between them; no slice is empty and none overlaps.
    const AudioEditorBuffer dense =
        bursts(44'100, 2, {{5000, 0.1f, 0.98}, {6500, 0.4f, 0.98}, {8000, 0.9f, 0.98}, {9500, 0.9f, 0.98}});
    const Slices near = transients(dense, {.sensitivity = 100, .preRollMs = 100, .lengthPercent = 500});
    ASSERT_GE(near.size(), 4u);
    for (std::size_t i = 0; i + 1 < near.size(); ++i) EXPECT_TRUE(!near[i].isEmpty() && near[i].hi <= near[i + 1].lo);
}

TEST(Transients, thereAreNoneInSilenceAndOnlyForTheSoundsOwnEnergy) {
    const AudioEditorBuffer silence(std::vector<float>(10'000, 0.0f), 1, 44'100), sound = bursts(10'000, 1, {{5000, 0.5f}});
    EXPECT_TRUE(transients(silence).empty());
    EXPECT_TRUE(transients(AudioEditorBuffer()).empty());
    EXPECT_TRUE(Slicer::transients(sound, Slicer::Energy(silence.part({0, 9000})), {}).empty());
    EXPECT_EQ(transients(sound).size(), 1u);
}

// Levels given to stretches of a sound: so many frames each, by turns silent and at 0.5.
Slices stripped(const std::vector<std::int64_t> &lengths, int thresholdDb = -30, int minSilenceMs = 50, int rate = 10'000) {
    std::vector<float> samples;
    float level = 0;
    for (const std::int64_t length : lengths) {
        for (std::int64_t i = 0; i < length; ++i) samples.insert(samples.end(), {0.0f, i % 2 ? level : -level});
        level = 0.5f - level;
    }
    const AudioEditorBuffer sound(samples, 2, rate);
    return Slicer::detect(sound, AudioEditorPeaks(sound), thresholdDb, minSilenceMs);
}

TEST(StripSilence, keepsWhatReachesTheThreshold) {
    struct Case {
        const char *what;
        Slices found, expected;
    };
    const Case cases[] = {
        {"padded by 5 and 30 ms", stripped({1000, 1000, 2000}), {{950, 2300}}},
        {"inside the sound only", stripped({20, 1000, 200}), {{0, 1220}}},
        {"a dip below the minimum", stripped({1000, 1000, 499, 1000, 1000}), {{950, 3799}}},
        {"a silence of the minimum", stripped({1000, 1000, 500, 1000, 1000}), {{950, 2300}, {2450, 3800}}},
        {"no end beyond the next padded start",
         stripped({1000, 1000, 600, 1000, 2000}, -30, 10, 44'100),
         {{780, 2380}, {2380, 4923}}},
        {"no start before the end before",
         stripped({1000, 1000, 800, 1000, 1000}, -30, 3, 192'000),
         {{40, 2000}, {2000, 4800}}},
        {"no part of 2 ms", stripped({1000, 20, 1000}), {}},
        {"one of more", stripped({1000, 21, 1000}), {{950, 1321}}},
        {"parts are merged before the short ones go", stripped({1000, 15, 10, 15, 1000}), {{950, 1340}}},
        {"just loud enough", stripped({1000, 1000, 1000}, -6), {}},
        {"less is enough", stripped({1000, 1000, 1000}, -7), {{950, 2300}}},
        {"silence", stripped({3000}), {}},
        {"nothing", stripped({}), {}},
    };
    for (const Case &c : cases) EXPECT_EQ(c.found, c.expected) << c.what;
}

TEST(Grid, cutsEqualParts) {
    struct Case {
        std::int64_t frames;
        int parts;
        std::int64_t offset;
        int percent;
        Slices expected;
    };
    const Case cases[] = {
        {10, 4, 0, 100, {{0, 2}, {2, 5}, {5, 7}, {7, 10}}},
        {10, 2, 3, 100, {{3, 8}, {8, 10}}},
        {10, 2, -3, 100, {{0, 2}, {2, 10}}},
        {10, 2, -5, 100, {{0, 10}}},  // what is left of the first part is nothing
        {10, 2, 99, 100, {}},
        {100, 2, 0, 25, {{0, 13}, {50, 63}}},  // 12.5 frames
        {100, 2, 0, 0, {{0, 1}, {50, 51}}},
        {0, 16, 0, 100, {}},
        {10, 0, 0, 100, {}},
    };
    for (const Case &c : cases) EXPECT_EQ(Slicer::grid(c.frames, c.parts, c.offset, c.percent), c.expected) << c.offset;
    const Slices frames = Slicer::grid(10, 16, 0, 100);
    ASSERT_EQ(frames.size(), 10u);
    for (const FrameRange slice : frames) EXPECT_EQ(slice.count(), 1);
}

TEST(SlicerMode, isStoredAsText) {
    for (const Slicer::Mode mode : Slicer::allModes) EXPECT_EQ(Slicer::modeFromText(Slicer::storedText(mode)), mode);
    EXPECT_EQ(Slicer::storedText(Slicer::Mode::stripSilence), "stripSilence");
    EXPECT_FALSE(Slicer::modeFromText("Grid"));
}

}  // namespace
}  // namespace kiv
