#include <gmock/gmock.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <unordered_set>

#include "Editor/EqCore/EqBiquad.h"
#include "Editor/EqCore/EqGrid.h"
#include "Editor/EqCore/EqResponse.h"

namespace kiv {
namespace {

using testing::ElementsAre;

EqSettings with(void (*change)(EqSettings &)) {
    EqSettings settings;
    change(settings);
    return settings;
}

TEST(EqSettings, AreTransparentWhereNothingCanBeHeard) {
    const struct {
        const char *title;
        void (*change)(EqSettings &);
        bool transparent;
    } cases[] = {
        {"defaults", [](EqSettings &) {}, true},
        {"a band on without gain", [](EqSettings &s) { s.bands[1].on = true; }, true},
        {"a band with gain but off", [](EqSettings &s) { s.bands[1].gainDb = 6; }, true},
        {"a band on with gain",
         [](EqSettings &s) {
             s.bands[3] = {true, 5000, -0.1, 1};
         },
         false},
        {"output gain", [](EqSettings &s) { s.gainDb = 0.1; }, false},
        {"low cut", [](EqSettings &s) { s.lowCut.on = true; }, false},
        {"high cut", [](EqSettings &s) { s.highCut.on = true; }, false},
    };
    for (const auto &[title, change, transparent] : cases) EXPECT_EQ(with(change).isTransparent(), transparent) << title;
}

TEST(EqSettings, OfEqualValueHaveEqualHashes) {
    const EqSettings a, b = with([](EqSettings &s) { s.bands[2].q = 2; });
    const std::unordered_set<EqSettings> set{a, b, EqSettings{}};
    EXPECT_EQ(set.size(), 2u);
}

TEST(EqRange, RunsThroughItsScaleAndStopsAtItsEnds) {
    const struct {
        const EqRange &range;
        double value, position;
    } cases[] = {
        {EqRanges::outputGainDb, 0, 0.5},
        {EqRanges::outputGainDb, 12, 1},
        {EqRanges::freqHz, 20, 0},
        {EqRanges::freqHz, 20000, 1},
        {EqRanges::freqHz, 200, 1.0 / 3},
        {EqRanges::bandGainDb, -20, 0},
        {EqRanges::bandGainDb, 10, 0.75},
        {EqRanges::q, 0.1, 0},
        {EqRanges::q, 1, 0.5},
        {EqRanges::q, 10, 1},
    };
    for (const auto &[range, value, position] : cases) {
        EXPECT_NEAR(range.position(value), position, 1e-12);
        EXPECT_NEAR(range.value(position), value, 1e-9);
    }
    EXPECT_EQ(EqRanges::freqHz.value(-1), 20);
    EXPECT_EQ(EqRanges::freqHz.value(2), 20000);
    EXPECT_EQ(EqRanges::q.clamped(NAN), 0.1);
    const EqSettings wild = clamped(with([](EqSettings &s) {
        s.gainDb = 99;
        s.lowCut.freqHz = 1;
        s.bands[0] = {true, 1e9, -99, 0};
    }));
    EXPECT_EQ(wild.gainDb, 12);
    EXPECT_EQ(wild.lowCut.freqHz, 20);
    EXPECT_EQ(wild.bands[0], (EqBand{true, 20000, -20, 0.1}));
    EXPECT_EQ(eqResetValue(2, EqBandParam::freq), 1000);
    EXPECT_EQ(eqResetValue(3, EqBandParam::q), 0.707);
}

// The analog prototypes as they are written, in complex arithmetic.
double prototypeDb(EqBandKind kind, double freqHz, double gainDb, double q, double hz) {
    const std::complex<double> s(0, hz / freqHz);
    const double a = std::pow(10.0, gainDb / 40), r = std::sqrt(a) / q;
    std::complex<double> h;
    if (kind == EqBandKind::peak) {
        const double quality = q / std::numbers::sqrt2;
        h = (s * s + a / quality * s + 1.0) / (s * s + 1 / (a * quality) * s + 1.0);
    } else if (kind == EqBandKind::lowShelf) {
        h = a * (s * s + r * s + a) / (a * s * s + r * s + 1.0);
    } else {
        h = a * (a * s * s + r * s + 1.0) / (s * s + r * s + a);
    }
    return 20 * std::log10(std::abs(h));
}

TEST(EqBiquad, MeetsItsPrototypeAtZeroAtItsFrequencyAndAtHalfTheRate) {
    for (const EqBandKind kind : {EqBandKind::lowShelf, EqBandKind::peak, EqBandKind::highShelf})
        for (const double rate : {8000.0, 48000.0, 192000.0})
            for (const double freq : {20.0, 0.05 * rate, 0.15 * rate})
                for (const double gain : {-20.0, -3.0, 6.0, 20.0})
                    for (const double q : {0.1, 0.707, 10.0})
                        for (const double hz : {0.0, freq, rate / 2}) {
                            const double got = EqBiquad(kind, freq, gain, q, rate).magnitudeDb(hz, rate);
                            EXPECT_NEAR(got, prototypeDb(kind, freq, gain, q, hz), 1e-4)
                                << int(kind) << " " << rate << " " << freq << " " << gain << " " << q << " at " << hz;
                        }
}

TEST(EqBiquad, KeepsABellsShapeNearHalfTheRate) {
    const EqBiquad bell(EqBandKind::peak, 1000, 12, 1, 48000);
    EXPECT_NEAR(bell.magnitudeDb(1000, 48000), 12, 1e-9);
    EXPECT_NEAR(bell.magnitudeDb(23000, 48000), prototypeDb(EqBandKind::peak, 1000, 12, 1, 23000), 0.01);
}

TEST(EqBiquad, WithoutGainLetsEverythingPass) {
    for (const EqBandKind kind : {EqBandKind::lowShelf, EqBandKind::peak, EqBandKind::highShelf}) {
        const EqBiquad flat(kind, 300, 0, 1.3, 44100);
        EXPECT_NEAR(flat.b0, 1, 1e-12);
        EXPECT_NEAR(flat.b1, flat.a1, 1e-12);
        EXPECT_NEAR(flat.b2, flat.a2, 1e-12);
    }
}

TEST(EqBiquad, TakesFrequenciesQualitiesAndRatesItCanUse) {
    const auto peak = [](double freq, double q, double rate) { return EqBiquad(EqBandKind::peak, freq, 6, q, rate); };
    EXPECT_EQ(peak(40000, 1, 48000), peak(0.45 * 48000, 1, 48000));
    EXPECT_EQ(peak(0.5, 1, 48000), peak(1, 1, 48000));
    EXPECT_EQ(peak(1000, 0, 48000), peak(1000, 0.01, 48000));
    EXPECT_EQ(peak(1000, 1, 0), peak(1000, 1, 44100));
    EXPECT_EQ(peak(30000, 1, -1), peak(19845, 1, 44100));
    EXPECT_EQ(EqBiquad::lowPass(40000, 0, 48000), EqBiquad::lowPass(21600, 0.01, 48000));
    EXPECT_EQ(EqBiquad::highPass(1000, 1, 48000).magnitudeDb(0, 48000), -300);
}

TEST(EqResponse, CutsFallAsButterworthsDo) {
    const auto low = [](double hz) { return EqResponse::lowCutDb({true, 200}, hz, 48000); };
    const auto high = [](double hz) { return EqResponse::highCutDb({true, 1000}, hz, 192000); };
    EXPECT_NEAR(low(200), -3.01, 0.01);
    EXPECT_NEAR(low(25) - low(50), -36, 0.2);
    EXPECT_NEAR(high(1000), -3.01, 0.01);
    EXPECT_NEAR(high(8000) - high(4000), -24, 0.3);
    EXPECT_EQ(EqResponse::lowCutDb({false, 200}, 20, 48000), 0);
    EXPECT_EQ(EqResponse::highCutDb({false, 200}, 20000, 48000), 0);
}

TEST(EqResponse, AddsWhatIsOn) {
    EqSettings settings = with([](EqSettings &s) {
        s.gainDb = -2;
        s.bands[2] = {true, 1000, 6, 1};
        s.bands[1] = {false, 1000, 6, 1};
        s.bands[0] = {true, 1000, 0, 1};
    });
    EXPECT_NEAR(EqResponse::totalDb(settings, 1000, 48000), 4, 1e-9);
    settings.lowCut = {true, 1000};
    EXPECT_NEAR(EqResponse::totalDb(settings, 1000, 48000), 4 + EqResponse::lowCutDb(settings.lowCut, 1000, 48000), 1e-12);
}

TEST(EqGrid, HasItsLinesAndRanges) {
    const auto lines = [](double range) { return EqGrid{100, 100, range}.dbLines(); };
    EXPECT_THAT(lines(6), ElementsAre(1, -1, 2, -2, 3, -3, 4, -4, 5, -5));
    EXPECT_THAT(lines(12), ElementsAre(3, -3, 6, -6, 9, -9));
    EXPECT_THAT(lines(20), ElementsAre(5, -5, 10, -10, 15, -15));
    EXPECT_THAT(lines(30), ElementsAre(10, -10, 20, -20));
    EXPECT_THAT(lines(1), ElementsAre());
    EXPECT_THAT(EqGrid::minorHz(), ElementsAre(40, 60, 70, 80, 90, 400, 600, 700, 800, 900, 4000, 6000, 7000, 8000, 9000));
    const std::pair<double, double> ranges[] = {{6, 12}, {12, 20}, {20, 30}, {30, 6}, {7, 20}};
    for (const auto &[range, next] : ranges) EXPECT_EQ(EqGrid::nextDbRange(range), next);
    const EqGrid grid{300, 100, 20};
    EXPECT_NEAR(grid.hz(0), 20, 1e-9);
    EXPECT_NEAR(grid.hz(100), 200, 1e-9);
    EXPECT_NEAR(grid.x(20000), 300, 1e-9);
}

TEST(EqGrid, WritesFrequencies) {
    const std::pair<double, const char *> labels[] = {{50, "50"}, {199.6, "200"}, {1000, "1k"}, {1500, "1.5k"}, {2000, "2k"}};
    for (const auto &[hz, text] : labels) EXPECT_EQ(EqGrid::label(hz), text);
    const std::pair<double, const char *> readouts[] = {{99.94, "99.9 Hz"}, {100, "100 Hz"},     {200.5, "201 Hz"},
                                                        {1250, "1.25 kHz"}, {9999, "10.00 kHz"}, {12000, "12.0 kHz"}};
    for (const auto &[hz, text] : readouts) EXPECT_EQ(EqGrid::readout(hz), text);
}

}  // namespace
}  // namespace kiv
