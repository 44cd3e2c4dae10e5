#pragma once

#include <array>
#include <complex>
#include <optional>
#include <span>
#include <vector>

#include "Editor/EqCore/EqGrid.h"
#include "Support/RealFft.h"

namespace kiv {

// The two smoothed spectra behind the equalizer's graph: of the sound before and after it. Levels are in decibels, scaled so
// that a full-scale sine in the middle of a bin reads 0; they rise fast and fall slowly. One thread at a time.
class EqAnalyzer {
public:
    enum Curve { input, output };
    static constexpr int fftSize = 4096;
    static constexpr double floorDb = -90;  // of a drawn curve

    EqAnalyzer();

    // Takes in exactly fftSize mono samples; any other number is ignored.
    void push(std::span<const float> samples, Curve curve);
    void reset(Curve curve);
    // One level for each horizontal position of the graph, tilted by +3 dB an octave around 1 kHz so that music draws about
    // flat, and at least floorDb. Nothing as long as there are no data.
    std::optional<std::vector<double>> curve(Curve curve, const EqGrid &grid, std::span<const double> xs,
                                             double sampleRate) const;

private:
    static constexpr std::size_t bins = fftSize / 2;
    static constexpr double silenceDb = -200;

    RealFft fft_{fftSize};
    std::vector<float> window_;
    FftArray<float> windowed_;
    FftArray<std::complex<float>> spectrum_;
    std::array<std::array<double, bins>, 2> spectrumDb_;
    std::array<bool, 2> hasData_{};
};

}  // namespace kiv
