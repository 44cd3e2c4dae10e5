#include "Editor/Surfaces/WaveformRaster.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Support/Vectorised.h"

namespace kiv {
namespace {

// The rows of each column: outerLo … outerHi for the extremes, innerLo … innerHi for the rms, both ends included.
struct ColumnRows {
    explicit ColumnRows(std::size_t count) : outerLo(count), outerHi(count), innerLo(count), innerHi(count) {}
    std::vector<std::int32_t> outerLo, outerHi, innerLo, innerHi;
};

class RowScale {
public:
    explicit RowScale(const ColumnDrawing &drawing)
        : lane_(drawing.lane), perUnit_(drawing.gain * drawing.factor * drawing.lane.half), more_(drawing.leastRows - 1) {}
    // The last row of a column that begins with `first` and is as long as it should be at least.
    std::int32_t lastRow(float sample, std::int32_t first) const {
        return std::clamp(first + more_, row(sample), lane_.rows.hi - 1);
    }
    std::int32_t row(float sample) const {
        const double y = std::clamp(lane_.centre - double(sample) * perUnit_, double(lane_.rows.lo), lane_.rows.hi - 0.5);
        return std::int32_t(y);
    }

private:
    WaveLane lane_;
    double perUnit_;
    std::int32_t more_;
};

void setRows(ColumnRows &rows, std::size_t i, const ColumnLevel &level, const ColumnLevel &before, const RowScale &scale) {
    rows.outerLo[i] = rows.innerLo[i] = 1;  // none
    rows.outerHi[i] = rows.innerHi[i] = 0;
    if (level.isEmpty()) return;
    const float min = before.isEmpty() ? level.min : std::min(level.min, before.max);
    const float max = before.isEmpty() ? level.max : std::max(level.max, before.min);
    rows.outerLo[i] = scale.row(max);
    rows.outerHi[i] = scale.lastRow(min, rows.outerLo[i]);
    if (level.rms <= 0) return;
    rows.innerLo[i] = scale.row(std::min(max, level.rms));
    rows.innerHi[i] = scale.row(std::max(min, -level.rms));
}

KIV_VECTORISED void fillRow(Pixel *to, std::int32_t row, std::int32_t count, const std::int32_t *outerLo,
                            const std::int32_t *outerHi, const std::int32_t *innerLo, const std::int32_t *innerHi, Pixel outer,
                            Pixel inner) {
    for (std::int32_t x = 0; x < count; ++x) {
        const Pixel inOuter = row >= outerLo[x] && row <= outerHi[x] ? outer : 0;
        to[x] = row >= innerLo[x] && row <= innerHi[x] ? inner : inOuter;
    }
}

void drawCaps(PixelRows to, int x, std::span<const ColumnLevel> columns, const ColumnDrawing &drawing, Pixel over) {
    const PixelSpan rows = drawing.lane.rows;
    const auto draw = [&](int column, int row) {
        for (int i = 0; i < drawing.capRows; ++i) *to.at(column, row + i) = over;
    };
    for (std::size_t i = 1; i < columns.size(); ++i) {
        if (columns[i].isEmpty()) continue;
        if (columns[i].max > 1) draw(x + int(i) - 1, rows.lo);
        if (columns[i].min < -1) draw(x + int(i) - 1, rows.hi - drawing.capRows);
    }
}

}  // namespace

void rasterColumns(PixelRows to, int x, std::span<const ColumnLevel> columns, const ColumnDrawing &drawing,
                   const WaveformInk &ink) {
    const std::size_t count = columns.size() - 1;
    const RowScale scale(drawing);
    ColumnRows rows(count);
    for (std::size_t i = 0; i < count; ++i) setRows(rows, i, columns[i + 1], columns[i], scale);
    const RowScale untouched({drawing.lane, drawing.gain, 1});
    const std::int32_t fullTop = untouched.row(1), fullFoot = untouched.row(-1);
    const bool capped = drawing.capRows > 0;
    for (int row = drawing.lane.rows.lo; row < drawing.lane.rows.hi; ++row) {
        const bool isOver = !capped && (row < fullTop || row > fullFoot);
        const Pixel outer = isOver ? ink.over : ink.outer, inner = isOver || ink.inner == 0 ? outer : ink.inner;
        fillRow(to.at(x, row), row, std::int32_t(count), rows.outerLo.data(), rows.outerHi.data(), rows.innerLo.data(),
                rows.innerHi.data(), outer, inner);
    }
    if (capped) drawCaps(to, x, columns, drawing, ink.over);
}

}  // namespace kiv
