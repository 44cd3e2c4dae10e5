#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Editor/Surfaces/WaveformColumns.h"
#include "Editor/Surfaces/WaveformGeometry.h"

// The pixels of a sound's columns. Colours are 0xAARRGGBB with the colours multiplied by alpha; pixels without sound are 0.
namespace kiv {

using Pixel = std::uint32_t;

// Rows of pixels, `stride` apart; row 0 is the view's.
struct PixelRows {
    Pixel *pixels = nullptr;
    std::ptrdiff_t stride = 0;

    Pixel *at(int x, int row) const { return pixels + std::ptrdiff_t(row) * stride + x; }
};

struct WaveformInk {
    Pixel outer = 0;  // the extremes of a column
    Pixel inner = 0;  // its rms; 0: not drawn
    Pixel over = 0;   // above full scale
    Pixel curve = 0;  // the line through single samples, and their dots
    Pixel stem = 0;   // from the centre line to a dot
    Pixel ring = 0;   // around a dot; 0: dots and stems are not drawn

    friend bool operator==(const WaveformInk &, const WaveformInk &) = default;
};

// How a sound's columns are drawn.
struct ColumnDrawing {
    WaveLane lane;
    double gain = 1;    // of the vertical zoom
    double factor = 1;  // applied to the sound
    int leastRows = 1;  // of a column, so that silence is as thick as a hairline
    int capRows = 0;    // of the cap at the lane's edge over a column above full scale; 0: the rows above full scale are drawn
                        // in `over` instead
};

// Writes all rows of the lane for columns.size() − 1 columns from x on. The first of `columns` is the neighbour at the left:
// every column is stretched to touch the one before it.
void rasterColumns(PixelRows to, int x, std::span<const ColumnLevel> columns, const ColumnDrawing &drawing,
                   const WaveformInk &ink);

}  // namespace kiv
