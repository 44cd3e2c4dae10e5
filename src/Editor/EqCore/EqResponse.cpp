#include "Editor/EqCore/EqResponse.h"

#include "Editor/EqCore/EqBiquad.h"

namespace kiv::EqResponse {
namespace {

template <class Stages>
double sumDb(const Stages &stages, double hz, double sampleRate) {
    double sum = 0;
    for (const EqBiquad &stage : stages) sum += stage.magnitudeDb(hz, sampleRate);
    return sum;
}

}  // namespace

double lowCutDb(const EqCut &cut, double hz, double sampleRate) {
    return cut.on ? sumDb(eqLowCutStages(cut.freqHz, sampleRate), hz, sampleRate) : 0;
}

double highCutDb(const EqCut &cut, double hz, double sampleRate) {
    return cut.on ? sumDb(eqHighCutStages(cut.freqHz, sampleRate), hz, sampleRate) : 0;
}

double totalDb(const EqSettings &settings, double hz, double sampleRate) {
    double sum = settings.gainDb + lowCutDb(settings.lowCut, hz, sampleRate) + highCutDb(settings.highCut, hz, sampleRate);
    for (std::size_t i = 0; i < settings.bands.size(); ++i) {
        const EqBand &band = settings.bands[i];
        if (band.isHeard())
            sum += EqBiquad(eqBandKind(i), band.freqHz, band.gainDb, band.q, sampleRate).magnitudeDb(hz, sampleRate);
    }
    return sum;
}

}  // namespace kiv::EqResponse
