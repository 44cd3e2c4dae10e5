#include <algorithm>
#include <cmath>

#include "Editor/AudioEditorCore/AudioEditorStretch.h"
#include "Editor/AudioEditorCore/SampleKernels.h"
#include "Support/Parallel.h"

// The stretch by cycles of a fixed length, and the search for a length that suits.
namespace kiv::AudioEditorOps {
namespace {

constexpr std::int64_t taskFrames = 1 << 16;
constexpr int usualCycle = 1000;

// Grains of one length, each faded into the next one.
struct Cycles {
    std::int64_t inFrames, outFrames;
    std::int64_t length, fade, hop;
    double pitch;
    std::vector<double> starts;  // where each is read from, a frame of the range

    Cycles(std::int64_t in, const StretchSettings &settings)
        : inFrames(in),
          outFrames(stretchedFrames(settings, in)),
          length(std::max<std::int64_t>(8, std::min<std::int64_t>(in, stretchCycleRange.clamp(settings.cycle)))),
          fade(std::max<std::int64_t>(1, std::min<std::int64_t>(length / 2, std::llround(double(length) * 0.25)))),
          hop(length - fade),
          pitch(stretchPitchRatio(settings.semitones, settings.cents)) {
        const double step = double(hop) / (stretchTimePercentRange.clamp(settings.timePercent) / 100.0);
        double at = 0;
        for (std::int64_t out = 0; out < outFrames && at < double(in); out += hop, at += step) starts.push_back(at);
    }

    float weight(std::size_t grain, std::int64_t k) const {
        if (k >= hop) return (float(fade - (k - hop)) - 0.5f) / float(fade);
        return grain == 0 || k >= fade ? 1 : (float(k) + 0.5f) / float(fade);
    }
};

// Reads one grain at a time, at the new pitch, and adds it to the result.
class CycleReader {
public:
    CycleReader(const AudioEditorBuffer &sound, const Cycles &cycles)
        : sound_(sound), cycles_(cycles), channels_(sound.channels()) {}

    // Frames lo ..< hi of a grain, to the place in the result of the first of them.
    void add(std::size_t grain, std::int64_t lo, std::int64_t hi, float *out) {
        const double start = cycles_.starts[grain], last = double(cycles_.inFrames - 1);
        const auto first = std::int64_t(start + cycles_.pitch * double(lo));
        hold({first, std::int64_t(start + cycles_.pitch * double(hi - 1)) + 2});
        for (std::int64_t k = lo; k < hi; ++k, out += channels_) {
            const double source = start + cycles_.pitch * double(k);
            if (source > last) return;
            const auto whole = std::int64_t(source);
            const float part = float(source - double(whole)), weight = cycles_.weight(grain, k);
            const float *in = held_.data() + (whole - first) * channels_;
            for (std::int64_t c = 0; c < channels_; ++c)
                out[c] += weight * (part == 0 ? in[c] : (1 - part) * in[c] + part * in[c + channels_]);
        }
    }

private:
    void hold(FrameRange range) {
        range.hi = std::min(range.hi, cycles_.inFrames);
        if (range.isEmpty()) return;
        held_.resize(std::size_t(range.count() * channels_));
        sound_.copyFrames(range, held_.data());
    }

