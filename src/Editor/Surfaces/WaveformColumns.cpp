#include "Editor/Surfaces/WaveformColumns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "Support/Vectorised.h"

namespace kiv {
namespace {

constexpr std::int64_t blockSize = AudioEditorPeaks::blockSize;
constexpr std::size_t lanes = 16;
constexpr float infinity = std::numeric_limits<float>::infinity();

// Extremes and sums of squares in 16 lanes: value i goes to lane i mod 16. NaN is passed over.
struct Accumulator {
    std::array<float, lanes> mins, maxs, sums;

    Accumulator() {
        mins.fill(infinity);
        maxs.fill(-infinity);
        sums.fill(0);
    }
};

void add(float value, std::size_t lane, Accumulator &to) {
    to.mins[lane] = value < to.mins[lane] ? value : to.mins[lane];
    to.maxs[lane] = value > to.maxs[lane] ? value : to.maxs[lane];
    to.sums[lane] += value == value ? value * value : 0;
}

KIV_VECTORISED void addSamples(const float *samples, std::size_t count, Accumulator &to) {
    float mins[lanes], maxs[lanes], sums[lanes];
    std::copy_n(to.mins.data(), lanes, mins);
    std::copy_n(to.maxs.data(), lanes, maxs);
    std::copy_n(to.sums.data(), lanes, sums);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        for (std::size_t l = 0; l < lanes; ++l) {
            const float v = samples[i + l];
            mins[l] = v < mins[l] ? v : mins[l];
            maxs[l] = v > maxs[l] ? v : maxs[l];
            sums[l] += v == v ? v * v : 0;
        }
    std::copy_n(mins, lanes, to.mins.data());
    std::copy_n(maxs, lanes, to.maxs.data());
    std::copy_n(sums, lanes, to.sums.data());
    for (std::size_t l = 0; i < count; ++i, ++l) add(samples[i], l, to);
}

KIV_VECTORISED void addBlocks(const float *mins, const float *maxs, const float *powers, std::size_t count, Accumulator &to) {
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        for (std::size_t l = 0; l < lanes; ++l) {
            to.mins[l] = mins[i + l] < to.mins[l] ? mins[i + l] : to.mins[l];
            to.maxs[l] = maxs[i + l] > to.maxs[l] ? maxs[i + l] : to.maxs[l];
            // An unknown block makes the sum negative for good.
            to.sums[l] += powers[i + l] < 0 ? -infinity : powers[i + l];
        }
    for (std::size_t l = 0; i < count; ++i, ++l) {
        to.mins[l] = mins[i] < to.mins[l] ? mins[i] : to.mins[l];
        to.maxs[l] = maxs[i] > to.maxs[l] ? maxs[i] : to.maxs[l];
        to.sums[l] += powers[i] < 0 ? -infinity : powers[i];
    }
}

// Folds the lanes offset, offset + step … into one level; `count` values went into them.
ColumnLevel folded(const Accumulator &from, std::size_t offset, std::size_t step, double count) {
    ColumnLevel level{infinity, -infinity, -1};
    double sum = 0;
    for (std::size_t l = offset; l < lanes; l += step) {
        level.min = std::min(level.min, from.mins[l]);
        level.max = std::max(level.max, from.maxs[l]);
        sum += double(from.sums[l]);
    }
    if (level.isEmpty()) return {0, 0, 0};  // nothing but NaN
    level.rms = sum >= 0 ? float(std::sqrt(sum / count)) : -1;
    return level;
}

void measureBlocks(const SoundSource &source, FrameRange range, ColumnLevel *out) {
    const auto lo = std::size_t(range.lo / blockSize), hi = std::size_t((range.hi - 1) / blockSize + 1);
    for (std::size_t c = 0; c < source.peaks.mins.size(); ++c) {
        Accumulator sums;
        addBlocks(&source.peaks.mins[c][lo], &source.peaks.maxs[c][lo], &source.powers.channels[c][lo], hi - lo, sums);
        out[c] = folded(sums, 0, 1, double(hi - lo));
    }
}

void measureSamples(const AudioEditorBuffer &buffer, FrameRange range, ColumnLevel *out) {
    const auto channels = std::size_t(buffer.channels());
    Accumulator sums;
    buffer.forEachSpan(range,
                       [&](std::span<const float> samples, FrameRange) { addSamples(samples.data(), samples.size(), sums); });
    for (std::size_t c = 0; c < channels; ++c) out[c] = folded(sums, c, channels, double(range.count()));
}

// For channel counts that do not divide the number of lanes.
void measureStrided(const AudioEditorBuffer &buffer, FrameRange range, ColumnLevel *out) {
    const auto channels = std::size_t(buffer.channels());
    for (std::size_t c = 0; c < channels; ++c) {
        Accumulator sums;
        buffer.forEachSpan(range, [&](std::span<const float> samples, FrameRange) {
            for (std::size_t i = c; i < samples.size(); i += channels) add(samples[i], 0, sums);
        });
        out[c] = folded(sums, 0, lanes, double(range.count()));
    }
}

// The extremes of all channels, and the root of their mean power.
ColumnLevel mergedLevel(const std::vector<ColumnLevel> &channels) {
    ColumnLevel merged = channels[0];
    double power = 0;
    bool known = true;
    for (const ColumnLevel &level : channels) {
        merged.min = std::min(merged.min, level.min);
        merged.max = std::max(merged.max, level.max);
        power += double(level.rms) * double(level.rms);
        known = known && level.rms >= 0;
    }
    merged.rms = known ? float(std::sqrt(power / double(channels.size()))) : -1;
    return merged;
}

// The frames of a column that there are.
std::optional<FrameRange> rangeOf(const SoundSource &source, double framesPerColumn, std::int64_t column) {
    const auto lo = std::int64_t(std::floor(double(column) * framesPerColumn));
    const auto hi = std::max(std::int64_t(std::floor(double(column + 1) * framesPerColumn)), lo + 1);
    return source.buffer.clampedRange({lo, hi});
}

// The same from the samples without telling the channels apart, of which there may be tens of thousands.
ColumnLevel mergedSamples(const AudioEditorBuffer &buffer, FrameRange range) {
    Accumulator sums;
    buffer.forEachSpan(range,
                       [&](std::span<const float> samples, FrameRange) { addSamples(samples.data(), samples.size(), sums); });
    return folded(sums, 0, 1, double(range.count()) * double(buffer.channels()));
}

}  // namespace

void measureColumn(const SoundSource &source, double framesPerColumn, std::int64_t column, ColumnLevel *out) {
    const auto range = rangeOf(source, framesPerColumn, column);
    if (!range)
        std::fill_n(out, source.buffer.channels(), ColumnLevel{});
    else if (framesPerColumn >= double(blockSize))
        measureBlocks(source, *range, out);
    else if (lanes % std::size_t(source.buffer.channels()) == 0)
        measureSamples(source.buffer, *range, out);
    else
        measureStrided(source.buffer, *range, out);
}

std::int64_t WaveformColumns::update(const SoundSource &source, double framesPerColumn, bool merged, std::int64_t first,
                                     std::int64_t count) {
    const Key key{source.generation, source.powersRevision, framesPerColumn, merged};
    if (key == key_ && first == first_ && count == this->count()) return 0;
    const std::int64_t keptLo = key == key_ ? std::max(first, first_) : first;
    const std::int64_t keptHi = key == key_ ? std::max(std::min(first + count, first_ + this->count()), keptLo) : first;
    const auto old = std::exchange(lanes_, {});
    const std::int64_t oldFirst = std::exchange(first_, first);
    key_ = key;
    channels_.resize(std::size_t(source.buffer.channels()));
    lanes_.assign(merged ? 1 : channels_.size(), std::vector<ColumnLevel>(std::size_t(count)));
    for (std::size_t lane = 0; keptLo < keptHi && lane < lanes_.size(); ++lane)
        std::copy(old[lane].begin() + (keptLo - oldFirst), old[lane].begin() + (keptHi - oldFirst),
                  lanes_[lane].begin() + (keptLo - first));
    for (std::int64_t column = first; column < first + count; ++column)
        if (column < keptLo || column >= keptHi) measure(source, column);
    return count - (keptHi - keptLo);
}

void WaveformColumns::measure(const SoundSource &source, std::int64_t column) {
    const auto index = std::size_t(column - first_);
    if (key_.merged && key_.framesPerColumn < double(blockSize)) {
        const auto range = rangeOf(source, key_.framesPerColumn, column);
        lanes_[0][index] = range ? mergedSamples(source.buffer, *range) : ColumnLevel{};
        return;
    }
    measureColumn(source, key_.framesPerColumn, column, channels_.data());
    if (key_.merged)
        lanes_[0][index] = mergedLevel(channels_);
    else
        for (std::size_t c = 0; c < channels_.size(); ++c) lanes_[c][index] = channels_[c];
}

}  // namespace kiv
