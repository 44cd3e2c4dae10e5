#include "Editor/AudioEditorCore/AudioEditorTimeGrid.h"

#include <algorithm>
#include <cmath>

#include "Support/DecimalText.h"

namespace kiv::AudioEditorTimeGrid {
namespace {

// The smallest of 1, 2, 5, 10, 20, 50 … that is at least `value`.
double oneTwoFive(double value) {
    double decade = 1;
    while (decade * 5 < value) decade *= 10;
    for (const double digit : {1, 2})
        if (digit * decade >= value) return digit * decade;
    return 5 * decade;
}

std::string milliseconds(double seconds) {
    const double ms = std::round(seconds * 1'000'000) / 1000;
    return decimalText(ms, ms == std::floor(ms) ? 0 : 1) + " ms";
}

std::string clock(double seconds, int decimals) {
    const auto minutes = std::int64_t((seconds + 1e-9) / 60);
    const int width = decimals > 0 ? decimals + 3 : 2;
    // Just under a minute's end, within the tolerance above, the rest is a rounding error below zero.
    const double rest = std::max(seconds - 60 * double(minutes), 0.0);
    return std::to_string(minutes) + ":" + decimalText(rest, decimals, width);
}

}  // namespace

std::string label(double seconds, double step) {
    if (std::abs(seconds) < 1e-9) return "0 s";
    if (step < 1 && seconds < 1) return milliseconds(seconds);
    const int decimals = step >= 1 ? 0 : int(std::clamp(std::ceil(-std::log10(step)), 0.0, 3.0));
    return seconds < 60 ? decimalText(seconds, decimals) + " s" : clock(seconds, decimals);
}

std::string fineLabel(double seconds, double step) {
    const auto decimals = [](double unitStep) { return int(std::clamp(std::ceil(-std::log10(unitStep) - 1e-9), 0.0, 9.0)); };
    if (std::abs(seconds) < 1e-9) return "0 s";
    if (seconds < 1 - 1e-9) return decimalText(seconds * 1000, decimals(step * 1000)) + " ms";
    return seconds < 60 ? decimalText(seconds, decimals(step)) + " s" : clock(seconds, decimals(step));
}

double labelPrecision(double seconds) { return seconds < 1 ? 0.0001 : 0.001; }

double secondsStep(double secondsPerPixel, double minPixels) {
    constexpr double perSecond = 1e9;  // counted in nanoseconds, so that every step is an exact quotient
    const double least = secondsPerPixel * minPixels;
    if (least <= 10) return oneTwoFive(std::max(least * perSecond * (1 - 1e-12), 1.0)) / perSecond;
    for (const double step : {15., 30., 60., 120., 300., 600., 900., 1800.})
        if (step >= least) return step;
    double hours = 1;
    while (hours * 3600 < least && hours < 1e12) hours *= 2;
    return hours * 3600;
}

std::int64_t samplesStep(double framesPerPixel, double minPixels) {
    constexpr double most = 1e18;
    return std::int64_t(oneTwoFive(std::clamp(framesPerPixel * minPixels, 1.0, most)));
}

int minorDivisions(double stepPixels) { return stepPixels >= 70 ? 10 : 5; }

}  // namespace kiv::AudioEditorTimeGrid
