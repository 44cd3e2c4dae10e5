#include "Editor/Surfaces/Coverage.h"

#include <algorithm>
#include <cmath>

#include "Support/Vectorised.h"

namespace kiv {
namespace {

struct Segment {
    float ax, ay, dx, dy, perLength2, reach;  // reach: from the middle to where coverage ends
};

// The coverage of a column's pixels, whose middles stand at x, lo + 0.5, lo + 1.5 …: the distance to the segment, ramped over
// one pixel.
KIV_VECTORISED void coverColumn(std::uint8_t *alpha, int count, float x, float lo, Segment s) {
    for (int i = 0; i < count; ++i) {
        const float px = x - s.ax, py = lo + float(i) + 0.5f - s.ay;
        float t = (px * s.dx + py * s.dy) * s.perLength2;
        t = t < 0 ? 0 : t > 1 ? 1 : t;
        const float ex = px - t * s.dx, ey = py - t * s.dy;
        float cover = s.reach - std::sqrt(ex * ex + ey * ey);
        cover = cover < 0 ? 0 : cover > 1 ? 1 : cover;
        const auto value = std::uint8_t(int(cover * 255 + 0.5f));
        alpha[i] = value > alpha[i] ? value : alpha[i];
    }
}

Pixel over(Pixel below, Pixel color, std::uint32_t alpha) {
    Pixel result = 0;
    const std::uint32_t rest = 255 - (color >> 24) * alpha / 255;
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t sum = ((color >> shift) & 255) * alpha + ((below >> shift) & 255) * rest;
        result |= std::min((sum + 127) / 255, 255u) << shift;
    }
    return result;
}

// The rows of a column between x − reach and x + reach that a segment may cover.
PixelSpan rowsNear(const Segment &s, float x) {
    float t0 = 0, t1 = 1;
    if (s.dx != 0) {
        t0 = std::clamp((x - s.reach - s.ax) / s.dx, 0.0f, 1.0f);
        t1 = std::clamp((x + s.reach - s.ax) / s.dx, 0.0f, 1.0f);
    }
    const float y0 = s.ay + t0 * s.dy, y1 = s.ay + t1 * s.dy;
    return {pixelAt(double(std::min(y0, y1) - s.reach)), pixelAt(double(std::max(y0, y1) + s.reach)) + 1};
}

}  // namespace

Coverage::Coverage(int width, int height)
    : width_(width),
      height_(height),
      alpha_(std::size_t(width) * std::size_t(height)),
      touched_(std::size_t(width), PixelSpan{height, 0}) {}

void Coverage::addLine(float ax, float ay, float bx, float by, float radius) {
    const float dx = bx - ax, dy = by - ay, length2 = dx * dx + dy * dy;
    const Segment segment{ax, ay, dx, dy, length2 > 0 ? 1 / length2 : 0, radius + 0.5f};
    const int lo = std::max(pixelAt(double(std::min(ax, bx) - segment.reach)), 0);
    const int hi = std::min(pixelAt(double(std::max(ax, bx) + segment.reach)) + 1, width_);
    for (int x = lo; x < hi; ++x) {
        const PixelSpan rows = intersected(rowsNear(segment, float(x) + 0.5f), {0, height_});
        if (rows.isEmpty()) continue;
        PixelSpan &touched = touched_[std::size_t(x)];
        touched = {std::min(touched.lo, rows.lo), std::max(touched.hi, rows.hi)};
        coverColumn(&alpha_[std::size_t(x) * std::size_t(height_) + std::size_t(rows.lo)], rows.count(), float(x) + 0.5f,
                    float(rows.lo), segment);
    }
}

void Coverage::paint(PixelRows to, int x, int row, const RowColors &colors) {
    for (int column = 0; column < width_; ++column) {
        PixelSpan &rows = touched_[std::size_t(column)];
        std::uint8_t *alpha = &alpha_[std::size_t(column) * std::size_t(height_)];
        for (int y = rows.lo; y < rows.hi; ++y) {
            Pixel &pixel = *to.at(x + column, row + y);
            const Pixel color = colors.at(y);
            if (alpha[y] == 255 && color >> 24 == 255)
                pixel = color;
            else if (alpha[y] > 0)
                pixel = over(pixel, color, alpha[y]);
            alpha[y] = 0;
        }
        rows = {height_, 0};
    }
}

}  // namespace kiv
