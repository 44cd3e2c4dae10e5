#include "Editor/EqProcessor/EqProcessor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "Editor/AudioEditorCore/TestSounds.h"
#include "Editor/EqCore/EqResponse.h"
#include "Support/RealFft.h"

namespace kiv {
namespace {

constexpr double rate = 48000;

EqSettings everything() {
    EqSettings settings;
    settings.gainDb = -2;
    settings.lowCut = {true, 60};
    settings.highCut = {true, 9000};
    settings.bands = {{{true, 150, 6, 0.8}, {true, 400, -9, 3}, {true, 2500, 12, 1}, {true, 6000, -4, 0.7}}};
    return settings;
}

EqProcessor settled(const EqSettings &settings, std::int64_t channels, double sampleRate = rate) {
    EqProcessor processor(sampleRate, channels);
    processor.setTargets({settings, true});
    processor.reset();
    return processor;
}

// The sections in their order, one sample at a time, as the filter is written down.
std::vector<float> filteredPlainly(const std::vector<float> &samples, const EqSettings &s) {
    std::vector<EqBiquad> sections;
    for (const EqBiquad &stage : eqLowCutStages(s.lowCut.freqHz, rate)) sections.push_back(stage);
    for (std::size_t i = 0; i < s.bands.size(); ++i)
        sections.emplace_back(eqBandKind(i), s.bands[i].freqHz, s.bands[i].gainDb, s.bands[i].q, rate);
    for (const EqBiquad &stage : eqHighCutStages(s.highCut.freqHz, rate)) sections.push_back(stage);
    std::vector<std::pair<double, double>> memory(sections.size());
    std::vector<float> out;
    for (const float sample : samples) {
        double x = double(sample);
        for (std::size_t k = 0; k < sections.size(); ++k) {
            const double y = sections[k].b0 * x + memory[k].first;
            memory[k].first = sections[k].b1 * x - sections[k].a1 * y + memory[k].second;
            memory[k].second = sections[k].b2 * x - sections[k].a2 * y;
            x = y;
        }
        out.push_back(float(x * double(float(std::pow(10.0, s.gainDb / 20)))));
    }
    return out;
}

TEST(EqProcessor, DoesWhatTheSectionsDoOneByOneForAnyChannelsAndBlocks) {
    EqSettings settings = everything();
    // exp(log(f)) is f but for its last bits: the plain filter gets the same.
    for (EqBand &band : settings.bands) band.freqHz = std::exp(std::log(band.freqHz)), band.q = std::exp(std::log(band.q));
    for (EqCut *cut : {&settings.lowCut, &settings.highCut}) cut->freqHz = std::exp(std::log(cut->freqHz));
    for (const std::int64_t channels : {1, 2, 3, 6}) {
        std::vector<float> samples = noiseSamples(3000 * channels, 5), expected = samples;
        for (std::int64_t c = 0; c < channels; ++c) {
            std::vector<float> own;
            for (std::size_t i = std::size_t(c); i < samples.size(); i += std::size_t(channels)) own.push_back(samples[i]);
            own = filteredPlainly(own, settings);
            for (std::size_t i = 0; i < own.size(); ++i) expected[i * std::size_t(channels) + std::size_t(c)] = own[i];
        }
        EqProcessor processor = settled(settings, channels);
        std::size_t at = 0;
        for (const std::size_t frames : {1, 2, 15, 16, 17, 300, 1000, 1649}) {
            processor.process(std::span(samples).subspan(at, frames * std::size_t(channels)));
            at += frames * std::size_t(channels);
        }
        ASSERT_EQ(at, samples.size());
        ASSERT_EQ(samples, expected) << channels;
    }
}

TEST(EqProcessor, MeasuresAsTheResponseSaysWithinAHundredthOfADecibel) {
    constexpr int size = 1 << 17;
    EqSettings cases[] = {everything(), everything(), everything()};
    cases[1].lowCut.on = cases[1].highCut.on = false;
    cases[2].bands = {{{true, 20, -20, 0.1}, {true, 20000, 20, 10}, {true, 12000, -20, 0.1}, {true, 20000, 20, 10}}};
    for (const double sampleRate : {44100.0, 96000.0})
        for (const EqSettings &settings : cases) {
            const auto impulse = makeFftReals(size);
            std::fill_n(impulse.get(), size, 0.0f);
            impulse[0] = 1;
            settled(settings, 1, sampleRate).process({impulse.get(), size});
            const RealFft fft(size);
            const auto spectrum = makeFftBins(std::size_t(fft.bins()));
            fft.forward(impulse.get(), spectrum.get());
            for (int k = 60; k < fft.bins(); k += 1 + k / 50) {
                const double hz = k * sampleRate / size, wanted = EqResponse::totalDb(settings, hz, sampleRate);
                if (wanted < -60) continue;  // below that the samples' own rounding counts
                EXPECT_NEAR(20 * std::log10(double(std::abs(spectrum[std::size_t(k)]))), wanted, 0.01)
                    << sampleRate << " " << hz;
            }
        }
}

TEST(EqProcessor, LeavesEveryBitWhereItCanChangeNothing) {
    EqSettings flat;
    flat.bands[1].on = true;  // without gain
    const std::vector<float> samples = noiseSamples(2000, 2);
    for (const EqTargets &targets : {EqTargets(flat, true), EqTargets(everything(), false)}) {
        EqProcessor processor(rate, 2);
        processor.setTargets(targets);
        EXPECT_FALSE(processor.isActive());
        std::vector<float> out = samples;
        processor.process(out);
        EXPECT_EQ(out, samples);
    }
}

// How long a processor stays active, in seconds.
double secondsUntilRest(EqProcessor &processor) {
    std::vector<float> block(32);
    int blocks = 0;
    for (; processor.isActive() && blocks < 10000; ++blocks) processor.process(block);
    return blocks * 16 / rate;
}

TEST(EqProcessor, GlidesToRestInSomeTimeConstantsAndIsThenExact) {
    EqProcessor processor = settled(everything(), 2);
    EXPECT_TRUE(processor.isActive());
    processor.setTargets({everything(), false});
    EXPECT_TRUE(processor.isActive());
    const double seconds = secondsUntilRest(processor);
    EXPECT_GT(seconds, 0.02);
    EXPECT_LT(seconds, 0.1);
    std::vector<float> samples = noiseSamples(200, 3), same = samples;
    processor.process(samples);
    EXPECT_EQ(samples, same);
    EqSettings peak;
    peak.bands[1] = {true, 200, 6, 1};
    processor.setTargets({peak, true});
    EXPECT_TRUE(processor.isActive()) << "before the first step the target counts";
}

std::vector<float> sine(double hz, std::int64_t frames, float level = 0.5f) {
    std::vector<float> samples;
    for (std::int64_t i = 0; i < frames; ++i)
        samples.push_back(level * float(std::sin(2 * std::numbers::pi * hz * double(i) / rate)));
    return samples;
}

double level(std::span<const float> samples) {
    double sum = 0;
    for (const float sample : samples) sum += double(sample) * double(sample);
    return std::sqrt(2 * sum / double(samples.size()));
}

TEST(EqProcessor, LowCutSweepsUpFromBelowAndHighCutFadesIn) {
    EqSettings low, high;
    low.lowCut = {true, 2000};
    high.highCut = {true, 500};
    const auto levels = [](const EqSettings &settings, double hz) {
        EqProcessor processor(rate, 1);
        processor.setTargets({settings, true});
        std::vector<float> samples = sine(hz, 9600);
        processor.process(samples);
        const std::span<const float> all(samples);
        return std::array{level(all.first(96)), level(all.last(4800))};
    };
    EXPECT_GT(levels(low, 500)[0], 0.4) << "the corner is still far below";
    EXPECT_LT(levels(low, 500)[1], 0.001);
    EXPECT_GT(levels(high, 5000)[0], 0.3) << "hardly mixed in yet";
    EXPECT_LT(levels(high, 5000)[1], 0.001);
}

// The largest sample left of a glide over a sine once the sine's own band is taken out: what a step or a ratchet would leave.
double noiseDb(const EqSettings &from, const EqSettings &to, double hz) {
    EqProcessor processor = settled(from, 1);
    std::vector<float> samples = sine(hz, 24000, 1);
    processor.process(std::span(samples).first(12000));
    processor.setTargets({to, true});
    processor.process(std::span(samples).last(12000));
    EqSettings high;
    high.lowCut = {true, 8000};
    EqProcessor away = settled(high, 1);
    for (int i = 0; i < 2; ++i) away.process(samples), away.reset();
    float most = 0;
    for (std::size_t i = 6000; i < samples.size(); ++i) most = std::max(most, std::fabs(samples[i]));
    return 20 * std::log10(double(most));
}

TEST(EqProcessor, GlidesWithoutNoiseOfItsOwn) {
    EqSettings flat, boost, moved, cut, louder;
    boost.bands[1] = {true, 400, 12, 1};
    moved.bands[1] = {true, 800, 12, 4};
    cut.lowCut = {true, 100};
    louder.gainDb = 12;
    const struct {
        const char *title;
        EqSettings from, to;
    } cases[] = {{"a band's gain", flat, boost},
                 {"a band's place", boost, moved},
                 {"low cut on", flat, cut},
                 {"low cut off", cut, flat},
                 {"output", flat, louder}};
    for (const auto &[title, from, to] : cases) EXPECT_LT(noiseDb(from, to, 400), -50) << title;
}

TEST(EqProcessor, SurvivesWhatIsNoNumber) {
    EqProcessor processor = settled(everything(), 2);
    std::vector<float> samples(2000, 0.1f);
    samples[10] = NAN;
    samples[13] = INFINITY;
    processor.process(samples);
    for (const float sample : samples) ASSERT_TRUE(std::isfinite(sample));
}

TEST(EqProcessor, ComesToRestOnSilence) {
    EqProcessor processor = settled(everything(), 1);
    std::vector<float> samples(48000 * 20);
    samples[0] = 1;
    processor.process(samples);
    EXPECT_EQ(samples.back(), 0.0f);
    EXPECT_EQ(std::count_if(samples.end() - 48000, samples.end(), [](float x) { return x != 0; }), 0);
}

TEST(EqApplied, IsSettledWhereTheRangeBeginsAndTouchesNothingElse) {
    const AudioEditorBuffer sound = inPieces(noise(90000, 2, 4));
    const FrameRange range{40000, 70000};
    const AudioEditorBuffer out = EqProcessor::applied(range, everything(), sound);
    EXPECT_EQ(out.sharedPrefix(sound), range.lo);
    EXPECT_EQ(out.sharedSuffix(sound), sound.frames() - range.hi);
    const AudioEditorBuffer all = EqProcessor::applied({-5, 90005}, everything(), sound);
    EXPECT_EQ(all.frames(), sound.frames());
    const std::vector<float> part = out.part(range).samples(), same = all.part(range).samples();
    for (std::size_t i = 0; i < part.size(); ++i) ASSERT_NEAR(part[i], same[i], 1e-6) << i;
    const AudioEditorBuffer fromStart = EqProcessor::applied({0, 100}, everything(), sound);
    EXPECT_EQ(fromStart.part({0, 100}), all.part({0, 100})) << "there is nothing before the start to settle on";
}

TEST(EqApplied, ChangesNothingWithoutARangeOrAnEffect) {
    const AudioEditorBuffer sound = noise(100, 2, 4);
    EXPECT_EQ(EqProcessor::applied({50, 50}, everything(), sound).sharedPrefix(sound), 100);
    EXPECT_EQ(EqProcessor::applied({100, 200}, everything(), sound).sharedPrefix(sound), 100);
    EXPECT_EQ(EqProcessor::applied({0, 100}, EqSettings{}, sound).sharedPrefix(sound), 100);
    Progress cancelled;
    cancelled.cancel();
    EXPECT_THROW(EqProcessor::applied({0, 100}, everything(), sound, &cancelled), Cancelled);
}

}  // namespace
}  // namespace kiv
