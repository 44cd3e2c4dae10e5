#pragma once

#include <cstdint>
#include <vector>

#include "Editor/Surfaces/WaveformRaster.h"

namespace kiv {

// One colour for some rows, counted from the top of the rectangle, and one for the others.
struct RowColors {
    PixelSpan rows;
    Pixel inside = 0, outside = 0;

    Pixel at(int row) const { return rows.contains(row) ? inside : outside; }
};

// How much of each pixel of a rectangle is covered by round-ended lines and discs, 0 … 255. Shapes that overlap cover no more
// than the larger of them. Places are in pixels from the rectangle's upper left corner; what lies outside is left out.
class Coverage {
public:
    Coverage(int width, int height);

    void addLine(float ax, float ay, float bx, float by, float radius);
    void addDisc(float x, float y, float radius) { addLine(x, y, x, y, radius); }
    // Lays colours over the pixels at x, row as far as they are covered, and starts anew.
    void paint(PixelRows to, int x, int row, const RowColors &colors);

private:
    int width_, height_;
    std::vector<std::uint8_t> alpha_;  // column by column
    std::vector<PixelSpan> touched_;   // rows of each column
};

}  // namespace kiv
