#include "Editor/AudioEditorLoopPanel/SeamMatch.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "Support/Parallel.h"
#include "Support/Vectorised.h"

namespace kiv {
namespace {

constexpr double quietPower = 1e-6;
constexpr double leastPower = 1e-20;
constexpr std::int64_t lanes = 8;

// Copies the frames of a range, with silence where there are none.
void copyPadded(SeamSound sound, FrameRange range, float *out) {
    const std::int64_t channels = sound.channels;
    const std::int64_t lo = std::clamp<std::int64_t>(range.lo, 0, sound.frames());
    const std::int64_t hi = std::clamp<std::int64_t>(range.hi, lo, sound.frames());
    std::fill_n(out, range.count() * channels, 0.0f);
    std::copy(sound.samples.begin() + lo * channels, sound.samples.begin() + hi * channels, out + (lo - range.lo) * channels);
}

double ratio(double difference, double power) { return std::max(difference, 0.0) / std::max(power, leastPower); }

KIV_VECTORISED void sumLanes(const float *__restrict weights, const float *__restrict reference,
                             const float *__restrict candidate, std::int64_t rows, double *__restrict differences,
                             double *__restrict powers) {
    for (std::int64_t l = 0; l < lanes; ++l) differences[l] = powers[l] = 0;
    for (std::int64_t row = 0; row < rows; ++row) {
        for (std::int64_t l = 0; l < lanes; ++l) {
            const double weight = weights[row * lanes + l], x = candidate[row * lanes + l];
            const double d = reference[row * lanes + l] - x;
            differences[l] += weight * (d * d);
            powers[l] += weight * (x * x);
        }
    }
}

// product += conj(a) · b, of numbers that lie real part before imaginary part.
KIV_VECTORISED void addConjugateProduct(const float *__restrict a, const float *__restrict b, std::int64_t bins,
                                        float *__restrict product) {
    for (std::int64_t i = 0; i < bins; ++i) {
        product[2 * i] += a[2 * i] * b[2 * i] + a[2 * i + 1] * b[2 * i + 1];
        product[2 * i + 1] += a[2 * i] * b[2 * i + 1] - a[2 * i + 1] * b[2 * i];
    }
}

KIV_VECTORISED void mismatchesOf(const float *__restrict crosses, double scale, double referencePower,
                                 const double *__restrict powers, std::int64_t count, double *__restrict out) {
    for (std::int64_t i = 0; i < count; ++i) {
        const double power = referencePower + powers[i], difference = power - scale * double(crosses[i]);
        out[i] = (difference < 0 ? 0 : difference) / (power < leastPower ? leastPower : power);
    }
}

float *numbers(std::complex<float> *bins) { return reinterpret_cast<float *>(bins); }

// Long enough that most of a transform is of use.
int transformSize(std::int64_t w) { return int(std::max<std::uint64_t>(4096, std::bit_ceil(std::uint64_t(8 * w)))); }

}  // namespace

std::optional<SeamReference> seamReference(SeamSound sound, std::int64_t start, std::int64_t w) {
    const std::int64_t channels = sound.channels;
    SeamReference reference{
        w, {}, std::vector<float>(std::size_t(2 * w * channels)), 0, start >= w && start + w <= sound.frames()};
    copyPadded(sound, {start - w, start + w}, reference.samples.data());
    double weightSum = 0;
    for (std::int64_t i = 0; i < 2 * w; ++i) {
        const bool isThere = start - w + i >= 0 && start - w + i < sound.frames();
        const double weight = isThere ? 1 - std::fabs(double(i - w) + 0.5) / double(w) : 0;
        weightSum += weight;
        for (std::int64_t c = 0; c < channels; ++c) {
            const double x = reference.samples[std::size_t(i * channels + c)];
            reference.weights.push_back(float(weight));
            reference.power += weight * (x * x);
        }
    }
    const bool isLoud = reference.power > quietPower * weightSum * double(channels);  // false for NaN
    return isLoud ? std::optional(std::move(reference)) : std::nullopt;
}

double seamMismatch(const SeamReference &reference, const float *around) {
    const std::int64_t samples = std::int64_t(reference.samples.size()), rows = samples / lanes;
    const float *weights = reference.weights.data(), *wanted = reference.samples.data();
    double differences[lanes], powers[lanes], difference = 0, power = reference.power;
    sumLanes(weights, wanted, around, rows, differences, powers);
    for (std::int64_t l = 0; l < lanes; ++l) {
        difference += differences[l];
        power += powers[l];
    }
    for (std::int64_t i = rows * lanes; i < samples; ++i) {
        const double d = double(wanted[i]) - around[i];
        difference += double(weights[i]) * (d * d);
        power += double(weights[i]) * (double(around[i]) * around[i]);
    }
    return ratio(difference, power);
}

std::vector<float> seamSurroundings(SeamSound sound, FrameRange points, std::int64_t w) {
    std::vector<float> frames(std::size_t((points.count() + 2 * w) * sound.channels));
    copyPadded(sound, {points.lo - w, points.hi + w}, frames.data());
    return frames;
}

SeamCorrelator::SeamCorrelator(SeamSound sound, std::int64_t w)
    : channels_(sound.channels),
      w_(w),
      fft_(transformSize(w)),
      hop_(fft_.size() - 2 * w + 1),
      blocks_((sound.frames() + w) / hop_ + 1),
      spectra_(makeFftBins(std::size_t(blocks_ * channels_ * fft_.bins()))) {
    const std::int64_t size = fft_.size(), bins = fft_.bins();
    parallelFor(blocks_, 1, [&](std::int64_t block, std::int64_t) {
        std::vector<float> frames(std::size_t(size * channels_));
        const auto time = makeFftReals(std::size_t(size));
        copyPadded(sound, {block * hop_ - w_, block * hop_ - w_ + size}, frames.data());
        for (std::int64_t c = 0; c < channels_; ++c) {
            for (std::int64_t i = 0; i < size; ++i) time[std::size_t(i)] = frames[std::size_t(i * channels_ + c)];
            const auto spectrum = makeFftBins(std::size_t(bins));
            fft_.forward(time.get(), spectrum.get());
            std::copy_n(spectrum.get(), bins, spectra_.get() + (block * channels_ + c) * bins);
        }
    });
    measurePowers(sound);
}

SeamCorrelator::Scratch::Scratch(const SeamCorrelator &correlator)
    : time(makeFftReals(std::size_t(correlator.fft_.size()))),
      reference(makeFftBins(std::size_t(correlator.channels_ * (correlator.fft_.bins() + 1)))),
      product(makeFftBins(std::size_t(correlator.fft_.bins()))),
      mismatches(std::size_t(correlator.hop_)) {}

// The triangle is two boxes of w frames, one after the other, and the mean of two neighbours.
void SeamCorrelator::measurePowers(SeamSound sound) {
    powers_.resize(std::size_t(blocks_ * hop_));
    const std::int64_t length = hop_ + 2 * w_;
    parallelFor(blocks_, 1, [&](std::int64_t block, std::int64_t) {
        std::vector<float> frames(std::size_t(length * channels_));
        copyPadded(sound, {block * hop_ - w_, block * hop_ - w_ + length}, frames.data());
        std::vector<double> sums(std::size_t(length + 1)), boxes(std::size_t(length - w_ + 2));
        for (std::int64_t i = 0; i < length; ++i) {
            double square = 0;
            for (std::int64_t c = 0; c < channels_; ++c) {
                const double x = frames[std::size_t(i * channels_ + c)];
                square += x * x;
            }
            sums[std::size_t(i + 1)] = sums[std::size_t(i)] + square;
        }
        for (std::int64_t i = 0; i + w_ <= length; ++i)
            boxes[std::size_t(i + 1)] = boxes[std::size_t(i)] + sums[std::size_t(i + w_)] - sums[std::size_t(i)];
        for (std::int64_t i = 0; i < hop_; ++i) {
            const double triangle = boxes[std::size_t(i + w_)] - boxes[std::size_t(i)];
            const double next = boxes[std::size_t(i + w_ + 1)] - boxes[std::size_t(i + 1)];
            powers_[std::size_t(block * hop_ + i)] = (triangle + next) / double(2 * w_);
        }
    });
}

void SeamCorrelator::begin(const SeamReference &reference, Scratch &scratch) const {
    const std::int64_t bins = fft_.bins();
    for (std::int64_t c = 0; c < channels_; ++c) {
        std::fill_n(scratch.time.get(), fft_.size(), 0.0f);
        for (std::int64_t i = 0; i < 2 * w_; ++i) {
            const std::size_t sample = std::size_t(i * channels_ + c);
            scratch.time[std::size_t(i)] = reference.weights[sample] * reference.samples[sample];
        }
        fft_.forward(scratch.time.get(), scratch.product.get());
        std::copy_n(scratch.product.get(), bins, scratch.reference.get() + c * bins);
    }
}

void SeamCorrelator::correlate(const SeamReference &reference, std::int64_t block, Scratch &scratch) const {
    const std::int64_t bins = fft_.bins();
    std::fill_n(scratch.product.get(), bins, std::complex<float>());
    for (std::int64_t c = 0; c < channels_; ++c)
        addConjugateProduct(numbers(scratch.reference.get() + c * bins),
                            numbers(spectra_.get() + (block * channels_ + c) * bins), bins, numbers(scratch.product.get()));
    fft_.inverse(scratch.product.get(), scratch.time.get());
    mismatchesOf(scratch.time.get(), 2.0 / fft_.size(), reference.power, powers_.data() + block * hop_, hop_,
                 scratch.mismatches.data());
}

}  // namespace kiv
