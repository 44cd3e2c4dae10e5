#pragma once

#include "Editor/EqCore/EqSettings.h"

// The gain in decibels that settings give a sine of a frequency: what the graph draws.
namespace kiv::EqResponse {

double lowCutDb(const EqCut &cut, double hz, double sampleRate);   // 0 when it is off
double highCutDb(const EqCut &cut, double hz, double sampleRate);  // 0 when it is off
double totalDb(const EqSettings &settings, double hz, double sampleRate);

}  // namespace kiv::EqResponse
