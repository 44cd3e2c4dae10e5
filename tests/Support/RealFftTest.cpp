#include "Support/RealFft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <thread>

namespace kiv {
namespace {

using Spectrum = AlignedVector<std::complex<float>>;

AlignedVector<float> noise(int size, unsigned seed) {
    std::mt19937 random(seed);
    AlignedVector<float> samples(static_cast<std::size_t>(size));
    for (float &sample : samples) sample = float(std::int32_t(random())) / 2147483648.0f;
    return samples;
}

std::complex<double> defined(const AlignedVector<float> &samples, int k) {
    std::complex<double> sum;
    const double size = double(samples.size());
    for (std::size_t n = 0; n < samples.size(); ++n)
        sum += double(samples[n]) * std::polar(1.0, -2 * std::numbers::pi * double(k) * double(n) / size);
    return sum;
}

TEST(RealFft, IsTheSumThatDefinesIt) {
    for (const int size : {2, 6, 64, 2048}) {
        const RealFft fft(size);
        const AlignedVector<float> samples = noise(size, unsigned(size)), kept = samples;
        Spectrum bins(static_cast<std::size_t>(fft.bins()));
        fft.forward(samples.data(), bins.data());
        EXPECT_EQ(samples, kept);
        for (int k = 0; k < fft.bins(); k += 1 + size / 20)
            EXPECT_LT(std::abs(std::complex<double>(bins[std::size_t(k)]) - defined(samples, k)), 2e-6 * size)
                << size << " " << k;
    }
}

TEST(RealFft, ComesBackTimesItsSizeWhateverTheOuterBinsImaginaryParts) {
    for (const int size : {2, 6, 2048, 8192}) {
        const RealFft fft(size);
        const AlignedVector<float> samples = noise(size, 3);
        AlignedVector<float> back(samples.size());
        Spectrum bins(static_cast<std::size_t>(fft.bins()));
        fft.forward(samples.data(), bins.data());
        bins.front() += std::complex<float>(0, 5);
        bins.back() += std::complex<float>(0, 7);
        fft.inverse(bins.data(), back.data());
        for (std::size_t i = 0; i < samples.size(); ++i) ASSERT_NEAR(back[i] / float(size), samples[i], 1e-6) << size;
    }
}

TEST(RealFft, GivesTheSameBitsOnManyThreadsWhileOthersAreMade) {
    const RealFft fft(1024);
    const AlignedVector<float> samples = noise(1024, 9);
    Spectrum expected(static_cast<std::size_t>(fft.bins()));
    fft.forward(samples.data(), expected.data());
    std::vector<std::jthread> threads;
    std::vector<int> differences(4);
    for (int &count : differences)
        threads.emplace_back([&] {
            Spectrum bins(expected.size());
            for (int round = 0; round < 50; ++round) {
                const RealFft other(1024);
                (round % 2 ? fft : other).forward(samples.data(), bins.data());
                count += bins != expected;
            }
        });
    threads.clear();
    EXPECT_EQ(differences, std::vector<int>(4));
}

TEST(RealFft, RefusesSizesItCannotDo) {
    for (const int size : {-2, 0, 1, 7}) EXPECT_THROW(RealFft{size}, std::invalid_argument) << size;
}

}  // namespace
}  // namespace kiv
