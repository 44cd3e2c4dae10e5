#pragma once

#include <array>
#include <cstddef>
#include <functional>

// What the equalizer is set to: an output gain, a low cut, a high cut and four bands. Values without identity; gains are in
// decibels, frequencies in hertz.
namespace kiv {

enum class EqBandKind { lowShelf, peak, highShelf };
enum class EqBandParam { freq, gain, q };

struct EqCut {
    bool on = false;
    double freqHz = 0;

    // The stages' qualities: a Butterworth of sixth order down (36 dB an octave), one of fourth order up (24 dB an octave).
    static constexpr std::array lowCutStageQs{0.5176380902050415, 0.7071067811865476, 1.9318516525781366};
    static constexpr std::array highCutStageQs{0.541196100146197, 1.3065629648763766};

    friend bool operator==(const EqCut &, const EqCut &) = default;
};

struct EqBand {
    bool on = false;
    double freqHz = 0;
    double gainDb = 0;
    double q = 0;

    // A band without gain does nothing, on or not.
    bool isHeard() const { return on && gainDb != 0; }
    friend bool operator==(const EqBand &, const EqBand &) = default;
};

inline constexpr int eqBandCount = 4;
using EqBands = std::array<EqBand, eqBandCount>;

struct EqSettings {
    static constexpr double defaultLowCutHz = 30, defaultHighCutHz = 16000;
    static constexpr EqBands defaultBands{{
        {false, 100, 0, 0.707},
        {false, 200, 0, 1.0},
        {false, 1000, 0, 1.0},
        {false, 5000, 0, 0.707},
    }};
    // A peak's q as it is shown, times this, is the quality of its prototype.
    static constexpr double peakQToRbj = 0.7071067811865476;

    double gainDb = 0;
    EqCut lowCut{false, defaultLowCutHz};
    EqCut highCut{false, defaultHighCutHz};
    EqBands bands = defaultBands;

    // Whether the sound passes as it is.
    bool isTransparent() const;
    friend bool operator==(const EqSettings &, const EqSettings &) = default;
};

// The first band is a low shelf, the last a high shelf, the others are peaks.
EqBandKind eqBandKind(std::size_t index);

// The range of a parameter, and how a control's way from 0 to 1 runs through it.
struct EqRange {
    enum class Scale { linear, logarithmic };
    double lo, hi;
    Scale scale;

    double clamped(double value) const;  // nan: lo
    bool contains(double value) const { return value >= lo && value <= hi; }
    double position(double value) const;  // 0 … 1, of a clamped value
    double value(double position) const;  // of a clamped position
};

namespace EqRanges {
inline constexpr EqRange outputGainDb{-12, 12, EqRange::Scale::linear};
inline constexpr EqRange freqHz{20, 20000, EqRange::Scale::logarithmic};
inline constexpr EqRange bandGainDb{-20, 20, EqRange::Scale::linear};
inline constexpr EqRange q{0.1, 10, EqRange::Scale::logarithmic};
}  // namespace EqRanges
const EqRange &eqRange(EqBandParam param);

// A band's parameter by name, and what a double-click on its control sets it to: its default, where the gain is 0.
double eqValue(const EqBand &band, EqBandParam param);
void setEqValue(EqBand &band, EqBandParam param, double value);
double eqResetValue(std::size_t band, EqBandParam param);

// Every number brought into its range.
EqSettings clamped(EqSettings settings);

}  // namespace kiv

template <>
struct std::hash<kiv::EqSettings> {
    std::size_t operator()(const kiv::EqSettings &settings) const noexcept;
};
