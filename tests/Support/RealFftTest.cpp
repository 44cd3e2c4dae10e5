#include "Support/RealFft.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

namespace kiv {
namespace {

using Samples = std::vector<float>;
using Spectrum = std::vector<std::complex<float>>;

Samples noise(int size, unsigned seed) {
    std::mt19937 random(seed);
    Samples samples(static_cast<std::size_t>(size));
    for (float &sample : samples) sample = float(std::int32_t(random())) / 2147483648.0f;
    return samples;
}

std::complex<double> defined(const Samples &samples, int k) {
    std::complex<double> sum;
    const double size = double(samples.size());
    for (std::size_t n = 0; n < samples.size(); ++n)
        sum += double(samples[n]) * std::polar(1.0, -2 * std::numbers::pi * double(k) * double(n) / size);
    return sum;
}

Spectrum transformed(const RealFft &fft, const Samples &samples) {
    const auto in = makeFftReals(samples.size());
    const auto out = makeFftBins(std::size_t(fft.bins()));
    std::copy(samples.begin(), samples.end(), in.get());
    fft.forward(in.get(), out.get());
    EXPECT_TRUE(std::equal(samples.begin(), samples.end(), in.get())) << "the input stays";
    return {out.get(), out.get() + fft.bins()};
}

Samples transformedBack(const RealFft &fft, const Spectrum &bins) {
    const auto in = makeFftBins(bins.size());
    const auto out = makeFftReals(std::size_t(fft.size()));
    std::copy(bins.begin(), bins.end(), in.get());
    fft.inverse(in.get(), out.get());
    return {out.get(), out.get() + fft.size()};
}

TEST(RealFft, IsTheSumThatDefinesIt) {
    for (const int size : {2, 6, 64, 2048}) {
        const RealFft fft(size);
        const Samples samples = noise(size, unsigned(size));
        const Spectrum bins = transformed(fft, samples);
        for (int k = 0; k < fft.bins(); k += 1 + size / 20)
            EXPECT_LT(std::abs(std::complex<double>(bins[std::size_t(k)]) - defined(samples, k)), 2e-6 * size)
                << size << " " << k;
    }
}

TEST(RealFft, ComesBackTimesItsSizeWhateverTheOuterBinsImaginaryParts) {
    for (const int size : {2, 6, 2048, 8192}) {
        const RealFft fft(size);
        const Samples samples = noise(size, 3);
        Spectrum bins = transformed(fft, samples);
        bins.front() += std::complex<float>(0, 5);
        bins.back() += std::complex<float>(0, 7);
        const Samples back = transformedBack(fft, bins);
        for (std::size_t i = 0; i < samples.size(); ++i) ASSERT_NEAR(back[i] / float(size), samples[i], 1e-6) << size;
    }
}

TEST(RealFft, GivesTheSameBitsOnManyThreadsWhileOthersAreMade) {
    const RealFft fft(1024);
    const Samples samples = noise(1024, 9);
    const Spectrum expected = transformed(fft, samples);
    std::vector<std::jthread> threads;
    std::vector<int> differences(4);
    for (int &count : differences)
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                const RealFft other(1024);
                count += transformed(round % 2 ? fft : other, samples) != expected;
            }
        });
    threads.clear();
    EXPECT_EQ(differences, std::vector<int>(4));
}

}  // namespace
}  // namespace kiv
