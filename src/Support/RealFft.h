#pragma once

#include <complex>
#include <cstddef>
#include <memory>

namespace kiv {

// Memory of an alignment that transforms run fastest on. Not set to anything.
struct FftFree {
    void operator()(void *memory) const;
};
template <class Number>
using FftArray = std::unique_ptr<Number[], FftFree>;

FftArray<float> makeFftReals(std::size_t count);
FftArray<std::complex<float>> makeFftBins(std::size_t count);

// The discrete Fourier transform of real signals of one size, in single precision, neither way scaled: there and back again
// multiplies by the size. One transform may be used by several threads at once, each on arrays of its own. Arrays must be those
// made above, or lie in them a multiple of 16 bytes from the start.
class RealFft {
public:
    explicit RealFft(int size);  // even, at least 2
    ~RealFft();
    RealFft(const RealFft &) = delete;
    RealFft &operator=(const RealFft &) = delete;

    int size() const { return size_; }
    int bins() const { return size_ / 2 + 1; }

    void forward(const float *in, std::complex<float> *out) const;
    void inverse(std::complex<float> *in, float *out) const;  // `in` is spoilt

private:
    int size_;
    void *forward_;
    void *inverse_;
};

}  // namespace kiv
