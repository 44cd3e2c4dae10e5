#pragma once

#include <cstdint>

// Plain loops that the stretches are made of. Their results are the same on every processor. Counts may be 0.
namespace kiv {

// Σ a[i] · b[i] in 32-bit float, in 16 sums of every sixteenth product that are then added pairwise: sum k and sum k + 8, of
// those k and k + 4, then k + 2, then k + 1.
float dotProduct(const float *a, const float *b, std::int64_t count);
// Of a with b, and of a with itself.
struct DotProducts {
    float withOther, withSelf;
};
DotProducts dotProducts(const float *a, const float *b, std::int64_t count);

// Sums of 16-bit products at eight places that are one, or four, apart: sums[k] = Σ x[step · k + i] · t[i]. Reads as far as the
// last place needs. The caller sees to it that no sum of any of the products leaves 32 bits.
inline constexpr std::int64_t placesAtOnce = 8;
void dotProductsAdjoining(const std::int16_t *x, const std::int16_t *t, std::int64_t count, std::int32_t *sums);
void dotProductsFourApart(const std::int16_t *x, const std::int16_t *t, std::int64_t count, std::int32_t *sums);

// out = in · scale, rounded to the nearest whole number. |in · scale| must be below 32767.
void quantise(const float *in, float scale, std::int64_t count, std::int16_t *out);

// Σ x[i]². The caller sees to it that it does not leave 32 bits.
std::int32_t sumOfSquares(const std::int16_t *x, std::int64_t count);
// How much the energy of a window changes as it moves on by one sample, or by four, for `moves` moves: the squares that come in
// behind it less those that go out in front.
void energyChanges(const std::int16_t *leaving, const std::int16_t *entering, std::int64_t moves, std::int32_t *changes);
void energyChangesFourApart(const std::int16_t *leaving, const std::int16_t *entering, std::int64_t moves,
                            std::int32_t *changes);

// What is known of scores product / (√energy + offset) whose 16-bit factors were rounded: each lies between its least and most.
struct ScoreBounds {
    float offset;
    float roundedOff;  // the norm of what rounding can have taken off a window, or off the template
    float norm;        // of the template
    float slack;       // for what 32-bit arithmetic itself is off
};
void boundScores(const std::int32_t *products, const std::int32_t *energies, std::int64_t count, const ScoreBounds &bounds,
                 float *least, float *most);

// The largest of at least one number, none of which is not one.
float largest(const float *numbers, std::int64_t count);

// out = b · weightsB + a · weightsA.
void blend(const float *a, const float *weightsA, const float *b, const float *weightsB, std::int64_t count, float *out);

}  // namespace kiv
