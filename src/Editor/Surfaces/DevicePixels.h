#pragma once

#include <algorithm>
#include <cmath>

// Sizes and places in whole device pixels. `scale` is device pixels a logical pixel.
namespace kiv {

// A length given in logical pixels, at least one device pixel.
inline int devicePixels(double logical, double scale) { return std::max(int(std::lround(logical * scale)), 1); }
// The thinnest line: one logical pixel, rounded down so that it stays thin at 1.25 and 1.5.
inline int hairline(double scale) { return std::max(int(scale), 1); }
// A logical length that holds text, grown with it in steps of 4; it never shrinks.
inline int grownWithText(int length, double textFactor) {
    return length + 4 * std::max(0, int(std::lround(length * (textFactor - 1) / 4)));
}
// The pixel that holds a place; places far outside any screen come back as far outside.
inline int pixelAt(double place) { return int(std::floor(std::clamp(place, -1e8, 1e8))); }

// Columns or rows lo ..< hi.
struct PixelSpan {
    int lo = 0, hi = 0;

    int count() const { return hi - lo; }
    bool isEmpty() const { return hi <= lo; }
    bool contains(int pixel) const { return pixel >= lo && pixel < hi; }
    friend bool operator==(const PixelSpan &, const PixelSpan &) = default;
};

inline PixelSpan intersected(PixelSpan a, PixelSpan b) { return {std::max(a.lo, b.lo), std::min(a.hi, b.hi)}; }

}  // namespace kiv
