#include "Editor/AudioEditorLoopPanel/LoopRegion.h"

#include <algorithm>
#include <cmath>

#include "Support/Parallel.h"
#include "Support/Vectorised.h"

namespace kiv {
namespace {

constexpr double silentDb = -120, quietDb = -60, endDb = -70, attackDb = 6, decayDb = 40;
constexpr std::int64_t smoothing = 5;       // blocks to either side
constexpr std::int64_t attackBlocks = 3;    // let pass behind the first loud one
constexpr std::int64_t longestSearch = 60;  // s

KIV_VECTORISED double sumOfSquares(const float *__restrict in, std::int64_t samples) {
    constexpr std::int64_t lanes = 16;
    float sums[lanes] = {};
    const std::int64_t rows = samples / lanes;
    for (std::int64_t row = 0; row < rows; ++row)
        for (std::int64_t l = 0; l < lanes; ++l) sums[l] += in[row * lanes + l] * in[row * lanes + l];
    double total = 0;
    for (const float sum : sums) total += double(sum);
    for (std::int64_t i = rows * lanes; i < samples; ++i) total += double(in[i]) * double(in[i]);
    return total;
}

double decibels(double power) {
    const double db = 10 * std::log10(power + 1e-12);
    return std::isfinite(db) ? db : silentDb;
}

std::vector<double> smooth(const std::vector<double> &levels) {
    const auto count = std::int64_t(levels.size());
    std::vector<double> result(levels.size());
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int64_t lo = std::max<std::int64_t>(i - smoothing, 0), hi = std::min(i + smoothing, count - 1);
        double sum = 0;
        for (std::int64_t k = lo; k <= hi; ++k) sum += levels[std::size_t(k)];
        result[std::size_t(i)] = sum / double(hi - lo + 1);
    }
    return result;
}

}  // namespace

LoopLevels::LoopLevels(const AudioEditorBuffer &buffer) : hop(buffer.sampleRate() < 200 ? 1 : buffer.sampleRate() / 100) {
    const std::int64_t frames = buffer.frames(), channels = buffer.channels(), count = (frames + hop - 1) / hop;
    blocks.assign(std::size_t(count), silentDb);
    parallelFor(count, 64, [&](std::int64_t lo, std::int64_t hi) {
        std::vector<float> samples(std::size_t(hop * channels));
        for (std::int64_t i = lo; i < hi; ++i) {
            const FrameRange range{i * hop, std::min((i + 1) * hop, frames)};
            buffer.copyFrames(range, samples.data());
            const std::int64_t n = range.count() * channels;
            blocks[std::size_t(i)] = decibels(sumOfSquares(samples.data(), n) / double(n));
        }
    });
    smoothed = smooth(blocks);
}

double LoopLevels::at(std::int64_t frame) const {
    return smoothed[std::size_t(std::clamp<std::int64_t>(frame / hop, 0, std::int64_t(smoothed.size()) - 1))];
}

std::optional<LoopRegion> loopRegion(const AudioEditorBuffer &buffer, const LoopLevels &levels) {
    const std::vector<double> &blocks = levels.blocks;
    if (blocks.empty()) return std::nullopt;
    const double peak = *std::max_element(blocks.begin(), blocks.end());
    if (peak <= quietDb) return std::nullopt;
    const auto first = std::find_if(blocks.begin(), blocks.end(), [&](double level) { return level >= peak - attackDb; });
    const double end = std::max(peak - decayDb, endDb);
    const auto last = std::find_if(blocks.rbegin(), blocks.rend(), [&](double level) { return level >= end; });
    const std::int64_t frames = buffer.frames(), rate = buffer.sampleRate();
    LoopRegion region;
    region.frames.lo = std::min(frames, (first - blocks.begin() + attackBlocks) * levels.hop);
    region.frames.hi = std::min({region.frames.lo + longestSearch * rate, frames, (blocks.rend() - last) * levels.hop});
    region.minLength = std::max(region.frames.count() / 10, rate / 50);
    return region.frames.count() < 2 * region.minLength ? std::nullopt : std::optional(region);
}

}  // namespace kiv
