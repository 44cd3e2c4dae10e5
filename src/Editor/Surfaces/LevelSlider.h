#pragma once

#include <string>
#include <vector>

namespace kiv {

// A slider for decibels with a stop at 0: values and pixels of its track. The thumb's middle runs from the middle of the first
// tick to the middle of the last.
struct LevelSlider {
    double lo = -24, hi = 24;
    double origin = 0;           // from where the track is filled
    int ticks = 5;               // evenly spaced, both ends included
    double left = 0, width = 1;  // of the track between the middles of the first and the last tick

    double x(double value) const;
    // The value under x, in tenths, within the range; 0 within 4 pixels of it.
    double value(double x) const;
    double tickValue(int tick) const { return lo + (hi - lo) * tick / (ticks - 1); }
    std::string tickLabel(int tick) const;
};

// One step of wheel and keys, and the small one with Shift.
inline constexpr double levelStepDb = 0.5, levelSmallStepDb = 0.1;

}  // namespace kiv
