#include "Editor/EqCore/EqSettings.h"

#include <algorithm>
#include <cmath>

namespace kiv {
namespace {

double EqBand::*member(EqBandParam param) {
    switch (param) {
        case EqBandParam::freq:
            return &EqBand::freqHz;
        case EqBandParam::gain:
            return &EqBand::gainDb;
        case EqBandParam::q:
            break;
    }
    return &EqBand::q;
}

template <class T>
void mixIn(std::size_t &seed, const T &value) {
    seed ^= std::hash<T>()(value) + 0x9E3779B97F4A7C15 + (seed << 6) + (seed >> 2);
}

}  // namespace

bool EqSettings::isTransparent() const {
    return gainDb == 0 && !lowCut.on && !highCut.on && std::none_of(bands.begin(), bands.end(), std::mem_fn(&EqBand::isHeard));
}

EqBandKind eqBandKind(std::size_t index) {
    if (index == 0) return EqBandKind::lowShelf;
    return index + 1 == eqBandCount ? EqBandKind::highShelf : EqBandKind::peak;
}

double EqRange::clamped(double value) const { return value > lo ? std::min(value, hi) : lo; }

double EqRange::position(double value) const {
    value = clamped(value);
    if (scale == Scale::linear) return (value - lo) / (hi - lo);
    return (std::log(value) - std::log(lo)) / std::log(hi / lo);
}

double EqRange::value(double position) const {
    if (!(position > 0)) return lo;
    if (position >= 1) return hi;
    if (scale == Scale::linear) return lo + position * (hi - lo);
    return clamped(std::exp(std::log(lo) + position * std::log(hi / lo)));
}

const EqRange &eqRange(EqBandParam param) {
    switch (param) {
        case EqBandParam::freq:
            return EqRanges::freqHz;
        case EqBandParam::gain:
            return EqRanges::bandGainDb;
        case EqBandParam::q:
            break;
    }
    return EqRanges::q;
}

double eqValue(const EqBand &band, EqBandParam param) { return band.*member(param); }

void setEqValue(EqBand &band, EqBandParam param, double value) { band.*member(param) = value; }

double eqResetValue(std::size_t band, EqBandParam param) { return eqValue(EqSettings::defaultBands[band], param); }

EqSettings clamped(EqSettings settings) {
    settings.gainDb = EqRanges::outputGainDb.clamped(settings.gainDb);
    for (EqCut *cut : {&settings.lowCut, &settings.highCut}) cut->freqHz = EqRanges::freqHz.clamped(cut->freqHz);
    for (EqBand &band : settings.bands)
        for (const EqBandParam param : {EqBandParam::freq, EqBandParam::gain, EqBandParam::q})
            setEqValue(band, param, eqRange(param).clamped(eqValue(band, param)));
    return settings;
}

}  // namespace kiv

std::size_t std::hash<kiv::EqSettings>::operator()(const kiv::EqSettings &settings) const noexcept {
    std::size_t seed = 0;
    kiv::mixIn(seed, settings.gainDb);
    for (const kiv::EqCut &cut : {settings.lowCut, settings.highCut}) {
        kiv::mixIn(seed, cut.on);
        kiv::mixIn(seed, cut.freqHz);
    }
    for (const kiv::EqBand &band : settings.bands) {
        kiv::mixIn(seed, band.on);
        for (const double value : {band.freqHz, band.gainDb, band.q}) kiv::mixIn(seed, value);
    }
    return seed;
}
