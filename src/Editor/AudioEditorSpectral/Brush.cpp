#include "Editor/AudioEditorSpectral/Brush.h"

#include <algorithm>
#include <cmath>

#include "Editor/AudioEditorSpectral/Geometry.h"
#include "Support/DecimalText.h"

namespace kiv::AudioEditorSpectral {
namespace {

constexpr double mostDb = 12;

double coverageAt(double distance) {
    const double t = std::clamp((1 - distance) / 0.5, 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

}  // namespace

std::string_view storedText(Brush brush) { return brush == Brush::accentuate ? "accentuate" : "attenuate"; }

Brush brushFromText(std::string_view text) { return text == "accentuate" ? Brush::accentuate : Brush::attenuate; }

Brush otherBrush(Brush brush) { return brush == Brush::attenuate ? Brush::accentuate : Brush::attenuate; }

float passFactor(Brush brush, int intensity) {
    const double share = std::clamp(intensity, 0, 100) / 100.0;
    return float(brush == Brush::attenuate ? 1 - share : std::pow(10.0, share * mostDb / 20));
}

std::string levelText(Brush brush, int intensity) {
    const double factor = double(passFactor(brush, intensity));
    if (!(factor > 0)) return "-∞ dB";
    const double db = 20 * std::log10(factor);
    if (std::abs(db) <= 0.05) return "0 dB";
    return (db > 0 ? "+" : "") + decimalText(db, 1) + " dB";
}

// Silence is the floor's decibels, so that its rim, too, falls off in decibels.
BrushProfile::BrushProfile(float factor) {
    const double whole = std::log(std::max(double(factor), double(floorGain)));
    for (int i = 0; i <= steps; ++i) {
        const double coverage = coverageAt(std::sqrt(double(i) / steps));
        values_[std::size_t(i)] = {float(coverage), coverage < 1 ? float(std::exp(whole * coverage)) : factor};
    }
}

}  // namespace kiv::AudioEditorSpectral
