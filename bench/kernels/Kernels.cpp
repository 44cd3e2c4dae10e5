// Bytes of sound a second through each kernel, beside a plain copy of the same sound: by one core, and by all of them. Ten
// minutes at 44.1 kHz. Times are of the wall clock, for the kernels run on all cores.
#include <benchmark/benchmark.h>

#include <cstring>

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Editor/AudioEditorCore/AudioEditorPeaks.h"
#include "Editor/AudioEditorCore/AudioEditorStretch.h"
#include "Support/Parallel.h"

namespace kiv {
namespace {

constexpr std::int64_t rate = 44100;
constexpr std::int64_t frames = 10 * 60 * rate;
constexpr FrameRange whole{0, frames};

// A cheap hum with some noise; what the values are does not matter to any kernel.
const AudioEditorBuffer &sound(std::int64_t channels) {
    static std::vector<AudioEditorBuffer> made(16);
    AudioEditorBuffer &buffer = made[std::size_t(channels)];
    if (!buffer.isEmpty()) return buffer;
    SampleMemory memory(std::size_t(frames * channels));
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < memory.size(); ++i) {
        state = state * 1664525 + 1013904223;
        memory.data()[i] = float(std::int32_t(state)) * 0x1p-32f;
    }
    return buffer = AudioEditorBuffer(std::move(memory), channels, rate);
}

const float *firstSample(const AudioEditorBuffer &buffer) {
    const float *first = nullptr;
    buffer.forEachSpan({0, 1}, [&](std::span<const float> samples, FrameRange) { first = samples.data(); });
    return first;
}

std::int64_t bytes(std::int64_t channels) { return frames * channels * std::int64_t(sizeof(float)); }

template <class Kernel>
void run(benchmark::State &state, Kernel kernel) {
    const std::int64_t channels = state.range(0);
    const AudioEditorBuffer &buffer = sound(channels);
    benchmark::DoNotOptimize(kernel(buffer));  // touches the memory that the timed rounds reuse
    for (auto round : state) benchmark::DoNotOptimize(kernel(buffer));
    state.SetBytesProcessed(state.iterations() * bytes(channels));
}

AudioEditorBuffer copied(const AudioEditorBuffer &buffer, std::int64_t parts) {
    const std::int64_t samples = frames * buffer.channels();
    const float *in = firstSample(buffer);
    SampleMemory out{std::size_t(samples)};
    parallelFor(samples, samples / parts, [&](std::int64_t lo, std::int64_t hi) {
        std::memcpy(out.data() + lo, in + lo, std::size_t(hi - lo) * sizeof(float));
    });
    return AudioEditorBuffer(std::move(out), buffer.channels(), rate);
}

void memcpyOneCore(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return copied(buffer, 1); });
}
void memcpyAllCores(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return copied(buffer, 256); });
}
void peaks(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorPeaks(buffer); });
}
void peak(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::peak(buffer, whole); });
}
void scaled(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::scaled(buffer, whole, 0.7); });
}
void fadeIn(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::fadeIn(buffer, whole); });
}
void fadeOut(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::fadeOut(buffer, whole); });
}
void reversed(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::reversed(buffer, whole); });
}
void silenced(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::silenced(buffer, whole); });
}
void monoMix(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::mono(buffer, AudioEditorMonoSource::mix); });
}
void monoLeft(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::mono(buffer, AudioEditorMonoSource::left); });
}
void toStereo(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::withChannels(buffer, 2); });
}
void resampled(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::withSampleRate(buffer, 48000); });
}

void pitched(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::cleanStretched(buffer, whole, 100, 3, 0); });
}
void stretchedClean(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::cleanStretched(buffer, whole, 120, 0, 0); });
}
void stretchedByCycles(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::timeStretched(buffer, whole, 120, 1000, 3, 0); });
}
void sliceFaded(benchmark::State &state) {
    run(state, [](const AudioEditorBuffer &buffer) { return AudioEditorOps::sliceFaded(buffer, frames / 2, frames / 2); });
}

BENCHMARK(memcpyOneCore)->Arg(1)->Arg(2)->Arg(6)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(memcpyAllCores)->Arg(1)->Arg(2)->Arg(6)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(peaks)->Arg(1)->Arg(2)->Arg(3)->Arg(6)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(peak)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(scaled)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(fadeIn)->Arg(1)->Arg(2)->Arg(6)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(fadeOut)->Arg(1)->Arg(2)->Arg(6)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(reversed)->Arg(1)->Arg(2)->Arg(6)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(silenced)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(monoMix)->Arg(2)->Arg(6)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(monoLeft)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(toStereo)->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(resampled)->Arg(1)->Arg(2)->Arg(6)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(pitched)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(stretchedClean)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(stretchedByCycles)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(sliceFaded)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);

// An edit of ten seconds in the middle and the peaks after it: what a person waits for.
void editOfTenSeconds(benchmark::State &state) {
    const AudioEditorBuffer &buffer = sound(2);
    const AudioEditorPeaks before(buffer);
    const FrameRange range{frames / 2, frames / 2 + 10 * rate};
    for (auto round : state) {
        const AudioEditorBuffer after = AudioEditorOps::scaled(buffer, range, 0.5);
        benchmark::DoNotOptimize(AudioEditorPeaks(after, buffer, before));
    }
}
BENCHMARK(editOfTenSeconds)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kiv
