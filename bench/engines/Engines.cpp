// The spectral engine and the equalizer over ten minutes of stereo at 44.1 kHz: what each takes, beside its limit.
//
// usage: kiv_engines            times
//        kiv_engines --tables   how exact they are
//        kiv_engines --words    the equalizer's settings as kiv and sox take them, a line each, to time them side by side
#include "Engines.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

#include "Editor/AudioEditorSpectral/Analysis.h"
#include "Editor/AudioEditorSpectral/Render.h"
#include "Editor/AudioEditorSpectral/Stroke.h"
#include "Editor/EqCore/EqBiquad.h"
#include "Editor/EqProcessor/EqProcessor.h"

namespace kiv {

EqSettings allOfTheEqualizer() {
    EqSettings settings;
    settings.lowCut = {true, 40};
    settings.highCut = {true, 15000};
    settings.bands = {{{true, 120, 3, 0.707}, {true, 300, -4, 2}, {true, 2500, 3, 1}, {true, 6000, -2, 0.707}}};
    return settings;
}

namespace {

using namespace AudioEditorSpectral;

constexpr std::int64_t rate = 44100, frames = 10 * 60 * rate;

AudioEditorBuffer noise() {
    SampleMemory memory(std::size_t(frames * 2));
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < memory.size(); ++i) {
        state = state * 1664525 + 1013904223;
        memory.data()[i] = float(std::int32_t(state)) * 0x1p-33f;
    }
    return AudioEditorBuffer(std::move(memory), 2, rate);
}

template <class Act>
void time(const char *title, double limitMs, int times, Act act) {
    std::vector<double> ms;
    act();  // touches the memory that the timed rounds use again
    for (int i = 0; i < times; ++i) {
        const auto start = std::chrono::steady_clock::now();
        act();
        ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(ms.begin(), ms.end());
    const double middle = ms[ms.size() / 2];
    std::printf("%-46s %9.3f %9.3f %9.3f  %s\n", title, middle, ms.back(), limitMs, middle <= limitMs ? "met" : "NOT MET");
}

Mask everyGain(const State &state) {
    Mask mask = state.mask;
    for (std::int64_t c = 0; c < mask.columns(); ++c)
        for (int b = 0; b < bandCount; ++b) mask.writableColumn(c)[b] = 0.3f + 0.002f * float((b * 7 + c) % 256);
    return mask;
}

void timeSpectral(const AudioEditorBuffer &sound) {
    const State state(1, sound, 1);
    const Mask mask = everyGain(state);
    const std::int64_t columns = state.geometry.columns;
    time("render, every gain", 1500, 5, [&] { render(state, mask, {0, columns}, sound); });
    time("render, cleared", 1500, 5, [&] { render(state, Mask(columns, floorGain), {0, columns}, sound); });
    time("picture", 1000, 5, [&] { analyze(state); });
    // 40 points of a view of 10 seconds, and of the whole file, both 1236 points wide.
    for (const auto &[title, seconds, limit] :
         {std::tuple("dab in 10 s, columns rendered", 10.0, 5.0), {"dab in 10 min, columns rendered", 600.0, 100.0}}) {
        const double radius = 20 * seconds * rate / 1236 / double(state.geometry.columnFrames);
        time(title, limit, 31, [&, radius = radius] {
            Stroke stroke(state.mask, Brush::attenuate, 0.5f);
            stroke.to({9000.5, 128}, {radius, 10});
            render(state, stroke.mask(), stroke.dirty(), sound);
        });
    }
}

void timeEq(const AudioEditorBuffer &sound) {
    const EqSettings all = allOfTheEqualizer();
    time("equalizer, nine sections, applied", 3000, 5, [&] { EqProcessor::applied({0, frames}, all, sound); });
    EqProcessor processor(double(rate), 2);
    processor.setTargets({all, true});
    processor.reset();
    std::vector<float> block(2 * 512);
    const double limit = 10.0 * 512 / rate;  // 1 % of what the block lasts
    const auto take = [&](std::int64_t i) { sound.copyFrames({i * 512, i * 512 + 512}, block.data()); };
    std::int64_t i = 0;
    time("equalizer, live block of 512, settled", limit, 2001, [&] { take(++i), processor.process(block); });
    time("equalizer, live block of 512, everything gliding", limit, 2001, [&] {
        EqSettings turned = all;
        for (EqBand &band : turned.bands) band.gainDb = i % 2 ? 12 : -12, band.freqHz *= i % 2 ? 1.5 : 1;
        turned.lowCut.freqHz = turned.highCut.freqHz = i % 2 ? 100 : 1000;
        processor.setTargets({turned, true});
        take(++i), processor.process(block);
    });
}

void printWords() {
    const EqSettings all = allOfTheEqualizer();
    std::printf("lowCut=on:%g highCut=on:%g", all.lowCut.freqHz, all.highCut.freqHz);
    for (std::size_t i = 0; i < all.bands.size(); ++i)
        std::printf(" band%zu=on:%g:%g:%g", i, all.bands[i].freqHz, all.bands[i].gainDb, all.bands[i].q);
    std::puts("");
    const auto print = [](const EqBiquad &s) {
        std::printf("biquad %.17g %.17g %.17g 1 %.17g %.17g ", s.b0, s.b1, s.b2, s.a1, s.a2);
    };
    for (const EqBiquad &stage : eqLowCutStages(all.lowCut.freqHz, rate)) print(stage);
    for (std::size_t i = 0; i < all.bands.size(); ++i)
        print(EqBiquad(eqBandKind(i), all.bands[i].freqHz, all.bands[i].gainDb, all.bands[i].q, rate));
    for (const EqBiquad &stage : eqHighCutStages(all.highCut.freqHz, rate)) print(stage);
    std::puts("");
}

}  // namespace
}  // namespace kiv

int main(int argc, char **argv) {
    if (argc > 1 && std::strcmp(argv[1], "--tables") == 0) return kiv::printTables(), 0;
    if (argc > 1 && std::strcmp(argv[1], "--words") == 0) return kiv::printWords(), 0;
    const kiv::AudioEditorBuffer sound = kiv::noise();
    std::puts("10 minutes of stereo, ms:                         middle   longest     limit");
    kiv::timeSpectral(sound);
    kiv::timeEq(sound);
}
