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
    lo_ = hi_ = 0;
    pixels_.assign(std::size_t(width) * std::size_t(rows), 0);
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
    // Fewer lanes leave rows that no lane writes any more.
    if (key.lanes != key_.lanes) std::fill(pixels_.begin(), pixels_.end(), 0);
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
    const PixelRows to{pixels_.data(), width_};
    const int cap = key_.look.capped ? devicePixels(capHeight, geometry.size.scale) : 0;
    const bool isLine = geometry.axis.framesPerColumn < 1 && !geometry.isMerged;
    for (std::size_t i = 0; i < geometry.lanes.size(); ++i) {
        const ColumnDrawing drawing{geometry.lanes[i], geometry.gain, key_.look.factor, cap};
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
