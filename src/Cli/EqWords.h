#pragma once

#include <functional>
#include <string>

#include "Cli/Words.h"
#include "Editor/EqCore/EqSettings.h"

// The equalizer's settings in words: gain=DB, lowCut=on|off:HZ, highCut=on|off:HZ, bandN=on|off:HZ:DB:Q with N 0 to 3.
namespace kiv::Cli {

// What one word changes; parts left out at its end keep their value. Throws WrongWords, also for a number out of its range.
std::function<void(EqSettings &)> parseEqSetting(const std::string &word);

}  // namespace kiv::Cli
