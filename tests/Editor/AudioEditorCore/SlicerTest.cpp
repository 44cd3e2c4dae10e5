#include "Editor/AudioEditorCore/AudioEditorSlicer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

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

// The hits as they are defined, in decibels and one frame after the other.
class PlainTransients {
public:
    PlainTransients(const AudioEditorBuffer &sound, Slicer::TransientSettings settings)
        : settings_(settings),
          rate_(double(sound.sampleRate())),
          frames_(sound.frames()),
          attackHops_(hops(0.01)),
          hops_(Slicer::Energy(sound).hops, attackHops_, hops(0.03)),
          edges_(Slicer::Energy(sound).edges, attackHops_, hops(0.03)) {
        for (std::int64_t f = 0; f < frames_; ++f) {
            float peak = 0;
            for (std::int64_t c = 0; c < sound.channels(); ++c) peak = std::max(peak, std::fabs(sound.sample(f, c)));
            peaks_.push_back(peak);
        }
    }

    Slices slices() const {
        Slices found;
        const std::vector<std::int64_t> all = hits();
        for (std::size_t i = 0, previous = std::size_t(-1); i < all.size(); ++i) {
            const std::int64_t begun = attack(all[i], std::int64_t(previous) + 1);
            if (begun < 0) continue;
            previous = std::size_t(begun);
            std::int64_t lo = std::max<std::int64_t>(begun - std::int64_t(settings_.preRollMs / 1000.0 * rate_), 0);
            if (!found.empty()) lo = std::max(lo, found.back().lo + 1), found.back().hi = std::min(found.back().hi, lo);
            found.push_back({lo, end(all[i], i + 1 < all.size() ? all[i + 1] : -1)});
        }
        for (std::size_t i = 0; i < found.size(); ++i) {
            const auto length = std::int64_t(std::round(settings_.lengthPercent * double(found[i].count()) / 100));
            const std::int64_t limit = i + 1 < found.size() ? found[i + 1].lo : frames_;
            found[i].hi = std::min(found[i].lo + std::max<std::int64_t>(length, 1), limit);
        }
        std::erase_if(found, [](FrameRange slice) { return slice.isEmpty(); });
        return found;
    }

private:
    std::int64_t hops(double seconds) const { return std::max<std::int64_t>(std::llround(rate_ * seconds / 128), 1); }
    static double db(double power) { return 10 * std::log10(std::max(power, 1e-12)); }
    double riseDb(const Slicer::EnergyWindows &of, std::int64_t i) const {
        return db(of.level[std::size_t(i)]) - db(of.before(i));
    }

    std::vector<std::int64_t> hits() const {
        const double wanted = 30 - 27 * std::clamp(settings_.sensitivity, 0, 100) / 100.0;
        std::vector<std::int64_t> found;
        double highest = -1;
        for (std::int64_t i = 0; i < hops_.n; ++i) {
            const double rise = (riseDb(hops_, i) + riseDb(edges_, i)) / 2;
            const bool isLoud = hops_.level[std::size_t(i)] >= std::max(1e-6 * hops_.loudest, 1e-7);
            if (!isLoud || rise < wanted) {
                highest = -1;
            } else if (rise > highest) {
                highest < 0 ? found.push_back(i) : void(found.back() = i);
                highest = rise;
            }
        }
        return found;
    }
    std::int64_t attack(std::int64_t hit, std::int64_t from) const {
        const std::int64_t lo = std::max((hit - 2) * 128, from), hi = std::min(frames_, (hit + attackHops_) * 128);
        if (lo >= hi) return -1;
        const std::int64_t peak = std::max_element(peaks_.begin() + lo, peaks_.begin() + hi) - peaks_.begin();
        const double p = double(peaks_[std::size_t(peak)]);
        const double under = std::min(0.5 * p, std::max(4 * std::sqrt(hops_.before(hit)), 0.05 * p));
        const auto isQuiet = [&](std::int64_t f) { return double(peaks_[std::size_t(f)]) < under; };
        const auto least = std::max<std::int64_t>(std::int64_t(rate_ * 0.0015), 1);
        for (std::int64_t behind = peak, run = 0, f = peak - 1; f >= lo; --f) {
            run = isQuiet(f) ? run + 1 : 0;
            if (run == 1) behind = f + 1;
            if (run >= least) return behind;
        }
        std::int64_t first = lo;
        while (first < peak && isQuiet(first)) ++first;
        return first;
    }
    std::int64_t end(std::int64_t hit, std::int64_t next) const {
        const auto level = [&](std::int64_t i) { return hops_.level[std::size_t(i)]; };
        std::int64_t loudest = hit;
        for (std::int64_t i = hit; i <= std::min(hops_.n - 1, hit + attackHops_); ++i)
            if (level(i) > level(loudest)) loudest = i;
        const double tail =
            std::max(std::pow(10.0, settings_.tailDb / 10.0) * level(loudest), 3.9810717055349722 * hops_.floor);
        for (std::int64_t i = loudest + 1; i < (next < 0 ? hops_.n : next); ++i)
            if (level(i) < tail) return std::min(frames_, (i + attackHops_) * 128);
        return next < 0 ? frames_ : next * 128;
    }

    const Slicer::TransientSettings settings_;
    const double rate_;
    const std::int64_t frames_, attackHops_;
    const Slicer::EnergyWindows hops_, edges_;
    std::vector<float> peaks_;
};

TEST(Transients, areTheDefinitionsOnRandomSounds) {
    std::mt19937 random(3);
    const auto below = [&](std::int64_t n) { return std::int64_t(random() % std::uint32_t(n)); };
    std::size_t found = 0;
    for (int round = 0; round < 1000; ++round) {
        const std::int64_t frames = 1 + below(round % 3 ? 40'000 : 3000);
        std::vector<Burst> hits;
        for (std::int64_t k = below(12); k > 0; --k)
            hits.push_back({below(frames), std::pow(10.0f, -float(below(60)) / 20), 1 - 1.0 / double(10 + below(5000))});
        const float background = below(2) ? 0 : std::pow(10.0f, -1 - float(below(60)) / 20);
        const AudioEditorBuffer sound = bursts(frames, 1 + below(3), hits, background).atRate(8000 + below(3) * 44'100);
        const Slicer::TransientSettings settings{int(below(120)), int(below(2) * below(100)), int(-6 - below(115)),
                                                 int(below(2) ? 100 : below(501))};
        const Slices wanted = PlainTransients(sound, settings).slices();
        ASSERT_EQ(transients(sound, settings), wanted) << round;
        found += wanted.size();
    }
    EXPECT_GT(found, 800u);
}

// The second of two hits may have no frame of its own: then it is none.
TEST(Transients, beginInsideTheSound) {
    std::vector<float> samples = noiseSamples(59 * 128 + 1, 1);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] *= i / 128 == 58 ? 0 : i / 128 == 57 ? 0.5f : 1e-4f;
    samples.back() = 0.9f;
    const AudioEditorBuffer sound(samples, 1, 44'100);
    EXPECT_EQ(transients(sound), PlainTransients(sound, {}).slices());
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
