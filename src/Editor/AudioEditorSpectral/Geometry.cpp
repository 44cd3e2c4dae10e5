#include "Editor/AudioEditorSpectral/Geometry.h"

#include <algorithm>
#include <cmath>

namespace kiv::AudioEditorSpectral {
namespace {

constexpr std::int64_t mostColumns = 24000;

int fftSizeFor(std::int64_t rate) {
    if (rate <= 50000) return 2048;
    return rate <= 100000 ? 4096 : 8192;
}

// Of the whole axis; a rate too low for one octave is treated as if it had one.
double octaves(std::int64_t rate) { return std::max(std::log2(double(rate) / 2 / lowestHz), 1.0); }

std::int64_t roundedUp(std::int64_t value, std::int64_t unit) { return (value + unit - 1) / unit; }

}  // namespace

ColumnRange ColumnRange::with(ColumnRange other) const {
    if (isEmpty()) return other;
    if (other.isEmpty()) return *this;
    return {std::min(lo, other.lo), std::max(hi, other.hi)};
}

Geometry::Geometry(std::int64_t frames, std::int64_t rate)
    : sampleRate(rate),
      frameCount(frames),
      fftSize(fftSizeFor(rate)),
      hop(fftSize / 4),
      columnFrames(std::max<std::int64_t>(roundedUp(frames, mostColumns), hop)),
      columns(std::max<std::int64_t>(roundedUp(frames, columnFrames), 1)) {}

std::int64_t Geometry::transforms() const { return frameCount > 0 ? roundedUp(frameCount + fftSize - hop, hop) : 0; }

Geometry::ColumnPosition Geometry::columnPosition(std::int64_t transform) const {
    const double q = double(start(transform) + fftSize / 2) / double(columnFrames) - 0.5;
    if (q <= 0) return {0, 0, 0};
    const auto c0 = std::int64_t(q);
    if (c0 >= columns - 1) return {columns - 1, columns - 1, 0};
    return {c0, c0 + 1, float(q - double(c0))};
}

// A column is read by the transforms whose middle lies within a column's width of its own middle, the outer columns by all
// beyond them too.
ColumnRange Geometry::transformsReading(ColumnRange range) const {
    const auto transformAt = [&](double column) {
        return (column * double(columnFrames) - fftSize / 2 + (fftSize - hop)) / double(hop);
    };
    const std::int64_t lo = range.lo <= 0 ? 0 : std::int64_t(std::floor(transformAt(double(range.lo) - 0.5)));
    const std::int64_t hi =
        range.hi >= columns ? transforms() : std::int64_t(std::ceil(transformAt(double(range.hi) + 0.5))) + 1;
    return {std::clamp<std::int64_t>(lo, 0, transforms()), std::clamp<std::int64_t>(hi, 0, transforms())};
}

FrameRange Geometry::framesUnder(ColumnRange numbers) const {
    if (numbers.isEmpty()) return {0, 0};
    const std::int64_t lo = std::clamp<std::int64_t>(start(numbers.lo), 0, frameCount);
    return {lo, std::clamp<std::int64_t>(start(numbers.hi - 1) + fftSize, lo, frameCount)};
}

ColumnRange Geometry::clamped(ColumnRange range) const {
    const std::int64_t lo = std::clamp<std::int64_t>(range.lo, 0, columns);
    return {lo, std::clamp<std::int64_t>(range.hi, lo, columns)};
}

double Geometry::bandHz(double band) const { return lowestHz * std::exp2(band / (bandCount - 1) * octaves(sampleRate)); }

double Geometry::bandAt(double hz) const {
    if (!(hz > lowestHz)) return 0;
    return std::min(std::log2(hz / lowestHz) / octaves(sampleRate), 1.0) * (bandCount - 1);
}

std::vector<BinBand> binBands(const Geometry &geometry) {
    std::vector<BinBand> bands;
    for (int k = 0; k <= geometry.fftSize / 2; ++k) {
        const double position = geometry.bandAt(double(geometry.sampleRate) * k / geometry.fftSize);
        const int band = std::min(int(position), bandCount - 2);
        bands.push_back({band, float(position - band)});
    }
    return bands;
}

}  // namespace kiv::AudioEditorSpectral
