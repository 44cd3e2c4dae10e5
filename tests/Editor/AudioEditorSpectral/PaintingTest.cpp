#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

#include "Editor/AudioEditorCore/TestSounds.h"
#include "Editor/AudioEditorSpectral/Analysis.h"
#include "Editor/AudioEditorSpectral/Stroke.h"

namespace kiv::AudioEditorSpectral {
namespace {

double db(float gain) { return 20 * std::log10(double(gain)); }
float at(const Mask &mask, std::int64_t column, int band) { return mask.column(column)[band]; }

TEST(SpectralMask, TakesLittleMemoryForAnHourAndSharesWhatCopiesDoNotTouch) {
    const Mask hour(24000);
    EXPECT_LT(hour.bytes(), 100000u);
    Mask copy = hour;
    copy.writableColumn(5000)[3] = 0.5f;
    EXPECT_EQ(at(hour, 5000, 3), 1);
    EXPECT_EQ(at(copy, 5000, 3), 0.5f);
    EXPECT_TRUE(copy.shares(4000, hour));
    EXPECT_FALSE(copy.shares(5000, hour));
    EXPECT_LT(copy.bytes(), 120000u);
    EXPECT_FALSE(copy == hour);
    copy.writableColumn(5000)[3] = 1;
    EXPECT_TRUE(copy == hour);
}

TEST(SpectralMask, KnowsWhenItIsUniform) {
    Mask mask(40, floorGain);
    EXPECT_EQ(mask.uniform(), floorGain);
    mask.writableColumn(39)[255] = 1;
    mask.updateUniform();
    EXPECT_EQ(mask.uniform(), std::nullopt);
    mask.writableColumn(39)[255] = floorGain;
    mask.updateUniform();
    EXPECT_EQ(mask.uniform(), floorGain);
}

TEST(SpectralMask, IsMultipliedByBlocksWithinItsLimits) {
    const Mask mask = multiplied(multiplied(Mask(10), {2, 4}, {10, 20}, -6), {3, 99}, {-5, 15}, 12);
    EXPECT_NEAR(db(at(mask, 2, 12)), -6, 1e-5);
    EXPECT_NEAR(db(at(mask, 3, 12)), 6, 1e-5);
    EXPECT_NEAR(at(mask, 9, 0), maxGain, 1e-6);
    EXPECT_EQ(at(mask, 9, 15), 1);
    EXPECT_TRUE(multiplied(mask, {4, 4}, {0, 256}, -6) == mask);
    EXPECT_EQ(multiplied(multiplied(Mask(5), {0, 5}, {0, 256}, -90), {0, 5}, {0, 256}, -90).uniform(), floorGain);
}

TEST(SpectralBrush, SaysTheLevelOfAPass) {
    const struct {
        Brush brush;
        int intensity;
        const char *text;
    } cases[] = {{Brush::attenuate, 100, "-∞ dB"},  {Brush::attenuate, 0, "0 dB"},        {Brush::accentuate, 0, "0 dB"},
                 {Brush::attenuate, 50, "-6.0 dB"}, {Brush::accentuate, 100, "+12.0 dB"}, {Brush::accentuate, 999, "+12.0 dB"},
                 {Brush::attenuate, -5, "0 dB"},    {Brush::accentuate, 25, "+3.0 dB"}};
    for (const auto &[brush, intensity, text] : cases) EXPECT_EQ(levelText(brush, intensity), text);
    const std::pair<const char *, Brush> stored[] = {{"accentuate", Brush::accentuate},
                                                     {"attenuate", Brush::attenuate},
                                                     {"Accentuate", Brush::attenuate},
                                                     {"", Brush::attenuate}};
    for (const auto &[text, brush] : stored) EXPECT_EQ(brushFromText(text), brush);
}

// A stroke from place to place over a mask that is the same all over; the value in the middle.
float painted(float before, Brush brush, int intensity, const std::vector<Point> &places, Point look = {50.5, 128}) {
    Stroke stroke(Mask(200, before), brush, passFactor(brush, intensity));
    for (const Point &place : places) stroke.to(place, {8, 20});
    return at(stroke.mask(), std::int64_t(look.column), int(look.band));
}

TEST(SpectralStroke, OverlappingDabsOfAPassCountOnceAndPassesAddUp) {
    const Point here{50.5, 128}, near{52.5, 128}, away{100.5, 128};
    EXPECT_NEAR(db(painted(1, Brush::attenuate, 50, {here})), -6.02, 0.01);
    EXPECT_NEAR(db(painted(1, Brush::attenuate, 50, {here, near, here, near})), -6.02, 0.01) << "the brush never left";
    EXPECT_NEAR(db(painted(1, Brush::attenuate, 50, {here, away, here})), -12.04, 0.01) << "it came back";
    EXPECT_NEAR(db(painted(0.5f, Brush::accentuate, 50, {here})), -0.02, 0.01);
    EXPECT_NEAR(db(painted(1, Brush::accentuate, 50, {here, away, here})), 12, 0.01);
    EXPECT_EQ(painted(1, Brush::accentuate, 100, {here, away, here}), maxGain);
    EXPECT_EQ(painted(1, Brush::attenuate, 100, {here}), floorGain);
    EXPECT_EQ(painted(1, Brush::attenuate, 0, {here, away, here}), 1);
}

TEST(SpectralStroke, AccentuateFirstBringsSilenceBackToTheOriginal) {
    const Point here{50.5, 128}, away{100.5, 128}, rim{50.5, 145};
    for (const float silent : {floorGain, 0.001f}) {
        EXPECT_EQ(painted(silent, Brush::accentuate, 25, {here}), 1);
        EXPECT_NEAR(db(painted(silent, Brush::accentuate, 25, {here, away, here})), 3, 0.01);
    }
    EXPECT_EQ(painted(floorGain, Brush::accentuate, 25, {here}, rim), 1) << "as a whole, without a rim of half-revived values";
    EXPECT_EQ(painted(floorGain, Brush::accentuate, 0, {here}), floorGain);
    EXPECT_NEAR(db(painted(0.1f, Brush::accentuate, 25, {here})), -17, 0.01) << "what is only lowered is raised by the level";
}

TEST(SpectralStroke, FallsOffTowardsItsRimAndTouchesNothingBeyond) {
    Stroke stroke(Mask(200), Brush::attenuate, 0.1f);
    stroke.to({100.5, 100}, {20, 40});
    const Mask &mask = stroke.mask();
    double last = -21;
    for (const int distance : {0, 19, 24, 30, 36, 39}) {
        const double level = db(at(mask, 100, 100 + distance));
        EXPECT_GE(level, last) << distance;
        EXPECT_NEAR(level, db(at(mask, 100, 100 - distance)), 1e-6);
        last = level;
    }
    EXPECT_NEAR(db(at(mask, 100, 119)), -20, 1e-4) << "whole in its inner half";
    EXPECT_LT(db(at(mask, 110, 120)), -2);
    for (const auto &[column, band] : {std::pair(100, 141), {100, 59}, {121, 100}, {79, 100}, {116, 130}})
        EXPECT_EQ(at(mask, column, band), 1) << column << " " << band;
    EXPECT_EQ(stroke.dirty(), (ColumnRange{81, 120}));
    EXPECT_TRUE(mask.shares(150, stroke.base()));
    EXPECT_EQ(at(stroke.base(), 100, 100), 1);
}

TEST(SpectralStroke, DrawsOneEvenLineHoweverFastItIsDragged) {
    const auto line = [](const std::vector<double> &columns) {
        Stroke stroke(Mask(300), Brush::attenuate, 0.25f);
        for (const double column : columns) stroke.to({column, 90}, {10, 12});
        return stroke.mask();
    };
    std::vector<double> slow;
    for (double x = 40; x <= 240; x += 0.3) slow.push_back(x);
    const Mask fast = line({40, 240}), finely = line(slow);
    for (int c = 60; c < 220; ++c)
        for (int b = 70; b < 110; ++b) {
            ASSERT_NEAR(db(at(fast, c, b)), db(at(finely, c, b)), 0.7) << c << " " << b;
            ASSERT_NEAR(db(at(fast, c, b)), db(at(fast, 100, b)), 0.7) << c << " " << b;
        }
    EXPECT_NEAR(db(at(fast, 150, 90)), -12.04, 0.01);
}

TEST(SpectralStroke, OfABrushSmallerThanACellOrOutsideTheGridIsSafe) {
    Stroke stroke(Mask(10), Brush::attenuate, 0.5f);
    stroke.to({3.9, 100.4}, {0.01, 0.01});
    EXPECT_LT(db(at(stroke.mask(), 3, 100)), -3);
    EXPECT_EQ(stroke.takePending(), (ColumnRange{3, 5}));
    EXPECT_TRUE(stroke.takePending().isEmpty());
    stroke.to({-500, 900}, {3, 3});
    stroke.to({1e9, -1e9}, {3, 3});
    EXPECT_LE(stroke.dirty().hi, 10);
}

TEST(SpectralAnalysis, ReadsASineInItsBandAndSilenceAsNothing) {
    for (const double hz : {100.0, 1000.0, 9000.0}) {
        std::vector<float> samples(200000, 0.0f);
        for (std::size_t i = 100000; i < samples.size(); ++i)
            samples[i] = float(std::sin(2 * std::numbers::pi * hz / 44100 * double(i)));
        samples[50] = NAN;
        const State state(7, AudioEditorBuffer(samples, 1, 44100), 1);
        const Analysis analysis = analyze(state);
        EXPECT_EQ(analysis.stateID, 7);
        ASSERT_EQ(analysis.levels.size(), std::size_t(state.geometry.columns * bandCount));
        const auto level = [&](std::int64_t column, double f) {
            return Analysis::levelDb(analysis.column(column)[std::lround(state.geometry.bandAt(f))]);
        };
        EXPECT_NEAR(level(300, hz), -0.7, 0.9) << "a sine between two bins loses up to 1.4 dB";
        EXPECT_LT(level(300, hz * 2.3), -50);
        EXPECT_EQ(level(100, hz), Analysis::lowestDb);
    }
}

TEST(SpectralAnalysis, MissesNoClickInALongSound) {
    std::vector<float> samples(60000000, 0.0f);  // a column is longer than a transform
    for (std::size_t i = 1000; i < samples.size(); i += 2500 * 997) samples[i] = 1;
    const State state(1, AudioEditorBuffer(samples, 1, 44100), 1);
    const Analysis analysis = analyze(state);
    for (std::size_t i = 1000; i < samples.size(); i += 2500 * 997)
        EXPECT_GT(Analysis::levelDb(analysis.column(std::int64_t(i) / state.geometry.columnFrames)[200]), -70) << i;
}

}  // namespace
}  // namespace kiv::AudioEditorSpectral
