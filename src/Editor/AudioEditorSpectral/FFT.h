#pragma once

#include <vector>

#include "Support/RealFft.h"

namespace kiv::AudioEditorSpectral {

// A transform with its window, which is used on the way in and on the way out. Windows a quarter of their length apart,
// squared, add up to 1.5 everywhere. May be used by several threads at once.
struct FFT {
    explicit FFT(int transformSize);

    int size;
    RealFft transform;
    std::vector<float> window;  // Hann: 0.5 · (1 − cos(2πi / size))

    // The transform of `size` samples under the window; `frame` is room for as many. A sample that is no number, or infinite,
    // counts as 0: else it would be spread over all that the transform covers.
    void forward(const float *samples, float *frame, std::complex<float> *bins) const;
};

}  // namespace kiv::AudioEditorSpectral
