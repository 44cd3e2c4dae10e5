#include "Editor/AudioEditorSpectral/FFT.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "Support/Vectorised.h"

namespace kiv::AudioEditorSpectral {
namespace {

KIV_VECTORISED void multiply(const float *__restrict in, const float *__restrict window, std::int64_t count,
                             float *__restrict out) {
    constexpr float largest = std::numeric_limits<float>::max();
    for (std::int64_t i = 0; i < count; ++i) {
        const float x = std::fabs(in[i]) <= largest ? in[i] : 0.0f;
        out[i] = x * window[i];
    }
}

}  // namespace

FFT::FFT(int transformSize) : size(transformSize), transform(transformSize), window(std::size_t(transformSize)) {
    for (int i = 0; i < size; ++i) window[std::size_t(i)] = float(0.5 * (1 - std::cos(2 * std::numbers::pi * i / size)));
}

void FFT::forward(const float *samples, float *frame, std::complex<float> *bins) const {
    multiply(samples, window.data(), size, frame);
    transform.forward(frame, bins);
}

}  // namespace kiv::AudioEditorSpectral
