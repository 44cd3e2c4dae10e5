#pragma once

#include <array>
#include <cstdint>

#include "Preferences/AudioEditorTheme.h"

// The colours of the spectrum picture.
namespace kiv {

// From silence to the loudest, in even steps of sRGB between five colours of the theme.
std::array<Rgba, 256> spectrumRamp(const AudioEditorTheme &theme);

// Which of them a level has, in decibels of a full-scale sine: from −84 dB, the first, to −14 dB, the last.
std::uint8_t spectrumIndex(double levelDb);
// The same for each level of an analysis with a gain on it.
std::array<std::uint8_t, 256> spectrumIndices(double gainDb = 0);

}  // namespace kiv
