#include "Editor/AudioEditorCore/StretchKernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "Support/Vectorised.h"

namespace kiv {
namespace {

// The 16 sums of a dot product, four at once.
constexpr std::int64_t lanes = 16;
using Sums = FourFloats[lanes / 4];

float total(const Sums &sums) {
    const FourFloats quarter = (sums[0] + sums[2]) + (sums[1] + sums[3]);
    return (quarter[0] + quarter[2]) + (quarter[1] + quarter[3]);
}

inline std::int32_t square(std::int16_t x) { return std::int32_t(x) * x; }

// What is left over of the samples, fewer than 16, followed by silence.
struct Rest {
    float a[lanes] = {}, b[lanes] = {};

    Rest(const float *from, const float *other, std::int64_t count) {
        std::copy_n(from, count, a);
        std::copy_n(other, count, b);
    }
};

inline void addProducts(const float *a, const float *b, Sums &sums) {
    FourFloats x[lanes / 4], y[lanes / 4];
    std::memcpy(x, a, sizeof x);
    std::memcpy(y, b, sizeof y);
    for (int i = 0; i < lanes / 4; ++i) sums[i] += x[i] * y[i];
}

template <int step>
inline void addUpAtEightPlaces(const std::int16_t *__restrict x, const std::int16_t *__restrict t, std::int64_t count,
                               std::int32_t *__restrict sums) {
    std::int32_t a = 0, b = 0, c = 0, d = 0, e = 0, f = 0, g = 0, h = 0;
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int32_t factor = t[i];
        a += factor * x[i];
        b += factor * x[i + step];
        c += factor * x[i + 2 * step];
        d += factor * x[i + 3 * step];
        e += factor * x[i + 4 * step];
        f += factor * x[i + 5 * step];
        g += factor * x[i + 6 * step];
        h += factor * x[i + 7 * step];
    }
    const std::int32_t all[placesAtOnce] = {a, b, c, d, e, f, g, h};
    std::copy_n(all, placesAtOnce, sums);
}

}  // namespace

float dotProduct(const float *a, const float *b, std::int64_t count) {
    Sums sums = {};
    const std::int64_t whole = count - count % lanes;
    for (std::int64_t i = 0; i < whole; i += lanes) addProducts(a + i, b + i, sums);
    const Rest rest(a + whole, b + whole, count - whole);
    addProducts(rest.a, rest.b, sums);
    return total(sums);
}

DotProducts dotProducts(const float *a, const float *b, std::int64_t count) {
    Sums other = {}, self = {};
    const std::int64_t whole = count - count % lanes;
    for (std::int64_t i = 0; i < whole; i += lanes) {
        addProducts(a + i, b + i, other);
        addProducts(a + i, a + i, self);
    }
    const Rest rest(a + whole, b + whole, count - whole);
    addProducts(rest.a, rest.b, other);
    addProducts(rest.a, rest.a, self);
    return {total(other), total(self)};
}

KIV_VECTORISED void dotProductsAdjoining(const std::int16_t *x, const std::int16_t *t, std::int64_t count, std::int32_t *sums) {
    addUpAtEightPlaces<1>(x, t, count, sums);
}

KIV_VECTORISED void dotProductsFourApart(const std::int16_t *x, const std::int16_t *t, std::int64_t count, std::int32_t *sums) {
    addUpAtEightPlaces<4>(x, t, count, sums);
}

// Adding 1.5 · 2^23 leaves the nearest whole number in the lowest bits of the sum.
KIV_VECTORISED void quantise(const float *__restrict in, float scale, std::int64_t count, std::int16_t *__restrict out) {
    constexpr float magic = 12582912.0f;
    for (std::int64_t i = 0; i < count; ++i)
        out[i] = std::int16_t(std::bit_cast<std::int32_t>(in[i] * scale + magic) - std::bit_cast<std::int32_t>(magic));
}

KIV_VECTORISED std::int32_t sumOfSquares(const std::int16_t *x, std::int64_t count) {
    std::int32_t sum = 0;
    for (std::int64_t i = 0; i < count; ++i) sum += square(x[i]);
    return sum;
}

void energyChanges(const std::int16_t *leaving, const std::int16_t *entering, std::int64_t moves, std::int32_t *changes) {
    for (std::int64_t i = 0; i < moves; ++i) changes[i] = square(entering[i]) - square(leaving[i]);
}

KIV_VECTORISED void energyChangesFourApart(const std::int16_t *__restrict leaving, const std::int16_t *__restrict entering,
                                           std::int64_t moves, std::int32_t *__restrict changes) {
    for (std::int64_t i = 0; i < 4 * moves; i += 4)
        changes[i / 4] = square(entering[i]) + square(entering[i + 1]) + square(entering[i + 2]) + square(entering[i + 3]) -
                         square(leaving[i]) - square(leaving[i + 1]) - square(leaving[i + 2]) - square(leaving[i + 3]);
}

// With what was rounded off the window x and the template t at most r in norm each, the product is off by at most |x| r + r |t|
// and the norm by r. So is the score by at most r + 2 r |t| / (|x| + offset), which holds for the true |x|, at least √energy −
// r.
KIV_VECTORISED void boundScores(const std::int32_t *__restrict products, const std::int32_t *__restrict energies,
                                std::int64_t count, const ScoreBounds &bounds, float *__restrict least,
                                float *__restrict most) {
    const float offset = bounds.offset, r = bounds.roundedOff, twice = 2 * r * bounds.norm, always = r + bounds.slack;
    for (std::int64_t i = 0; i < count; ++i) {
        const float norm = std::sqrt(float(energies[i])), surely = norm > r ? norm - r : 0.0f;
        const float score = float(products[i]) / (norm + offset), off = always + twice / (surely + offset);
        least[i] = score - off;
        most[i] = score + off;
    }
}

float largest(const float *numbers, std::int64_t count) {
    FourFloats most{numbers[0], numbers[0], numbers[0], numbers[0]}, x;
    const std::int64_t whole = count - count % 4;
    for (std::int64_t i = 0; i < whole; i += 4) {
        std::memcpy(&x, numbers + i, sizeof x);
        most = x > most ? x : most;
    }
    float found = std::max(std::max(most[0], most[1]), std::max(most[2], most[3]));
    for (std::int64_t i = whole; i < count; ++i) found = std::max(found, numbers[i]);
    return found;
}

KIV_VECTORISED void blend(const float *__restrict a, const float *__restrict weightsA, const float *__restrict b,
                          const float *__restrict weightsB, std::int64_t count, float *__restrict out) {
    for (std::int64_t i = 0; i < count; ++i) out[i] = b[i] * weightsB[i] + a[i] * weightsA[i];
}

}  // namespace kiv
