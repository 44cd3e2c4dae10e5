#include "Editor/AudioEditorSpectral/Render.h"

#include <algorithm>
#include <array>

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Editor/AudioEditorSpectral/FFT.h"
#include "Support/Parallel.h"
#include "Support/Vectorised.h"

namespace kiv::AudioEditorSpectral {
namespace {

// The sound is thought of as blocks of one hop. Transform n covers the blocks n − 3 … n.
constexpr std::int64_t overlap = 4;
constexpr std::int64_t mostPartBlocks = 64, leastPartBlocks = 8;
// Fewer untouched samples than this between touched ones are not worth a piece of their own.
constexpr std::int64_t smallGap = 8192;

using Blocks = ColumnRange;

KIV_VECTORISED void multiplyAdd(const float *__restrict in, const float *__restrict window, std::int64_t count,
                                float *__restrict sum) {
    for (std::int64_t i = 0; i < count; ++i) sum[i] += in[i] * window[i];
}

// Pairs of real and imaginary part.
KIV_VECTORISED void scaleBins(const float *__restrict gains, std::int64_t bins, float *__restrict spectrum) {
    for (std::int64_t k = 0; k < bins; ++k) {
        spectrum[2 * k] *= gains[k];
        spectrum[2 * k + 1] *= gains[k];
    }
}

KIV_VECTORISED void interpolate(const float *__restrict a, const float *__restrict b, float t, float *__restrict out) {
    for (int i = 0; i < bandCount; ++i) out[i] = a[i] + t * (b[i] - a[i]);
}

KIV_VECTORISED void addPairs(const float *__restrict left, const float *__restrict right, const float *__restrict addLeft,
                             const float *__restrict addRight, float scale, std::int64_t frames, float *__restrict out) {
    for (std::int64_t i = 0; i < frames; ++i) {
        out[2 * i] = left[i] + addLeft[i] * scale;
        out[2 * i + 1] = right[i] + addRight[i] * scale;
    }
}

// What all parts of a rendering read.
struct Setup {
    const State &state;
    const Mask &mask;
    FFT fft;
    std::vector<BinBand> bands;

    const Geometry &geometry() const { return state.geometry; }
    bool isUnity(std::int64_t transform) const {
        const auto at = geometry().columnPosition(transform);
        return AudioEditorSpectral::isUnity(mask.column(at.c0)) && AudioEditorSpectral::isUnity(mask.column(at.c1));
    }
};

// What one worker needs of memory, for parts of up to a number of blocks.
struct Scratch {
    Scratch(const Setup &setup, std::int64_t blocks)
        : stride((blocks + 2 * (overlap - 1)) * setup.geometry().hop),
          input(std::size_t(stride * setup.state.original.channels())),
          sum(std::size_t(stride * setup.state.original.channels())),
          bins(std::size_t(setup.fft.transform.bins())),
          frame(makeFftReals(std::size_t(setup.fft.size))),
          spectrum(makeFftBins(bins.size())) {}

    std::int64_t stride;            // frames a channel: the part and a margin of three blocks on either side
    std::vector<float> input, sum;  // planar
    std::vector<float> bins;        // of one transform, as are the next two
    FftArray<float> frame;
    FftArray<std::complex<float>> spectrum;
    std::array<float, bandCount> bandValues{};
};

// Renders a run of blocks.
class Part {
public:
    Part(const Setup &setup, Scratch &scratch, Blocks blocks)
        : setup_(setup),
          scratch_(scratch),
          blocks_(blocks),
          hop_(setup.geometry().hop),
          origin_((blocks.lo - (overlap - 1)) * hop_),
          channels_(setup.state.original.channels()) {}

    // `out` is where the first of the blocks goes, interleaved.
    void render(float *out) {
        read();
        for (std::int64_t transform = blocks_.lo; transform < blocks_.hi + overlap - 1; ++transform)
            if (!setup_.isUnity(transform)) add(transform);
        write(out);
    }

private:
    // Frames outside the sound are silence.
    void read() {
        const AudioEditorBuffer &sound = setup_.state.original;
        const std::int64_t end = origin_ + scratch_.stride;
        const FrameRange inside{std::max<std::int64_t>(origin_, 0), std::min(end, sound.frames())};
        for (std::int64_t c = 0; c < channels_; ++c) {
            float *to = scratch_.input.data() + c * scratch_.stride;
            std::fill(to, to + (inside.lo - origin_), 0.0f);
            sound.copyChannel(inside, c, to + (inside.lo - origin_));
            std::fill(to + (inside.hi - origin_), to + scratch_.stride, 0.0f);
        }
        std::fill(scratch_.sum.begin(), scratch_.sum.end(), 0.0f);
    }

    // What each bin is multiplied by, less 1.
    void findGains(std::int64_t transform) {
        const auto at = setup_.geometry().columnPosition(transform);
        interpolate(setup_.mask.column(at.c0), setup_.mask.column(at.c1), at.t, scratch_.bandValues.data());
        const float *values = scratch_.bandValues.data();
        for (std::size_t k = 0; k < scratch_.bins.size(); ++k) {
            const auto [band, weight] = setup_.bands[k];
            scratch_.bins[k] = values[band] + weight * (values[band + 1] - values[band]) - 1;
        }
    }

