#include "Editor/AudioEditorSpectral/Render.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "Editor/AudioEditorCore/TestSounds.h"
#include "Editor/AudioEditorSpectral/FFT.h"
#include "Editor/AudioEditorSpectral/Stroke.h"

namespace kiv::AudioEditorSpectral {
namespace {

constexpr std::int64_t frames = 40000;

Mask patterned(std::int64_t columns, std::uint32_t seed) {
    Mask mask(columns);
    const std::vector<float> values = noiseSamples(columns * bandCount, seed);
    for (std::int64_t c = 0; c < columns; ++c)
        for (int b = 0; b < bandCount; ++b) mask.writableColumn(c)[b] = std::fabs(values[std::size_t(c * bandCount + b)]);
    return mask;
}

AudioEditorBuffer rendered(const State &state, const Mask &mask) {
    return render(state, mask, {0, state.geometry.columns}, state.original);
}

float largestDifference(const AudioEditorBuffer &a, const AudioEditorBuffer &b, FrameRange range) {
    const std::vector<float> x = a.part(range).samples(), y = b.part(range).samples();
    float most = 0;
    for (std::size_t i = 0; i < x.size(); ++i) most = std::max(most, std::fabs(x[i] - y[i]));
    return most;
}

TEST(SpectralGeometry, FollowsTheRateAndTheLength) {
    const struct {
        std::int64_t frames, rate;
        int fftSize;
        std::int64_t columnFrames, columns;
    } cases[] = {{44100, 44100, 2048, 512, 87},
                 {96000, 96000, 4096, 1024, 94},
                 {192000, 192000, 8192, 2048, 94},
                 {28800000, 48000, 2048, 1200, 24000},
                 {0, 44100, 2048, 512, 1},
                 {1, 8000, 2048, 512, 1},
                 {3600 * 48000LL, 48000, 2048, 7200, 24000}};
    for (const auto &c : cases) {
        const Geometry geometry(c.frames, c.rate);
        EXPECT_EQ(geometry.fftSize, c.fftSize);
        EXPECT_EQ(geometry.hop, c.fftSize / 4);
        EXPECT_EQ(geometry.columnFrames, c.columnFrames);
        EXPECT_EQ(geometry.columns, c.columns);
        const std::vector<BinBand> bands = binBands(geometry);
        for (int k = 0; k * c.rate <= 40 * c.fftSize; ++k)
            EXPECT_EQ(bands[std::size_t(k)].band + bands[std::size_t(k)].weight, 0);
        EXPECT_EQ(bands.back().band, 254);
        EXPECT_EQ(bands.back().weight, 1);
    }
    const Geometry geometry(44100, 44100);
    EXPECT_NEAR(geometry.bandAt(geometry.bandHz(100)), 100, 1e-9);
    EXPECT_NEAR(geometry.bandHz(255), 22050, 1e-6);
}

TEST(SpectralGeometry, FindsEveryTransformThatReadsAColumn) {
    for (const std::int64_t length : {100LL, 5000LL, 44100LL, 30000000LL}) {
        const Geometry geometry(length, 44100);
        for (const ColumnRange range : {ColumnRange{0, 1}, {3, 4}, {5, 9}, {geometry.columns - 1, geometry.columns}}) {
            const ColumnRange found = geometry.transformsReading(range);
            for (std::int64_t n = 0; n < std::min<std::int64_t>(geometry.transforms(), 60000); ++n) {
                const auto at = geometry.columnPosition(n);
                const bool reads =
                    (at.c0 >= range.lo && at.c0 < range.hi) || (at.t > 0 && at.c1 >= range.lo && at.c1 < range.hi);
                ASSERT_TRUE(!reads || (n >= found.lo && n < found.hi)) << length << " " << n;
            }
            ASSERT_LE(found.count(), (range.count() + 1) * (geometry.columnFrames / geometry.hop + 1) + 10);
        }
    }
}

TEST(SpectralRender, AMaskOfOnesGivesTheSamplesBackWithTheirMemory) {
    for (const std::int64_t channels : {1, 2, 3}) {
        const State state(1, inPieces(noise(frames, channels, 2)), 1);
        Mask ones = state.mask;
        EXPECT_EQ(rendered(state, ones).sharedPrefix(state.original), frames);
        ones.writableColumn(3)[7] = 1;  // now nobody knows that it is uniform
        EXPECT_EQ(rendered(state, ones).sharedPrefix(state.original), frames);
    }
}

TEST(SpectralRender, OneGainAllOverScalesEverySampleUpToBothEnds) {
    const State state(1, noise(frames, 2, 3), 1);
    for (const float gain : {floorGain, 0.5f, maxGain}) {
        const Mask uniform(state.geometry.columns, gain);
        Mask unknowing = uniform;
        unknowing.writableColumn(0);
        const std::vector<float> in = state.original.samples();
        const std::vector<float> exact = rendered(state, uniform).samples(), near = rendered(state, unknowing).samples();
        for (std::size_t i = 0; i < in.size(); ++i) {
            ASSERT_EQ(exact[i], float(double(in[i]) * double(gain)));
            ASSERT_NEAR(near[i], exact[i], 1e-6f * std::max(gain, 1.0f)) << i;
        }
    }
}

// The transforms one after the other over the whole sound, as the method is written down.
std::vector<float> renderedPlainly(const State &state, const Mask &mask, std::int64_t channel) {
    const Geometry &g = state.geometry;
    const FFT fft(g.fftSize);
    const auto bands = binBands(g);
    const auto frame = makeFftReals(std::size_t(g.fftSize));
    const auto bins = makeFftBins(bands.size());
    std::vector<float> padded(std::size_t(g.frameCount + 2 * g.fftSize));
    state.original.copyChannel({0, g.frameCount}, channel, padded.data() + g.fftSize);
    std::vector<double> sum(padded.size());
    for (std::int64_t n = 0; n < g.transforms(); ++n) {
        const std::size_t at = std::size_t(g.start(n) + g.fftSize);
        fft.forward(padded.data() + at, frame.get(), bins.get());
        const auto [c0, c1, t] = g.columnPosition(n);
        const auto value = [&](int b) { return mask.column(c0)[b] + t * (mask.column(c1)[b] - mask.column(c0)[b]); };
        for (std::size_t k = 0; k < bands.size(); ++k)
            bins[k] *= value(bands[k].band) + bands[k].weight * (value(bands[k].band + 1) - value(bands[k].band));
        fft.transform.inverse(bins.get(), frame.get());
        for (int i = 0; i < g.fftSize; ++i)
            sum[at + std::size_t(i)] += double(frame[std::size_t(i)]) * double(fft.window[std::size_t(i)]) / (1.5 * g.fftSize);
    }
    return {sum.begin() + g.fftSize, sum.end() - g.fftSize};
}

TEST(SpectralRender, IsWhatTheTransformsOneByOneGive) {
    for (const std::int64_t rate : {44100, 96000})
        for (const std::int64_t length : {1LL, 700LL, 20001LL}) {
            const State state(1, noise(length, 3, 5).atRate(rate), 1);
            const Mask mask = patterned(state.geometry.columns, 6);
            const AudioEditorBuffer out = rendered(state, mask);
            for (const std::int64_t channel : {0, 2}) {
                const std::vector<float> plain = renderedPlainly(state, mask, channel);
                for (std::int64_t i = 0; i < length; ++i)
                    ASSERT_NEAR(out.sample(i, channel), plain[std::size_t(i)], 2e-6f) << i;
            }
        }
}

TEST(SpectralRender, ByColumnsIsBitForBitWhatItIsAtOnce) {
    for (const std::int64_t channels : {1, 2}) {
        const State state(1, noise(200000, channels, 7), 1);
        const Mask mask = patterned(state.geometry.columns, 8);
        const AudioEditorBuffer whole = rendered(state, mask);
        AudioEditorBuffer parts = state.original;
        for (std::int64_t c = 0; c < state.geometry.columns; c += 37) parts = render(state, mask, {c, c + 37}, parts);
        EXPECT_EQ(parts, whole);
        EXPECT_EQ(render(state, state.mask, {0, state.geometry.columns}, parts), state.original) << "and back again";
        EXPECT_EQ(render(state, mask, {50, 50}, whole).sharedPrefix(whole), whole.frames());
    }
}

State tones(const std::vector<double> &hz) {
    std::vector<float> samples(std::size_t(frames), 0.0f);
    for (std::size_t i = 0; i < samples.size(); ++i)
        for (const double f : hz) samples[i] += 0.2f * float(std::sin(2 * std::numbers::pi * f * double(i) / 44100));
    return State(1, AudioEditorBuffer(samples, 1, 44100), 1);
}

double toneDb(const AudioEditorBuffer &buffer, double hz, FrameRange range) {
    std::complex<double> sum;
    for (std::int64_t i = range.lo; i < range.hi; ++i) {
        const double w = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * double(i - range.lo) / double(range.count()));
        sum += w * double(buffer.sample(i, 0)) * std::polar(1.0, -2 * std::numbers::pi * hz * double(i) / 44100);
    }
    return 20 * std::log10(std::abs(sum) * 4 / double(range.count()) / 0.2);
}

TEST(SpectralRender, ChangesTheToneThatIsPaintedByTheGainThatIsPaintedAndNoOther) {
    const State state = tones({1000, 5000});
    const int band = int(state.geometry.bandAt(5000));
    const FrameRange middle{16000, 26000};
    for (const double db : {-96.0, -20.0, -6.0, 12.0}) {
        const Mask mask = multiplied(state.mask, {20, 60}, {band - 12, band + 14}, db);
        const AudioEditorBuffer out = rendered(state, mask);
        EXPECT_NEAR(toneDb(out, 5000, middle), db, db < -90 ? 10 : 0.05);
        EXPECT_NEAR(toneDb(out, 1000, middle), 0, 0.001);
    }
}

TEST(SpectralRender, AStrokeHasNoStepAtItsEndsAndLeavesTheRestItsMemory) {
    const State state = tones({400});
    const Mask mask = multiplied(state.mask, {30, 31}, {0, 256}, -96);
    const AudioEditorBuffer out = rendered(state, mask);
    const FrameRange under = state.geometry.framesUnder(state.geometry.transformsReading({30, 31}));
    EXPECT_GE(out.sharedPrefix(state.original), under.lo);
    EXPECT_GE(out.sharedSuffix(state.original), frames - under.hi);
    EXPECT_GT(largestDifference(out, state.original, under), 0.05f);
    float steepest = 0, steepestBefore = 0;  // second differences
    for (std::int64_t i = under.lo - 10; i < under.hi + 10; ++i) {
        const auto bend = [i](const AudioEditorBuffer &b) {
            return std::fabs(b.sample(i - 1, 0) - 2 * b.sample(i, 0) + b.sample(i + 1, 0));
        };
        steepest = std::max(steepest, bend(out));
        steepestBefore = std::max(steepestBefore, bend(state.original));
    }
    EXPECT_LT(steepest, 1.05f * steepestBefore);
}

TEST(SpectralRender, KeepsWhatIsNoNumberToItself) {
    std::vector<float> samples = noiseSamples(frames, 9);
    samples[20000] = NAN;
    const State state(1, AudioEditorBuffer(samples, 1, 44100), 1);
    const std::vector<float> out = rendered(state, Mask(patterned(state.geometry.columns, 3))).samples();
    for (std::size_t i = 0; i < out.size(); ++i) ASSERT_EQ(std::isnan(out[i]), i == 20000) << i;
}

TEST(SpectralRender, CanBeCancelledAndHasNothingToDoOnNothing) {
    const State state(1, noise(frames, 1, 2), 1), nothing(1, AudioEditorBuffer(2, 44100), 1);
    Progress cancelled;
    cancelled.cancel();
    EXPECT_THROW(render(state, patterned(state.geometry.columns, 1), {0, 99}, state.original, &cancelled), Cancelled);
    EXPECT_TRUE(render(nothing, patterned(1, 1), {0, 1}, nothing.original).isEmpty());
}

}  // namespace
}  // namespace kiv::AudioEditorSpectral
