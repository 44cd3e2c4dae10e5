#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>
#include <vector>

#include "Editor/AudioEditorSpectral/Render.h"
#include "Editor/AudioEditorSpectral/Stroke.h"
#include "Editor/EqCore/EqResponse.h"
#include "Editor/EqProcessor/EqProcessor.h"
#include "Engines.h"
#include "Support/RealFft.h"

namespace kiv {
namespace {

using namespace AudioEditorSpectral;

double db(double amplitude) { return 20 * std::log10(std::max(amplitude, 1e-12)); }

std::vector<float> sine(double hz, std::int64_t count, double rate) {
    std::vector<float> samples;
    for (std::int64_t i = 0; i < count; ++i) samples.push_back(float(std::sin(2 * std::numbers::pi * hz * double(i) / rate)));
    return samples;
}

EqProcessor settled(const EqSettings &settings, double rate) {
    EqProcessor processor(rate, 1);
    processor.setTargets({settings, true});
    processor.reset();
    return processor;
}

// The largest difference of an impulse's spectrum from the response, over all bins from 20 Hz to 0.49 of the rate.
double worstDb(const EqSettings &settings, double rate) {
    constexpr int size = 1 << 18;
    const auto impulse = makeFftReals(size);
    std::fill_n(impulse.get(), size, 0.0f);
    impulse[0] = 1;
    settled(settings, rate).process({impulse.get(), size});
    const RealFft fft(size);
    const auto bins = makeFftBins(std::size_t(fft.bins()));
    fft.forward(impulse.get(), bins.get());
    double worst = 0;
    for (int k = int(20 * size / rate) + 1; k < int(0.49 * size); ++k) {
        const double wanted = EqResponse::totalDb(settings, k * rate / size, rate);
        if (wanted > -60) worst = std::max(worst, std::abs(db(double(std::abs(bins[std::size_t(k)]))) - wanted));
    }
    return worst;
}

void printResponse() {
    EqSettings bands = allOfTheEqualizer(), cuts, extreme;
    bands.lowCut.on = bands.highCut.on = false;
    cuts.lowCut = {true, 100};
    cuts.highCut = {true, 8000};
    extreme.bands = {{{true, 20, -20, 0.1}, {true, 60, 20, 10}, {true, 12000, -20, 0.1}, {true, 20000, 20, 10}}};
    const std::pair<const char *, EqSettings> rows[] = {
        {"four bands", bands}, {"both cuts", cuts}, {"everything", allOfTheEqualizer()}, {"extremes", extreme}};
    std::puts("equalizer, measured against the analytic response, largest difference above -60 dB:");
    for (const auto &[title, settings] : rows)
        for (const double rate : {44100.0, 48000.0, 96000.0})
            std::printf("  %-12s %6.0f Hz   %.6f dB\n", title, rate, worstDb(settings, rate));
}

// What a glide leaves above 8 kHz of a sine of 400 Hz at full scale: the noise of steps.
double glideNoiseDb(const EqSettings &from, const EqSettings &to) {
    constexpr double rate = 48000;
    EqProcessor processor = settled(from, rate);
    std::vector<float> samples = sine(400, 48000, rate);
    processor.process(std::span(samples).first(24000));
    processor.setTargets({to, true});
    processor.process(std::span(samples).last(24000));
    EqSettings away;
    away.lowCut = {true, 8000};
    for (int i = 0; i < 3; ++i) settled(away, rate).process(samples);
    float most = 0;
    for (std::size_t i = 12000; i < samples.size(); ++i) most = std::max(most, std::fabs(samples[i]));
    return db(double(most));
}

void printGlides() {
    EqSettings flat, boost, moved, low, high, louder;
    boost.bands[1] = {true, 400, 12, 1};
    moved.bands[1] = {true, 800, 12, 4};
    low.lowCut = {true, 100};
    high.highCut = {true, 1000};
    louder.gainDb = 12;
    const struct {
        const char *title;
        const EqSettings &from, &to;
    } rows[] = {{"a band's gain +12 dB", flat, boost},
                {"and off", boost, flat},
                {"a band's place and q", boost, moved},
                {"low cut on", flat, low},
                {"low cut off", low, flat},
                {"high cut on", flat, high},
                {"high cut off", high, flat},
                {"output +12 dB", flat, louder}};
    std::puts("equalizer, what a glide leaves above 8 kHz of a full-scale sine of 400 Hz, largest sample:");
    for (const auto &[title, from, to] : rows) std::printf("  %-22s %7.1f dB\n", title, glideNoiseDb(from, to));
}

void printReconstruction() {
    constexpr std::int64_t count = 200000;
    std::vector<float> samples;
    std::uint32_t random = 7;
    for (std::int64_t i = 0; i < count; ++i)
        samples.push_back(float(std::int32_t(random = random * 1664525 + 1013904223)) * 0x1p-31f);
    std::puts(
        "spectral rendering of full-scale noise with one gain all over, transformed: largest error, relative to the sound:");
    for (const std::int64_t rate : {44100, 96000, 192000})
        for (const double gain : {1.0, 0.5, double(floorGain), double(maxGain)}) {
            const State state(1, AudioEditorBuffer(samples, 1, rate), 1);
            Mask mask(state.geometry.columns, float(gain));
            mask.writableColumn(0);  // now it is not known to be uniform
            const AudioEditorBuffer out = render(state, mask, {0, state.geometry.columns}, state.original);
            double worst = 0;
            for (std::int64_t i = 0; i < count; ++i)
                worst =
                    std::max(worst, std::abs(double(out.sample(i, 0)) - double(float(gain)) * double(samples[std::size_t(i)])));
            std::printf("  %6lld Hz   %+6.1f dB   %s%.1f dB\n", static_cast<long long>(rate), db(gain),
                        worst == 0 ? "exact, below " : "", db(worst));
        }
}

void printPaintedTones() {
    std::puts(
        "a painted block over a sine of 5 kHz: gain painted, gain measured in its middle, another sine of 1 kHz beside it:");
    const std::vector<float> high = sine(5000, 44100, 44100), low = sine(1000, 44100, 44100);
    std::vector<float> both;
    for (std::size_t i = 0; i < high.size(); ++i) both.push_back(0.25f * (high[i] + low[i]));
    const State state(1, AudioEditorBuffer(both, 1, 44100), 1);
    const auto level = [](const AudioEditorBuffer &buffer, double hz) {
        std::complex<double> sum;
        for (int i = 0; i < 8820; ++i)  // whole periods of both
            sum += double(buffer.sample(17640 + i, 0)) * std::polar(1.0, -2 * std::numbers::pi * hz * i / 44100);
        return db(std::abs(sum) / 4410 / 0.25);
    };
    const int band = int(state.geometry.bandAt(5000));
    for (const double gain : {-96.0, -48.0, -24.0, -6.0, 6.0, 12.0}) {
        const Mask mask = multiplied(state.mask, {20, 66}, {band - 12, band + 14}, gain);
        const AudioEditorBuffer out = render(state, mask, {0, state.geometry.columns}, state.original);
        std::printf("  %+6.1f dB   %+8.3f dB   %+8.5f dB\n", gain, level(out, 5000), level(out, 1000));
    }
}

}  // namespace

void printTables() {
    printResponse();
    printGlides();
    printReconstruction();
    printPaintedTones();
}

}  // namespace kiv