    void add(std::int64_t transform) {
        findGains(transform);
        const std::int64_t offset = setup_.geometry().start(transform) - origin_;
        const FFT &fft = setup_.fft;
        for (std::int64_t c = 0; c < channels_; ++c) {
            const std::int64_t at = c * scratch_.stride + offset;
            fft.forward(scratch_.input.data() + at, scratch_.frame.get(), scratch_.spectrum.get());
            scaleBins(scratch_.bins.data(), std::int64_t(scratch_.bins.size()),
                      reinterpret_cast<float *>(scratch_.spectrum.get()));
            fft.transform.inverse(scratch_.spectrum.get(), scratch_.frame.get());
            multiplyAdd(scratch_.frame.get(), fft.window.data(), fft.size, scratch_.sum.data() + at);
        }
    }

    void write(float *out) const {
        const std::int64_t margin = (overlap - 1) * hop_;
        const std::int64_t frames = std::min(blocks_.hi * hop_, setup_.geometry().frameCount) - blocks_.lo * hop_;
        const float scale = float(1 / (1.5 * setup_.fft.size));
        const float *in = scratch_.input.data() + margin, *sum = scratch_.sum.data() + margin;
        const std::int64_t stride = scratch_.stride;
        if (channels_ == 2) return addPairs(in, in + stride, sum, sum + stride, scale, frames, out);
        for (std::int64_t c = 0; c < channels_; ++c)
            for (std::int64_t i = 0; i < frames; ++i) out[i * channels_ + c] = in[c * stride + i] + sum[c * stride + i] * scale;
    }

    const Setup &setup_;
    Scratch &scratch_;
    Blocks blocks_;
    std::int64_t hop_, origin_, channels_;
};

// Runs of blocks that lie under a transform with a gain other than 1, in order.
std::vector<Blocks> touchedRuns(const Setup &setup, Blocks range) {
    const std::int64_t hop = setup.geometry().hop, gap = smallGap / hop / setup.state.original.channels();
    std::vector<Blocks> runs;
    for (std::int64_t transform = range.lo; transform < range.hi + overlap - 1; ++transform) {
        if (setup.isUnity(transform)) continue;
        const Blocks under{std::max(transform - (overlap - 1), range.lo), std::min(transform + 1, range.hi)};
        const bool joins = !runs.empty() && under.lo <= runs.back().hi + gap;
        joins ? void(runs.back().hi = under.hi) : runs.push_back(under);
    }
    return runs;
}

AudioEditorBuffer renderRun(const Setup &setup, Blocks run, Progress *progress) {
    const Geometry &geometry = setup.geometry();
    const std::int64_t channels = setup.state.original.channels();
    const std::int64_t frames = std::min(run.hi * geometry.hop, geometry.frameCount) - run.lo * geometry.hop;
    SampleMemory out(std::size_t(frames * channels));
    const std::int64_t grain =
        std::clamp((run.count() + parallelThreads() - 1) / parallelThreads(), leastPartBlocks, mostPartBlocks);
    const std::int64_t parts = (run.count() + grain - 1) / grain;
    const std::int64_t partsAWorker = std::max<std::int64_t>(parts / (8 * parallelThreads()), 1);
    parallelFor(parts, partsAWorker, [&](std::int64_t first, std::int64_t last) {
        Scratch scratch(setup, grain);
        for (std::int64_t part = first; part < last; ++part) {
            const Blocks blocks{run.lo + part * grain, std::min(run.lo + (part + 1) * grain, run.hi)};
            Part(setup, scratch, blocks).render(out.data() + part * grain * geometry.hop * channels);
            if (progress) progress->add(blocks.count());
        }
    });
    return AudioEditorBuffer(std::move(out), channels, setup.state.original.sampleRate());
}

AudioEditorBuffer renderUniform(const State &state, FrameRange range, float gain) {
    const AudioEditorBuffer part = state.original.part(range);
    return gain == 1 ? part : AudioEditorOps::scaled(part, {0, part.frames()}, double(gain));
}

}  // namespace

AudioEditorBuffer render(const State &state, const Mask &mask, ColumnRange columns, const AudioEditorBuffer &buffer,
                         Progress *progress) {
    const Geometry &geometry = state.geometry;
    const FrameRange frames = geometry.framesUnder(geometry.transformsReading(geometry.clamped(columns)));
    if (geometry.clamped(columns).isEmpty() || frames.isEmpty()) return buffer;
    if (mask.uniform()) return buffer.replacing(frames, renderUniform(state, frames, *mask.uniform()));
    const Setup setup{state, mask, FFT(geometry.fftSize), binBands(geometry)};
    const Blocks blocks{frames.lo / geometry.hop, (frames.hi + geometry.hop - 1) / geometry.hop};
    if (progress) progress->start(blocks.count());
    AudioEditorBuffer result = buffer.replacing(frames, state.original.part(frames));
    for (const Blocks run : touchedRuns(setup, blocks)) {
        const AudioEditorBuffer rendered = renderRun(setup, run, progress);
        result = result.replacing({run.lo * geometry.hop, run.lo * geometry.hop + rendered.frames()}, rendered);
    }
    return result;
}

std::int64_t renderCost(const State &state, ColumnRange columns) {
    const Geometry &geometry = state.geometry;
    return geometry.transformsReading(geometry.clamped(columns)).count() * state.original.channels();
}

}  // namespace kiv::AudioEditorSpectral
