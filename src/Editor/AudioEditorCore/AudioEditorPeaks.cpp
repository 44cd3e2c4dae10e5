#include "Editor/AudioEditorCore/AudioEditorPeaks.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "Support/Parallel.h"
#include "Support/Vectorised.h"

namespace kiv {
namespace {

constexpr std::int64_t taskSamples = std::int64_t(1) << 18;
constexpr float infinity = std::numeric_limits<float>::infinity();

constexpr std::int64_t fixedLanes = 16;

// The extremes of rows of 16 samples, lane by lane. Comparisons with NaN are false, so NaN changes nothing.
void findInLanes(const float *in, std::int64_t rows, float *mins, float *maxs) {
    FourFloats low[4], high[4], x[4];
    for (int i = 0; i < 4; ++i) {
        low[i] = FourFloats{} + infinity;
        high[i] = FourFloats{} - infinity;
    }
    for (std::int64_t row = 0; row < rows; ++row) {
        std::memcpy(x, in + fixedLanes * row, sizeof x);
        for (int i = 0; i < 4; ++i) {
            low[i] = x[i] < low[i] ? x[i] : low[i];
            high[i] = x[i] > high[i] ? x[i] : high[i];
        }
    }
    std::memcpy(mins, low, sizeof low);
    std::memcpy(maxs, high, sizeof high);
}

// Widens the extremes by one more row.
KIV_VECTORISED void widen(const float *__restrict in, std::int64_t width, float *__restrict mins, float *__restrict maxs) {
    for (std::int64_t l = 0; l < width; ++l) {
        mins[l] = in[l] < mins[l] ? in[l] : mins[l];
        maxs[l] = in[l] > maxs[l] ? in[l] : maxs[l];
    }
}

// As many lanes as keep vector units busy, and a whole number of frames.
std::int64_t laneCount(std::int64_t channels) {
    if (fixedLanes % channels == 0) return fixedLanes;
    return channels < 64 ? 16 * channels : channels;
}

// Finds the extremes of stretches of interleaved samples, each channel's in one reading.
class Extremes {
public:
    explicit Extremes(std::int64_t channels)
        : channels_(channels), width_(laneCount(channels)), mins_(std::size_t(width_)), maxs_(std::size_t(width_)) {}

    void add(const float *in, std::int64_t frames, AudioEditorPeaks &peaks, std::int64_t block) {
        const std::int64_t samples = frames * channels_, rows = samples / width_;
        width_ == fixedLanes ? findInLanes(in, rows, mins_.data(), maxs_.data()) : findRows(in, rows);
        widen(in + rows * width_, samples - rows * width_, mins_.data(), maxs_.data());
        // The lanes are a power of two times the channels: halving them keeps each lane's channel.
        for (std::int64_t half = width_ / 2; half >= channels_; half /= 2)
            for (std::int64_t l = 0; l < half; ++l) {
                mins_[l] = std::min(mins_[l], mins_[l + half]);
                maxs_[l] = std::max(maxs_[l], maxs_[l + half]);
            }
        for (std::int64_t c = 0; c < channels_; ++c) {
            peaks.mins[c][block] = std::min(peaks.mins[c][block], mins_[c]);
            peaks.maxs[c][block] = std::max(peaks.maxs[c][block], maxs_[c]);
        }
    }

private:
    void findRows(const float *in, std::int64_t rows) {
        std::fill(mins_.begin(), mins_.end(), infinity);
        std::fill(maxs_.begin(), maxs_.end(), -infinity);
        for (std::int64_t row = 0; row < rows; ++row) widen(in + row * width_, width_, mins_.data(), maxs_.data());
    }

    std::int64_t channels_, width_;
    std::vector<float> mins_, maxs_;
};

std::int64_t blocksFor(std::int64_t frames) { return (frames + AudioEditorPeaks::blockSize - 1) / AudioEditorPeaks::blockSize; }

// A block of nothing but NaN has met no sample.
void settle(AudioEditorPeaks &peaks, std::int64_t lo, std::int64_t hi) {
    for (std::size_t c = 0; c < peaks.mins.size(); ++c)
        for (std::int64_t b = lo; b < hi; ++b)
            if (peaks.mins[c][b] > peaks.maxs[c][b]) peaks.mins[c][b] = peaks.maxs[c][b] = 0;
}

void open(AudioEditorPeaks &peaks, std::int64_t lo, std::int64_t hi) {
    for (auto &channel : peaks.mins) std::fill(channel.begin() + lo, channel.begin() + hi, infinity);
    for (auto &channel : peaks.maxs) std::fill(channel.begin() + lo, channel.begin() + hi, -infinity);
}

void measureBlocks(const AudioEditorBuffer &buffer, std::int64_t lo, std::int64_t hi, AudioEditorPeaks &peaks) {
    constexpr std::int64_t size = AudioEditorPeaks::blockSize;
    const std::int64_t channels = buffer.channels();
    Extremes extremes(channels);
    open(peaks, lo, hi);
    buffer.forEachSpan({lo * size, std::min(hi * size, buffer.frames())}, [&](std::span<const float> in, FrameRange part) {
        for (std::int64_t frame = part.lo, end; frame < part.hi; frame = end) {
            end = std::min((frame / size + 1) * size, part.hi);
            extremes.add(in.data() + (frame - part.lo) * channels, end - frame, peaks, frame / size);
        }
    });
    settle(peaks, lo, hi);
}

void measure(const AudioEditorBuffer &buffer, std::int64_t lo, std::int64_t hi, AudioEditorPeaks &peaks, Progress *progress) {
    if (progress) progress->start(hi - lo);
    const std::int64_t grain = std::max<std::int64_t>(taskSamples / (AudioEditorPeaks::blockSize * buffer.channels()), 1);
    parallelFor(hi - lo, grain, [&](std::int64_t from, std::int64_t to) {
        if (progress) progress->add(to - from);
        measureBlocks(buffer, lo + from, lo + to, peaks);
    });
}

void resize(AudioEditorPeaks &peaks, std::int64_t channels, std::int64_t blocks) {
    for (auto *side : {&peaks.mins, &peaks.maxs}) {
        side->resize(std::size_t(channels));
        for (auto &channel : *side) channel.resize(std::size_t(blocks));
    }
}

}  // namespace

AudioEditorPeaks::AudioEditorPeaks(const AudioEditorBuffer &buffer, Progress *progress) {
    const std::int64_t count = blocksFor(buffer.frames());
    resize(*this, buffer.channels(), count);
    measure(buffer, 0, count, *this, progress);
}

AudioEditorPeaks::AudioEditorPeaks(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before, AudioEditorPeaks old,
                                   Progress *progress) {
    const std::int64_t count = blocksFor(buffer.frames()), frames = buffer.frames();
    const bool usable = std::int64_t(old.mins.size()) == buffer.channels() && old.blocks() == blocksFor(before.frames());
    const bool sameLength = frames == before.frames();
    const std::int64_t prefix = usable ? buffer.sharedPrefix(before) : 0;
    const std::int64_t suffix = usable && sameLength ? buffer.sharedSuffix(before) : 0;
    *this = std::move(old);
    resize(*this, buffer.channels(), count);
    // A block counts as shared when all of its frames are, in both: the last one of a longer or shorter sound does not.
    const std::int64_t lo = sameLength && prefix == frames ? count : prefix / blockSize;
    measure(buffer, lo, std::max(lo, blocksFor(frames - suffix)), *this, progress);
}

}  // namespace kiv