    const AudioEditorBuffer &sound_;
    const Cycles &cycles_;
    const std::int64_t channels_;
    std::vector<float> held_;
};

// The frames of the result from where one grain begins to where another does: those grains, and the end of the one before.
void layCycles(const Cycles &cycles, CycleReader reader, FrameRange grains, FrameRange frames, std::int64_t channels,
               float *out) {
    std::fill_n(out, frames.count() * channels, 0.0f);
    for (std::int64_t grain = std::max<std::int64_t>(grains.lo - 1, 0); grain < grains.hi; ++grain) {
        const std::int64_t at = grain * cycles.hop;
        const std::int64_t lo = std::max(frames.lo - at, std::int64_t(0)), hi = std::min(frames.hi - at, cycles.length);
        if (lo < hi) reader.add(std::size_t(grain), lo, hi, out + (at + lo - frames.lo) * channels);
    }
}

AudioEditorBuffer cycled(const AudioEditorBuffer &sound, const StretchSettings &settings, Progress *progress) {
    const Cycles cycles(sound.frames(), settings);
    const std::int64_t channels = sound.channels(), grains = std::int64_t(cycles.starts.size());
    if (progress) progress->start(grains);
    SampleMemory out(std::size_t(cycles.outFrames * channels));
    parallelFor(grains, std::max<std::int64_t>(taskFrames / cycles.hop, 1), [&](std::int64_t lo, std::int64_t hi) {
        const FrameRange frames{lo * cycles.hop, hi == grains ? cycles.outFrames : hi * cycles.hop};
        layCycles(cycles, CycleReader(sound, cycles), {lo, hi}, frames, channels, out.data() + frames.lo * channels);
        if (progress) progress->add(hi - lo);
    });
    return AudioEditorBuffer(std::move(out), channels, sound.sampleRate());
}

std::vector<float> meanOf(const AudioEditorBuffer &buffer, FrameRange range) {
    std::vector<float> mean(std::size_t(range.count()), 0.0f);
    buffer.forEachSpan(range, [&](std::span<const float> samples, FrameRange part) {
        spreadMean(samples.data(), part.count(), buffer.channels(), 1, mean.data() + (part.lo - range.lo));
    });
    return mean;
}

double product(const float *a, const float *b, std::int64_t count) {
    double sums[16] = {};
    const std::int64_t whole = count - count % 16;
    for (std::int64_t i = 0; i < whole; i += 16)
        for (std::int64_t k = 0; k < 16; ++k) sums[k] += double(a[i + k]) * double(b[i + k]);
    double sum = 0;
    for (const double part : sums) sum += part;
    for (std::int64_t i = whole; i < count; ++i) sum += double(a[i]) * double(b[i]);
    return sum;
}

// How like itself the sound is after each lag lo … hi; 1 is a perfect period.
std::vector<double> likenesses(const std::vector<float> &x, double energy, std::int64_t lo, std::int64_t hi) {
    const auto count = std::int64_t(x.size());
    std::vector<double> likeness(std::size_t(hi - lo + 1), 0.0);
    parallelFor(hi - lo + 1, 64, [&](std::int64_t first, std::int64_t end) {
        for (std::int64_t i = first; i < end; ++i) {
            const std::int64_t lag = lo + i;
            const double sum = product(x.data(), x.data() + lag, count - lag);
            likeness[std::size_t(i)] = sum / energy * double(count) / double(count - lag);
        }
    });
    return likeness;
}

// The place of the first peak inside that is nearly as high as the highest of all; 0 when there is none.
std::size_t firstHighPeak(const std::vector<double> &r) {
    const double highest = *std::max_element(r.begin(), r.end());
    if (!(highest > 0.3)) return 0;
    for (std::size_t i = 1; i + 1 < r.size(); ++i)
        if (r[i] >= 0.9 * highest && r[i - 1] <= r[i] && r[i + 1] <= r[i]) return i;
    return 0;
}

}  // namespace

AudioEditorBuffer timeStretched(const AudioEditorBuffer &buffer, FrameRange range, int timePercent, int cycle, int semitones,
                                int cents, Progress *progress) {
    const StretchSettings settings{StretchMode::s950, timePercent, semitones, cents, cycle};
    if (leavesUnchanged(settings, range.count())) return buffer;
    return buffer.replacing(range, cycled(buffer.part(range), settings, progress));
}

int autoCycle(const AudioEditorBuffer &buffer, FrameRange range) {
    const std::int64_t rate = buffer.sampleRate(), count = std::min(range.count(), std::int64_t(double(rate) * 0.2));
    const std::int64_t lo = std::max<std::int64_t>(rate / 1000, 8), hi = std::min(count / 2, rate / 40);
    if (lo >= hi) return usualCycle;
    const std::vector<float> x = meanOf(buffer, {range.lo, range.lo + count});
    const double energy = product(x.data(), x.data(), count);
    if (!(energy > 1e-9)) return usualCycle;
    const std::size_t peak = firstHighPeak(likenesses(x, energy, lo, hi));
    if (peak == 0) return usualCycle;
    const double period = double(lo) + double(peak), periods = std::max(std::round(1000 / period), 1.0);
    return stretchCycleRange.clamp(std::int64_t(period * periods));
}

}  // namespace kiv::AudioEditorOps
