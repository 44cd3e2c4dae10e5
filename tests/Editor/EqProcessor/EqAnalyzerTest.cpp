#include "Editor/EqProcessor/EqAnalyzer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace kiv {
namespace {

constexpr double rate = 44100;
const EqGrid grid{880, 200, 20};

std::vector<float> sine(double hz, float level) {
    std::vector<float> samples;
    for (int i = 0; i < EqAnalyzer::fftSize; ++i)
        samples.push_back(level * float(std::sin(2 * std::numbers::pi * hz / rate * i)));
    return samples;
}

double tilt(double hz) { return 3 * std::log2(hz / 1000); }

TEST(EqAnalyzer, DrawsNothingUntilItHasHeardAWholeBlock) {
    EqAnalyzer analyzer;
    const std::vector<double> xs{0, 100};
    analyzer.push(std::vector<float>(4095, 1.0f), EqAnalyzer::input);
    EXPECT_FALSE(analyzer.curve(EqAnalyzer::input, grid, xs, rate));
    analyzer.push(std::vector<float>(4096, 1.0f), EqAnalyzer::input);
    EXPECT_FALSE(analyzer.curve(EqAnalyzer::output, grid, xs, rate));
    EXPECT_EQ(analyzer.curve(EqAnalyzer::input, grid, xs, rate)->size(), 2u);
    EXPECT_TRUE(analyzer.curve(EqAnalyzer::input, grid, {}, rate)->empty());
    analyzer.reset(EqAnalyzer::input);
    EXPECT_FALSE(analyzer.curve(EqAnalyzer::input, grid, xs, rate));
}

TEST(EqAnalyzer, ReadsASineAtItsLevelTiltedAtAnyFrequency) {
    for (const int bin : {6, 93, 500, 1500})
        for (const float level : {1.0f, 0.01f}) {
            EqAnalyzer analyzer;
            const double hz = bin * rate / EqAnalyzer::fftSize, x = grid.x(hz);
            for (int i = 0; i < 40; ++i) analyzer.push(sine(hz, level), EqAnalyzer::output);
            const auto levels = analyzer.curve(EqAnalyzer::output, grid, std::vector{x, 0.0, 880.0}, rate);
            EXPECT_NEAR((*levels)[0], 20 * std::log10(level) + tilt(hz), 0.1) << hz;
            EXPECT_EQ((*levels)[1], EqAnalyzer::floorDb);
        }
}

TEST(EqAnalyzer, RisesByHalfAndFallsSlowly) {
    EqAnalyzer analyzer;
    const double hz = 93 * rate / EqAnalyzer::fftSize;
    const auto held = [&] { return (*analyzer.curve(EqAnalyzer::input, grid, std::vector{grid.x(hz)}, rate))[0] - tilt(hz); };
    for (int i = 0; i < 40; ++i) analyzer.push(sine(hz, 1), EqAnalyzer::input);
    analyzer.push(sine(hz, 0.01f), EqAnalyzer::input);  // −40 dB
    EXPECT_NEAR(held(), -40 * 0.08, 0.05);
    analyzer.push(sine(hz, 1), EqAnalyzer::input);
    EXPECT_NEAR(held(), -40 * 0.08 / 2, 0.05);
}

TEST(EqAnalyzer, ShowsNothingAboveHalfTheRate) {
    EqAnalyzer analyzer;
    for (int i = 0; i < 10; ++i) analyzer.push(std::vector<float>(4096, 0.5f), EqAnalyzer::input);
    const std::vector<double> xs{grid.x(3900), grid.x(4001), 880};
    analyzer.push(sine(3900 * rate / 8000, 1), EqAnalyzer::input);
    const auto levels = *analyzer.curve(EqAnalyzer::input, grid, xs, 8000);
    EXPECT_GT(levels[0], EqAnalyzer::floorDb);
    EXPECT_EQ(levels[1], EqAnalyzer::floorDb);
    EXPECT_EQ(levels[2], EqAnalyzer::floorDb);
}

}  // namespace
}  // namespace kiv
