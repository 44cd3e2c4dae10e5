#pragma once

#include <array>
#include <cstdint>

// Plain loops over interleaved samples that the operations are made of. Input and output must not overlap. Counts may be 0.
namespace kiv {

// out = float(double(in) · factor).
void multiply(const float *in, double factor, std::int64_t samples, float *out);
// Whole frames, the last one first.
void reverseFrames(const float *in, std::int64_t frames, std::int64_t channels, float *out);
// The largest |sample|; NaN does not count.
float largestMagnitude(const float *in, std::int64_t samples);
// One channel of every frame.
void takeChannel(const float *in, std::int64_t channels, std::int64_t channel, std::int64_t frames, float *out);
// Each frame's mean, the channels summed in order in 32-bit float and multiplied by 1 / from, `to` times over.
void spreadMean(const float *in, std::int64_t frames, std::int64_t from, std::int64_t to, float *out);

// The gains of a quarter-sine fade, sin(j / last · π / 2) for j = 0 … last: the sine is computed once a block and turned from
// there by the addition theorem, out of a table. All four factors are at least 0, so nothing cancels, and each gain is within
// 1e-15 of itself of the exact value: exactly 0 at j = 0, and so near 1 at j = last that a float times it is that float.
class QuarterSine {
public:
    static constexpr std::int64_t block = 512;

    // Gain k of a block is sine · cosines[k] + cosine · sines[k].
    struct Gains {
        double sine, cosine;
        const double *sines, *cosines;
    };

    explicit QuarterSine(std::int64_t last);
    // The gains of j = first, first + 1, … for a block; they refer to this. What lies beyond `last` means nothing.
    Gains rising(std::int64_t first) const;
    // The gains of j = first, first − 1, … for `count`, at most a block.
    Gains falling(std::int64_t first, std::int64_t count) const;

private:
    double step_;
    std::array<double, block> sines_, cosines_, sinesBack_, cosinesBack_;
};

// Each frame times its gain; at most a block of them.
void multiplyFrames(const float *in, const QuarterSine::Gains &gains, std::int64_t frames, std::int64_t channels, float *out);

}  // namespace kiv
