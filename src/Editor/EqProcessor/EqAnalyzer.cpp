#include "Editor/EqProcessor/EqAnalyzer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kiv {
namespace {

constexpr double rise = 0.5, fall = 0.08;
constexpr double tiltDbPerOctave = 3, tiltCentreHz = 1000;

// Half of a sine's amplitude falls into its bin, and the window's power is its mean square of 3/8 brought to 1; the square of
// both is what a full-scale sine's bin holds.
constexpr double powerScale = 4 * 1.5 / (double(EqAnalyzer::fftSize) * EqAnalyzer::fftSize);

double tiltDb(double hz) { return tiltDbPerOctave * std::log2(std::max(hz, 1.0) / tiltCentreHz); }

}  // namespace

// A Hann window of unit power.
EqAnalyzer::EqAnalyzer() : window_(fftSize), windowed_(makeFftReals(fftSize)), spectrum_(makeFftBins(bins + 1)) {
    for (std::size_t i = 0; i < window_.size(); ++i)
        window_[i] = float(std::sqrt(8.0 / 3) * 0.5 * (1 - std::cos(2 * std::numbers::pi * double(i) / fftSize)));
    reset(input);
    reset(output);
}

void EqAnalyzer::push(std::span<const float> samples, Curve curve) {
    if (samples.size() != fftSize) return;
    for (std::size_t i = 0; i < fftSize; ++i) windowed_[i] = samples[i] * window_[i];
    fft_.forward(windowed_.get(), spectrum_.get());
    for (std::size_t k = 0; k < bins; ++k) {
        const double levelDb = 10 * std::log10(std::max(double(std::norm(spectrum_[k])) * powerScale, 1e-20));
        double &held = spectrumDb_[curve][k];
        held += (levelDb - held) * (levelDb >= held ? rise : fall);
    }
    hasData_[curve] = true;
}

void EqAnalyzer::reset(Curve curve) {
    spectrumDb_[curve].fill(silenceDb);
    hasData_[curve] = false;
}

std::optional<std::vector<double>> EqAnalyzer::curve(Curve curve, const EqGrid &grid, std::span<const double> xs,
                                                     double sampleRate) const {
    if (!hasData_[curve]) return std::nullopt;
    const auto &levels = spectrumDb_[curve];
    const auto hzAt = [&](double x) { return grid.hz(std::clamp(x, 0.0, std::max(grid.width, 0.0))); };
    const auto binAt = [&](double x) { return hzAt(x) / (sampleRate / fftSize); };
    const auto level = [&](double bin) { return levels[std::size_t(std::clamp(bin, 1.0, double(bins - 1)))]; };
    const auto levelAt = [&](double x) {
        const double lo = std::floor(binAt(x - 1)), hi = std::floor(binAt(x + 1));
        if (hi - lo < 2)
            return std::lerp(level(std::floor(binAt(x))), level(std::floor(binAt(x)) + 1), binAt(x) - std::floor(binAt(x)));
        double most = silenceDb;
        for (double bin = std::max(lo, 1.0); bin <= std::min(hi, double(bins - 1)); ++bin) most = std::max(most, level(bin));
        return most;
    };
    std::vector<double> result;
    result.reserve(xs.size());
    for (const double x : xs) {
        const double hz = hzAt(x);
        result.push_back(hz < sampleRate / 2 ? std::max(levelAt(x) + tiltDb(hz), floorDb) : floorDb);
    }
    return result;
}

}  // namespace kiv
