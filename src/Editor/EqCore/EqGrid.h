#pragma once

#include <array>
#include <string>
#include <vector>

namespace kiv {

// The graph's axes: 20 Hz … 20 kHz from left to right, logarithmic; −dbRange … +dbRange from foot to top.
struct EqGrid {
    double width = 0, height = 0;  // points
    double dbRange = 20;

    static constexpr std::array<double, 4> dbRanges{6, 12, 20, 30};
    static constexpr std::array<double, 13> labeledHz{20, 30, 50, 100, 200, 300, 500, 1000, 2000, 3000, 5000, 10000, 20000};

    // The range after this one, the first after the last; one that is not listed becomes 20.
    static double nextDbRange(double dbRange);
    // The lines between the labelled ones: 2 … 9 times each power of ten, up to 20 kHz.
    static const std::vector<double> &minorHz();
    // The lines of the range but the zero line: +step, −step, +2 steps …
    std::vector<double> dbLines() const;

    // Positions outside 0 … width go on in the same way; no width counts as 1.
    double hz(double x) const;
    double x(double hz) const;

    static std::string label(double hz);    // "50", "1k", "1.5k"
    static std::string readout(double hz);  // "99.9 Hz", "200 Hz", "1.25 kHz", "12.0 kHz"
};

}  // namespace kiv
