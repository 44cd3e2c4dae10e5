#pragma once

#include "Support/RealFft.h"

namespace kiv::AudioEditorSpectral {

// A transform with its window, which is used on the way in and on the way out. Windows a quarter of their length apart,
// squared, add up to 1.5 everywhere. May be used by several threads at once.
struct FFT {
    explicit FFT(int transformSize);

    int size;
    RealFft transform;
    AlignedVector<float> window;  // Hann: 0.5 · (1 − cos(2πi / size))
};

}  // namespace kiv::AudioEditorSpectral
