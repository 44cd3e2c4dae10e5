#pragma once

#include <array>

#include "Editor/EqCore/EqSettings.h"

namespace kiv {

// A second-order section: y = b0·x + b1·x₁ + b2·x₂ − a1·y₁ − a2·y₂. As made, it lets everything pass.
//
// Every design takes the frequency as at most 0.45 of the rate and at least 1 Hz, a quality as at least 0.01, and a rate that
// is not above 0 as 44100.
struct EqBiquad {
    double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;

    EqBiquad() = default;
    // A band's filter: poles from an analog prototype by impulse invariance, a numerator that meets the prototype's magnitude
    // at 0, at w0 and at half the sample rate, so that bells and shelves keep their shape up there. Method: Martin Vicanek,
    // "Matched Second Order Digital Filters", 2016.
    EqBiquad(EqBandKind kind, double freqHz, double gainDb, double q, double sampleRate);

    // One stage of a cut, by the bilinear transform. Formulas: Robert Bristow-Johnson, "Audio EQ Cookbook".
    static EqBiquad highPass(double freqHz, double q, double sampleRate);
    static EqBiquad lowPass(double freqHz, double q, double sampleRate);

    // The gain for a sine: −300 where nothing passes.
    double magnitudeDb(double hz, double sampleRate) const;

    friend bool operator==(const EqBiquad &, const EqBiquad &) = default;
};

// The stages of a cut at a frequency: the low cut is three, the high cut two.
std::array<EqBiquad, EqCut::lowCutStageQs.size()> eqLowCutStages(double freqHz, double sampleRate);
std::array<EqBiquad, EqCut::highCutStageQs.size()> eqHighCutStages(double freqHz, double sampleRate);

}  // namespace kiv
