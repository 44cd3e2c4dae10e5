#include "Editor/EqCore/EqBiquad.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kiv {
namespace {

constexpr double smallestQ = 0.01;

// In radians a sample.
double angularFrequency(double freqHz, double sampleRate) {
    const double rate = sampleRate > 0 ? sampleRate : 44100;
    const double most = 0.45 * rate;
    return 2 * std::numbers::pi * std::min(freqHz > 1 ? freqHz : 1, most) / rate;
}

// (n2·s² + n1·s + n0) / (d2·s² + d1·s + d0), s in units of the band's frequency.
struct Prototype {
    double n2, n1, n0, d2, d1, d0;

    double power(double w) const {
        const double w2 = w * w;
        const auto square = [w2](double c2, double c1, double c0) {
            const double real = c0 - c2 * w2;
            return real * real + c1 * c1 * w2;
        };
        return square(n2, n1, n0) / square(d2, d1, d0);
    }
    double naturalFrequency() const { return std::sqrt(d0 / d2); }
    double damping() const { return d1 / (2 * std::sqrt(d0 * d2)); }
};

Prototype prototype(EqBandKind kind, double gainDb, double q) {
    const double a = std::pow(10.0, gainDb / 40), root = std::sqrt(a);
    if (kind == EqBandKind::peak) {
        const double quality = std::max(smallestQ, q * EqSettings::peakQToRbj);
        return {1, a / quality, 1, 1, 1 / (a * quality), 1};
    }
    const double slope = root / std::max(smallestQ, q);
    if (kind == EqBandKind::lowShelf) return {a, a * slope, a * a, a, slope, 1};
    return {a * a, a * slope, a, 1, slope, a};
}

double twiceCosine(double p, double angle, double damping) {
    const double spread = std::abs(damping * damping - 1);
    return 2 * p * (damping < 1 ? std::cos(angle * std::sqrt(spread)) : std::cosh(angle * std::sqrt(spread)));
}

struct CutTerms {
    double alpha, cosine, a0;
};

CutTerms cutTerms(double freqHz, double q, double sampleRate) {
    const double w0 = angularFrequency(freqHz, sampleRate);
    const double alpha = std::sin(w0) / (2 * std::max(smallestQ, q));
    return {alpha, std::cos(w0), 1 + alpha};
}

EqBiquad section(double b0, double b1, double b2, double a1, double a2) {
    EqBiquad result;
    result.b0 = b0;
    result.b1 = b1;
    result.b2 = b2;
    result.a1 = a1;
    result.a2 = a2;
    return result;
}

// |c0 + c1·e^(−jw) + c2·e^(−2jw)|²
double polynomialPower(double c0, double c1, double c2, double w) {
    const double real = c0 + c1 * std::cos(w) + c2 * std::cos(2 * w);
    const double imaginary = c1 * std::sin(w) + c2 * std::sin(2 * w);
    return real * real + imaginary * imaginary;
}

}  // namespace

EqBiquad::EqBiquad(EqBandKind kind, double freqHz, double gainDb, double q, double sampleRate) {
    const double w0 = angularFrequency(freqHz, sampleRate);
    const Prototype h = prototype(kind, gainDb, q);
    const double wp = h.naturalFrequency() * w0, damping = h.damping();
    const double p = std::exp(-damping * wp);
    a1 = -twiceCosine(p, wp, damping);
    a2 = p * p;
    const double sine = std::sin(w0 / 2), phi1 = sine * sine, phi0 = 1 - phi1, phi2 = 4 * phi0 * phi1;
    const double atZero = (1 + a1 + a2) * (1 + a1 + a2), atNyquist = (1 - a1 + a2) * (1 - a1 + a2);
    const double numerator0 = atZero * h.power(0), numerator1 = atNyquist * h.power(std::numbers::pi / w0);
    const double atW0 = (atZero * phi0 + atNyquist * phi1 - 4 * a2 * phi2) * h.power(1);
    const double numerator2 = (atW0 - numerator0 * phi0 - numerator1 * phi1) / phi2;
    const double root0 = std::sqrt(numerator0), root1 = std::sqrt(numerator1), w = (root0 + root1) / 2;
    b0 = (w + std::sqrt(std::max(w * w + numerator2, 0.0))) / 2;
    b1 = (root0 - root1) / 2;
    b2 = w - b0;
}

EqBiquad EqBiquad::highPass(double freqHz, double q, double sampleRate) {
    const auto [alpha, c, a0] = cutTerms(freqHz, q, sampleRate);
    return section((1 + c) / 2 / a0, -(1 + c) / a0, (1 + c) / 2 / a0, -2 * c / a0, (1 - alpha) / a0);
}

EqBiquad EqBiquad::lowPass(double freqHz, double q, double sampleRate) {
    const auto [alpha, c, a0] = cutTerms(freqHz, q, sampleRate);
    return section((1 - c) / 2 / a0, (1 - c) / a0, (1 - c) / 2 / a0, -2 * c / a0, (1 - alpha) / a0);
}

double EqBiquad::magnitudeDb(double hz, double sampleRate) const {
    const double w = 2 * std::numbers::pi * hz / sampleRate;
    const double numerator = polynomialPower(b0, b1, b2, w), denominator = polynomialPower(1, a1, a2, w);
    if (numerator <= 0) return -300;
    return denominator <= 0 ? 0 : 10 * std::log10(numerator / denominator);
}

std::array<EqBiquad, 3> eqLowCutStages(double freqHz, double sampleRate) {
    std::array<EqBiquad, 3> stages;
    for (std::size_t i = 0; i < stages.size(); ++i) stages[i] = EqBiquad::highPass(freqHz, EqCut::lowCutStageQs[i], sampleRate);
    return stages;
}

std::array<EqBiquad, 2> eqHighCutStages(double freqHz, double sampleRate) {
    std::array<EqBiquad, 2> stages;
    for (std::size_t i = 0; i < stages.size(); ++i) stages[i] = EqBiquad::lowPass(freqHz, EqCut::highCutStageQs[i], sampleRate);
    return stages;
}

}  // namespace kiv
