// The search for loops and the three ways to slice, beside the times they must stay within on two cores: 400 ms for a search
// through 60 s of stereo, growing no faster than the sound, and 300 ms for the slices of ten minutes of stereo.
#include <benchmark/benchmark.h>

#include <cmath>

#include "Editor/AudioEditorCore/AudioEditorSlicer.h"
#include "Editor/AudioEditorLoopPanel/AudioEditorLoopFinder.h"

namespace kiv {
namespace {

constexpr std::int64_t rate = 44100;

// A wavering chord over some noise, or hits of noise every 400 ms.
template <class Value>
AudioEditorBuffer made(std::int64_t seconds, Value value) {
    SampleMemory memory(std::size_t(seconds * rate * 2));
    std::uint32_t state = 1;
    for (std::int64_t i = 0; i < seconds * rate * 2; ++i) {
        state = state * 1664525 + 1013904223;
        memory.data()[i] = value(i / 2, double(std::int32_t(state)) * 0x1p-31);
    }
    return AudioEditorBuffer(std::move(memory), 2, rate);
}

AudioEditorBuffer chord(std::int64_t seconds) {
    return made(seconds, [](std::int64_t frame, double noise) {
        const double t = double(frame) / rate, phase = 2 * 3.14159265358979 * t + 0.02 * std::sin(33 * t);
        return float(0.2 * (std::sin(220 * phase) + std::sin(277.2 * phase) + std::sin(329.6 * phase)) + 0.01 * noise);
    });
}

const AudioEditorBuffer &drums() {
    static const AudioEditorBuffer buffer = made(600, [](std::int64_t frame, double noise) {
        return float(noise * (0.001 + 0.7 * std::exp(-double(frame % 17640) / 1500)));
    });
    return buffer;
}

void loops(benchmark::State &state, AudioEditorLoopFinder::LoopPoints points) {
    const AudioEditorBuffer buffer = chord(state.range(0));
    for (auto round : state) benchmark::DoNotOptimize(AudioEditorLoopFinder::analyze(buffer, points));
    state.SetLabel("limit " + std::to_string(400 * state.range(0) / 60) + " ms");
}

void loopsAnywhere(benchmark::State &state) { loops(state, AudioEditorLoopFinder::LoopPoints::anywhere); }
void loopsAtCrossings(benchmark::State &state) { loops(state, AudioEditorLoopFinder::LoopPoints::atRisingZeroCrossings); }

// The slices are counted, so that one sees that there was something to find.
template <class Detect>
void slices(benchmark::State &state, Detect detect) {
    const AudioEditorBuffer &buffer = drums();
    std::size_t found = 0;
    for (auto round : state) found = detect(buffer).size();
    state.SetLabel("limit 300 ms, " + std::to_string(found) + " slices");
}

void energy(benchmark::State &state) {
    slices(state, [](const AudioEditorBuffer &buffer) { return AudioEditorSlicer::Energy(buffer).hops; });
}
void transients(benchmark::State &state) {
    slices(state, [](const AudioEditorBuffer &buffer) {
        return AudioEditorSlicer::transients(buffer, AudioEditorSlicer::Energy(buffer), {});
    });
}
void transientsOfKnownEnergy(benchmark::State &state) {
    const AudioEditorSlicer::Energy known(drums());
    slices(state, [&](const AudioEditorBuffer &buffer) { return AudioEditorSlicer::transients(buffer, known, {}); });
}
void stripSilence(benchmark::State &state) {
    const AudioEditorPeaks peaks(drums());
    slices(state, [&](const AudioEditorBuffer &buffer) { return AudioEditorSlicer::detect(buffer, peaks, -30, 50); });
}
void grid(benchmark::State &state) {
    slices(state, [](const AudioEditorBuffer &buffer) { return AudioEditorSlicer::grid(buffer.frames(), 64, 0, 100); });
}

BENCHMARK(loopsAnywhere)->Arg(15)->Arg(30)->Arg(60)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(loopsAtCrossings)->Arg(60)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(energy)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(transients)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(transientsOfKnownEnergy)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(stripSilence)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(grid)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kiv
