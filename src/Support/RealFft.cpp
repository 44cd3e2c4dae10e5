#include "Support/RealFft.h"

#include <fftw3.h>

#include <mutex>
#include <new>

namespace kiv {
namespace {

// The planner, unlike the transforms, knows no threads.
std::mutex planning;

fftwf_complex *bins(std::complex<float> *numbers) { return reinterpret_cast<fftwf_complex *>(numbers); }

void *allocated(std::size_t bytes) {
    void *memory = fftwf_malloc(bytes);
    if (!memory) throw std::bad_alloc();
    return memory;
}

}  // namespace

void FftFree::operator()(void *memory) const { fftwf_free(memory); }

FftArray<float> makeFftReals(std::size_t count) {
    return FftArray<float>(static_cast<float *>(allocated(count * sizeof(float))));
}

FftArray<std::complex<float>> makeFftBins(std::size_t count) {
    return FftArray<std::complex<float>>(static_cast<std::complex<float> *>(allocated(count * sizeof(std::complex<float>))));
}

// Estimated plans, for measured ones differ from run to run, and their results with them.
RealFft::RealFft(int size) : size_(size) {
    const auto reals = makeFftReals(std::size_t(size));
    const auto spectrum = makeFftBins(std::size_t(bins()));
    const std::lock_guard lock(planning);
    forward_ = fftwf_plan_dft_r2c_1d(size, reals.get(), kiv::bins(spectrum.get()), FFTW_ESTIMATE | FFTW_PRESERVE_INPUT);
    inverse_ = fftwf_plan_dft_c2r_1d(size, kiv::bins(spectrum.get()), reals.get(), FFTW_ESTIMATE);
}

RealFft::~RealFft() {
    const std::lock_guard lock(planning);
    fftwf_destroy_plan(static_cast<fftwf_plan>(forward_));
    fftwf_destroy_plan(static_cast<fftwf_plan>(inverse_));
}

void RealFft::forward(const float *in, std::complex<float> *out) const {
    fftwf_execute_dft_r2c(static_cast<fftwf_plan>(forward_), const_cast<float *>(in), kiv::bins(out));
}

void RealFft::inverse(std::complex<float> *in, float *out) const {
    fftwf_execute_dft_c2r(static_cast<fftwf_plan>(inverse_), kiv::bins(in), out);
}

}  // namespace kiv
