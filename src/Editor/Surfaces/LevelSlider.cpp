#include "Editor/Surfaces/LevelSlider.h"

#include <algorithm>
#include <cmath>

namespace kiv {

namespace {

constexpr double stopPixels = 4;

}  // namespace

double LevelSlider::x(double value) const { return left + width * (std::clamp(value, lo, hi) - lo) / (hi - lo); }

double LevelSlider::value(double at) const {
    if (lo <= 0 && hi >= 0 && std::fabs(at - x(0)) <= stopPixels) return 0;
    const double raw = lo + (hi - lo) * (at - left) / width;
    return std::clamp(std::round(raw * 10) / 10, lo, hi);
}

std::string LevelSlider::tickLabel(int tick) const {
    const int value = int(std::lround(tickValue(tick)));
    return (value < 0 ? "−" : value > 0 ? "+" : "") + std::to_string(std::abs(value));
}

}  // namespace kiv
