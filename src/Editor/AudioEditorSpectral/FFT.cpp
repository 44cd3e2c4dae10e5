#include "Editor/AudioEditorSpectral/FFT.h"

#include <cmath>
#include <numbers>

namespace kiv::AudioEditorSpectral {

FFT::FFT(int transformSize) : size(transformSize), transform(transformSize), window(std::size_t(transformSize)) {
    for (int i = 0; i < size; ++i) window[std::size_t(i)] = float(0.5 * (1 - std::cos(2 * std::numbers::pi * i / size)));
}

}  // namespace kiv::AudioEditorSpectral
