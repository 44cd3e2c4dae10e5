#include "Editor/AudioEditorCore/SampleKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#include "Support/Vectorised.h"

namespace kiv {
namespace {

KIV_VECTORISED void multiplySingles(const float *__restrict in, const QuarterSine::Gains gains, std::int64_t frames,
                                    float *__restrict out) {
    for (std::int64_t i = 0; i < frames; ++i)
        out[i] = float(in[i] * (gains.sine * gains.cosines[i] + gains.cosine * gains.sines[i]));
}

KIV_VECTORISED void multiplyPairs(const float *__restrict in, const QuarterSine::Gains gains, std::int64_t frames,
                                  float *__restrict out) {
    for (std::int64_t i = 0; i < frames; ++i) {
        const double gain = gains.sine * gains.cosines[i] + gains.cosine * gains.sines[i];
        out[2 * i] = float(in[2 * i] * gain);
        out[2 * i + 1] = float(in[2 * i + 1] * gain);
    }
}

KIV_VECTORISED void reverseSingles(const float *__restrict in, std::int64_t frames, float *__restrict out) {
    for (std::int64_t i = 0; i < frames; ++i) out[i] = in[frames - 1 - i];
}

KIV_VECTORISED void reversePairs(const float *__restrict in, std::int64_t frames, float *__restrict out) {
    for (std::int64_t i = 0; i < frames; ++i) {
        out[2 * i] = in[2 * (frames - 1 - i)];
        out[2 * i + 1] = in[2 * (frames - 1 - i) + 1];
    }
}

KIV_VECTORISED void meanOfPairs(const float *__restrict in, std::int64_t frames, float *__restrict out) {
    for (std::int64_t i = 0; i < frames; ++i) out[i] = (in[2 * i] + in[2 * i + 1]) * 0.5f;
}

KIV_VECTORISED void doubled(const float *__restrict in, std::int64_t frames, float *__restrict out) {
    for (std::int64_t i = 0; i < frames; ++i) out[2 * i] = out[2 * i + 1] = in[i];
}

KIV_VECTORISED void takeOfPairs(const float *__restrict in, std::int64_t frames, float *__restrict out) {
    for (std::int64_t i = 0; i < frames; ++i) out[i] = in[2 * i];
}

float meanOf(const float *frame, std::int64_t channels) {
    float sum = frame[0];  // not 0 and that: one channel keeps its negative zeros
    for (std::int64_t c = 1; c < channels; ++c) sum += frame[c];
    return sum * (1.0f / float(channels));
}

}  // namespace

KIV_VECTORISED void multiply(const float *__restrict in, double factor, std::int64_t samples, float *__restrict out) {
    for (std::int64_t i = 0; i < samples; ++i) out[i] = float(in[i] * factor);
}

void multiplyFrames(const float *in, const QuarterSine::Gains &gains, std::int64_t frames, std::int64_t channels, float *out) {
    if (channels == 1) return multiplySingles(in, gains, frames, out);
    if (channels == 2) return multiplyPairs(in, gains, frames, out);
    for (std::int64_t i = 0; i < frames; ++i) {
        const double gain = gains.sine * gains.cosines[i] + gains.cosine * gains.sines[i];
        for (std::int64_t c = 0; c < channels; ++c) out[i * channels + c] = float(in[i * channels + c] * gain);
    }
}

void reverseFrames(const float *in, std::int64_t frames, std::int64_t channels, float *out) {
    if (channels == 1) return reverseSingles(in, frames, out);
    if (channels == 2) return reversePairs(in, frames, out);
    for (std::int64_t i = 0; i < frames; ++i) std::copy_n(in + (frames - 1 - i) * channels, channels, out + i * channels);
}

// Comparisons with NaN are false: it stays out.
float largestMagnitude(const float *in, std::int64_t samples) {
    constexpr std::int64_t vectors = 4, row = vectors * 4;
    FourFloats most[vectors] = {}, x[vectors];
    const std::int64_t whole = samples - samples % row;
    for (std::int64_t at = 0; at < whole; at += row) {
        std::memcpy(x, in + at, sizeof x);
        for (int i = 0; i < vectors; ++i) {
            const FourFloats magnitude = x[i] < 0 ? -x[i] : x[i];
            most[i] = magnitude > most[i] ? magnitude : most[i];
        }
    }
    float lanes[row], largest = 0;
    std::memcpy(lanes, most, sizeof lanes);
    for (const float magnitude : lanes) largest = std::max(largest, magnitude);
    for (std::int64_t i = whole; i < samples; ++i) largest = std::fabs(in[i]) > largest ? std::fabs(in[i]) : largest;
    return largest;
}

void takeChannel(const float *in, std::int64_t channels, std::int64_t channel, std::int64_t frames, float *out) {
    in += channel;
    if (channels == 2) return takeOfPairs(in, frames, out);
    for (std::int64_t i = 0; i < frames; ++i) out[i] = in[i * channels];
}

void spreadMean(const float *in, std::int64_t frames, std::int64_t from, std::int64_t to, float *out) {
    if (from == 1 && to == 2) return doubled(in, frames, out);
    if (from == 2 && to == 1) return meanOfPairs(in, frames, out);
    for (std::int64_t i = 0; i < frames; ++i) std::fill_n(out + i * to, to, meanOf(in + i * from, from));
}

QuarterSine::QuarterSine(std::int64_t last) : step_(std::numbers::pi / 2 / double(last)) {
    for (std::int64_t k = 0; k < block; ++k) {
        sines_[k] = sinesBack_[block - 1 - k] = std::sin(double(k) * step_);
        cosines_[k] = cosinesBack_[block - 1 - k] = std::cos(double(k) * step_);
    }
}

QuarterSine::Gains QuarterSine::rising(std::int64_t first) const {
    const double angle = double(first) * step_;
    return {std::sin(angle), std::cos(angle), sines_.data(), cosines_.data()};
}

QuarterSine::Gains QuarterSine::falling(std::int64_t first, std::int64_t count) const {
    const double lowest = double(first - count + 1) * step_;
    return {std::sin(lowest), std::cos(lowest), sinesBack_.data() + block - count, cosinesBack_.data() + block - count};
}

}  // namespace kiv
