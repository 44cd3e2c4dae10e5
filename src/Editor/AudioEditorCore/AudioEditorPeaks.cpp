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

// Which blocks of the peaks of a sound can be had from those of the sound before it.
struct Carry {
    std::int64_t channels, count;
    std::int64_t moved;  // frames by which the end has moved
    std::int64_t head;   // blocks below this are as they were
    std::int64_t tail;   // blocks from this one on lie in what has moved; what is between is new

    Carry(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before, const AudioEditorPeaks &old)
        : channels(buffer.channels()), count(blocksFor(buffer.frames())), moved(buffer.frames() - before.frames()) {
        const bool usable = std::int64_t(old.mins.size()) == channels && old.blocks() == blocksFor(before.frames());
        const std::int64_t prefix = usable ? buffer.sharedPrefix(before) : 0, suffix = usable ? buffer.sharedSuffix(before) : 0;
        // A block counts as shared when all of its frames are, in both: the last one of a longer or shorter sound does not.
        head = moved == 0 && prefix == buffer.frames() ? count : prefix / AudioEditorPeaks::blockSize;
        tail = std::max(head, blocksFor(buffer.frames() - suffix));
    }
    std::int64_t oldBlock(std::int64_t block) const { return floorDivided(block * AudioEditorPeaks::blockSize - moved); }
    bool movesWholeBlocks() const { return moved % AudioEditorPeaks::blockSize == 0; }

private:
    static std::int64_t floorDivided(std::int64_t frame) {
        constexpr std::int64_t size = AudioEditorPeaks::blockSize;
        return frame >= 0 ? frame / size : -((-frame + size - 1) / size);
    }
};

// Moves the values of the tail to where its blocks now are; one that covers parts of two old ones gets the wider of both.
template <class Wider>
void moveTail(const Carry &carry, std::vector<float> &values, Wider wider) {
    const std::int64_t last = std::int64_t(values.size()) - 1, beside = carry.movesWholeBlocks() ? 0 : 1;
    const auto at = [&](std::int64_t block) {
        const std::int64_t from = carry.oldBlock(block);
        return wider(values[std::size_t(from)], values[std::size_t(std::min(from + beside, last))]);
    };
    if (carry.moved <= 0) {
        for (std::int64_t b = carry.tail; b < carry.count; ++b) values[std::size_t(b)] = at(b);
        values.resize(std::size_t(carry.count));
    } else {
        values.resize(std::size_t(carry.count));
        for (std::int64_t b = carry.count; b-- > carry.tail;) values[std::size_t(b)] = at(b);
    }
}

// What can be had of the old values, at its place; what is new is not yet measured.
AudioEditorPeaks carriedOver(const Carry &carry, AudioEditorPeaks old) {
    if (carry.head == 0 && carry.tail == carry.count) old = AudioEditorPeaks();
    const std::int64_t loose = old.looseFrom;
    if (carry.moved != 0 && carry.tail < carry.count) {
        for (auto &channel : old.mins) moveTail(carry, channel, [](float a, float b) { return std::min(a, b); });
        for (auto &channel : old.maxs) moveTail(carry, channel, [](float a, float b) { return std::max(a, b); });
    }
    resize(old, carry.channels, carry.count);
    const std::int64_t movedBy = carry.moved / AudioEditorPeaks::blockSize;
    if (loose < carry.head)
        old.looseFrom = loose;
    else if (carry.tail == carry.count)
        old.looseFrom = AudioEditorPeaks::none;
    else if (!carry.movesWholeBlocks())
        old.looseFrom = carry.tail;
    else
        old.looseFrom = loose == AudioEditorPeaks::none ? loose : std::max(carry.tail, loose + movedBy);
    return old;
}

}  // namespace

AudioEditorPeaks::AudioEditorPeaks(const AudioEditorBuffer &buffer, Progress *progress) {
    const std::int64_t count = blocksFor(buffer.frames());
    resize(*this, buffer.channels(), count);
    measure(buffer, 0, count, *this, progress);
}

AudioEditorPeaks::AudioEditorPeaks(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before, AudioEditorPeaks old,
                                   Progress *progress) {
    const Carry carry(buffer, before, old);
    *this = carriedOver(carry, std::move(old));
    const std::int64_t end = isExact() ? carry.tail : blocks();
    measure(buffer, std::min(carry.head, looseFrom), end, *this, progress);
    looseFrom = none;
}

AudioEditorPeaks AudioEditorPeaks::carried(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before,
                                           AudioEditorPeaks old) {
    const Carry carry(buffer, before, old);
    AudioEditorPeaks peaks = carriedOver(carry, std::move(old));
    measure(buffer, carry.head, carry.tail, peaks, nullptr);
    return peaks;
}

AudioEditorPeaks AudioEditorPeaks::measuredTail(const AudioEditorBuffer &buffer, Progress *progress) const {
    return AudioEditorPeaks(buffer.part({std::min(looseFrom * blockSize, buffer.frames()), buffer.frames()}), progress);
}

void AudioEditorPeaks::takeTail(const AudioEditorPeaks &tail) {
    for (std::size_t c = 0; c < mins.size(); ++c) {
        std::copy(tail.mins[c].begin(), tail.mins[c].end(), mins[c].begin() + looseFrom);
        std::copy(tail.maxs[c].begin(), tail.maxs[c].end(), maxs[c].begin() + looseFrom);
    }
    looseFrom = none;
}

}  // namespace kiv
