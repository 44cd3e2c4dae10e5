#include "Editor/Surfaces/WaveformImage.h"

#include <algorithm>
#include <utility>

#include "Editor/Surfaces/WaveformCurve.h"

namespace kiv {
namespace {

constexpr double capHeight = 3;

// k modulo the width, for negative k too.
int wrapped(std::int64_t column, int width) {
    const auto rest = int(column % width);
    return rest < 0 ? rest + width : rest;
}

}  // namespace

void WaveformImage::resize(int width, int rows) {
    if (width == width_ && rows == rows_) return;
    width_ = width;
    rows_ = rows;
    key_ = {};
    memory_ = {};  // so that the new one may lie where the old one did
    memory_ = SampleMemory(std::size_t(width) * std::size_t(rows));
}

// The rows that no lane writes.
void WaveformImage::clearBetween(const std::vector<WaveLane> &lanes) {
    for (std::size_t i = 0, count = lanes.size(); i <= count; ++i) {
        const int lo = i == 0 ? 0 : lanes[i - 1].rows.hi, hi = i == count ? rows_ : lanes[i].rows.lo;
        if (lo < hi) std::fill(target().at(0, lo), target().at(0, hi), 0);
    }
}

int WaveformImage::update(const SoundSource &source, const WaveformColumns &columns, const WaveformGeometry &geometry,
                          const Look &look) {
    resize(geometry.columns(), geometry.rows());
    if (width_ == 0 || rows_ == 0) return 0;
    Key key{source.generation,
            source.powersRevision,
            geometry.axis.framesPerColumn,
            geometry.size.scale,
            geometry.gain,
            geometry.lanes,
            look};
    if (key.lanes != key_.lanes) clearBetween(key.lanes);
    if (key != key_) lo_ = hi_ = 0;
    key_ = std::move(key);
    const std::int64_t lo = geometry.axis.firstColumn, hi = lo + width_;
    origin_ = wrapped(lo, width_);
    if (lo_ == hi_ || hi_ <= lo || lo_ >= hi) lo_ = hi_ = lo;
    const std::int64_t keptLo = std::max(lo, lo_), keptHi = std::min(hi, hi_);
    draw(source, columns, geometry, lo, keptLo);
    draw(source, columns, geometry, std::max(keptHi, keptLo), hi);
    lo_ = lo;
    hi_ = hi;
    return width_ - int(std::max<std::int64_t>(keptHi - keptLo, 0));
}

void WaveformImage::draw(const SoundSource &source, const WaveformColumns &columns, const WaveformGeometry &geometry,
                         std::int64_t lo, std::int64_t hi) {
    while (lo < hi) {
        const int x = wrapped(lo, width_), count = int(std::min<std::int64_t>(hi - lo, width_ - x));
        drawPiece(source, columns, geometry, lo, x, count);
        lo += count;
    }
}

void WaveformImage::drawPiece(const SoundSource &source, const WaveformColumns &columns, const WaveformGeometry &geometry,
                              std::int64_t column, int x, int count) {
    const PixelRows to = target();
    const int cap = key_.look.capped ? devicePixels(capHeight, geometry.size.scale) : 0;
    const bool isLine = geometry.axis.framesPerColumn < 1 && !geometry.isMerged;
    for (std::size_t i = 0; i < geometry.lanes.size(); ++i) {
        const ColumnDrawing drawing{geometry.lanes[i], geometry.gain, key_.look.factor, hairline(geometry.size.scale), cap};
        if (isLine) {
            const TimeAxis axis{column, geometry.axis.framesPerColumn};
            rasterCurve(to, x, count, source.buffer, std::int64_t(i), axis, geometry.size.scale, drawing, key_.look.ink);
        } else {
            const std::size_t before = std::size_t(column - 1 - columns.first());
            rasterColumns(to, x, std::span(columns.lane(i)).subspan(before, std::size_t(count) + 1), drawing, key_.look.ink);
        }
    }
}

}  // namespace kiv
