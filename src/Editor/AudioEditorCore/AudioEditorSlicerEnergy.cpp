#include <algorithm>
#include <array>

#include "Editor/AudioEditorCore/AudioEditorSlicer.h"
#include "Support/Parallel.h"
#include "Support/Vectorised.h"

namespace kiv::AudioEditorSlicer {
namespace {

constexpr std::int64_t lanes = 16;
// Hops that are brought together before they are measured: they stay in the nearest cache.
constexpr std::int64_t chunkHops = 16;

struct HopEnergy {
    float square = 0;
    float edge = 0;
};

// Sums, lane by lane, over rows of 16 samples; `before` are the samples a frame earlier.
KIV_VECTORISED void sumRows(const float *__restrict in, const float *__restrict before, std::int64_t rows,
                            float *__restrict squares, float *__restrict edges) {
    for (std::int64_t l = 0; l < lanes; ++l) squares[l] = edges[l] = 0;
    for (std::int64_t row = 0; row < rows; ++row) {
        for (std::int64_t l = 0; l < lanes; ++l) {
            const float x = in[row * lanes + l], d = x - before[row * lanes + l];
            squares[l] += x * x;
            edges[l] += d * d;
        }
    }
}

// The sums of one channel's lanes, and of the samples behind the last row.
HopEnergy channelSums(const float *in, const float *before, std::int64_t samples, std::int64_t channels, std::int64_t channel,
                      const std::array<float, lanes> &squares, const std::array<float, lanes> &edges) {
    HopEnergy sums;
    for (std::int64_t l = channel; l < lanes; l += channels) {
        sums.square += squares[std::size_t(l)];
        sums.edge += edges[std::size_t(l)];
    }
    for (std::int64_t i = samples - samples % lanes + channel; i < samples; i += channels) {
        const float d = in[i] - before[i];
        sums.square += in[i] * in[i];
        sums.edge += d * d;
    }
    return sums;
}

HopEnergy channelSums(const float *in, const float *before, std::int64_t samples, std::int64_t channels, std::int64_t channel) {
    HopEnergy sums;
    for (std::int64_t i = channel; i < samples; i += channels) {
        const float d = in[i] - before[i];
        sums.square += in[i] * in[i];
        sums.edge += d * d;
    }
    return sums;
}

// Of the loudest channel. Where the channels go into the lanes, each keeps its own of them.
HopEnergy measured(const float *in, const float *before, std::int64_t frames, std::int64_t channels) {
    const std::int64_t samples = frames * channels;
    const bool inLanes = lanes % channels == 0;
    std::array<float, lanes> squares, edges;
    if (inLanes) sumRows(in, before, samples / lanes, squares.data(), edges.data());
    HopEnergy most;
    for (std::int64_t channel = 0; channel < channels; ++channel) {
        const HopEnergy sums = inLanes ? channelSums(in, before, samples, channels, channel, squares, edges)
                                       : channelSums(in, before, samples, channels, channel);
        most = {std::max(most.square, sums.square), std::max(most.edge, sums.edge)};
    }
    return {most.square / float(frames), most.edge / float(frames)};
}

}  // namespace

Energy::Energy(const AudioEditorBuffer &buffer, Progress *progress) {
    const std::int64_t frames = buffer.frames(), channels = buffer.channels(), count = (frames + hop - 1) / hop;
    hops.resize(std::size_t(count));
    edges.resize(std::size_t(count));
    if (progress) progress->start(count);
    const std::int64_t grain = std::max<std::int64_t>(2048 / channels, chunkHops);
    parallelFor(count, grain, [&](std::int64_t lo, std::int64_t hi) {
        // The frame before the chunk goes in front; before the sound's first frame stands that frame itself.
        std::vector<float> chunk(std::size_t((chunkHops * hop + 1) * channels));
        for (std::int64_t first = lo; first < hi; first += chunkHops) {
            const std::int64_t last = std::min(first + chunkHops, hi);
            const FrameRange range{first * hop, std::min(last * hop, frames)};
            if (first > 0)
                buffer.copyFrames({range.lo - 1, range.hi}, chunk.data());
            else
                buffer.copyFrames({0, 1}, chunk.data()), buffer.copyFrames(range, chunk.data() + channels);
            for (std::int64_t i = first; i < last; ++i) {
                const float *before = chunk.data() + (i - first) * hop * channels;
                const HopEnergy energy = measured(before + channels, before, std::min(hop, frames - i * hop), channels);
                hops[std::size_t(i)] = energy.square;
                edges[std::size_t(i)] = energy.edge;
            }
        }
        if (progress) progress->add(hi - lo);
    });
}

EnergyWindows::EnergyWindows(const std::vector<float> &values, std::int64_t attackHops, std::int64_t backgroundHops)
    : n(std::int64_t(values.size())),
      attack(attackHops),
      background(backgroundHops),
      sums(values.size() + 1),
      level(values.size()) {
    for (std::size_t i = 0; i < values.size(); ++i) sums[i + 1] = sums[i] + double(values[i]);
    for (std::int64_t i = 0; i < n; ++i) {
        const std::int64_t end = std::min(i + attack, n);
        level[std::size_t(i)] = (sums[std::size_t(end)] - sums[std::size_t(i)]) / double(end - i);
    }
    if (n == 0) return;
    std::vector<double> sorted = level;
    const auto tenth = sorted.begin() + n / 10;
    std::nth_element(sorted.begin(), tenth, sorted.end());
    floor = std::max(*tenth, 1e-13);
    loudest = *std::max_element(level.begin(), level.end());
}

double EnergyWindows::before(std::int64_t i) const {
    const std::int64_t first = std::max<std::int64_t>(i - background, 0);
    const double sum = sums[std::size_t(i)] - sums[std::size_t(first)];
    return (sum + double(background - (i - first)) * floor) / double(background);
}

}  // namespace kiv::AudioEditorSlicer
