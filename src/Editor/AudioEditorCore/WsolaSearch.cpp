#include <algorithm>
#include <utility>

#include "Editor/AudioEditorCore/Likeness.h"
#include "Editor/AudioEditorCore/SampleKernels.h"
#include "Editor/AudioEditorCore/StretchKernels.h"
#include "Editor/AudioEditorCore/Wsola.h"
#include "Support/Parallel.h"

namespace kiv {
namespace {

// The mean of all channels, a stretch of it at a time; behind the end of the sound is silence.
class Guide {
public:
    explicit Guide(const AudioEditorBuffer &sound) : sound_(sound) {}

    // Makes the samples of a range, which does not start before the sound, to be had from at() until the next call.
    void need(FrameRange range) {
        if (range.lo < held_.lo || range.hi > held_.hi) hold({range.lo, range.lo + std::max(range.count(), heldAtOnce)});
    }

    const float *at(std::int64_t frame) const { return mean_.data() + (frame - held_.lo); }

    // A level that a range of what is held does not exceed.
    Level levelOf(FrameRange range) const {
        const auto first = std::size_t((range.lo - held_.lo) / block), last = std::size_t((range.hi - 1 - held_.lo) / block);
        Level level;
        for (std::size_t b = first; b <= last; ++b) level.add(levels_[b]);
        return level;
    }

private:
    static constexpr std::int64_t heldAtOnce = 1 << 15, block = 64;

    void hold(FrameRange range) {
        range.hi = range.lo + (range.count() + block - 1) / block * block;
        held_ = range;
        mean_.assign(std::size_t(range.count()), 0.0f);
        const FrameRange inside{range.lo, std::min(range.hi, sound_.frames())};
        if (!inside.isEmpty()) sound_.forEachSpan(inside, [&](auto samples, FrameRange part) { take(samples, part); });
        levels_.clear();
        for (const float *x = mean_.data(); x < mean_.data() + range.count(); x += block)
            levels_.push_back({largestMagnitude(x, block), dotProduct(x, x, block)});
    }

    void take(std::span<const float> samples, FrameRange part) {
        float *to = mean_.data() + (part.lo - held_.lo);
        if (sound_.channels() == 1) {
            std::copy(samples.begin(), samples.end(), to);
        } else {
            spreadMean(samples.data(), part.count(), sound_.channels(), 1, to);
        }
    }

    const AudioEditorBuffer &sound_;
    FrameRange held_;
    std::vector<float> mean_;
    std::vector<Level> levels_;  // of each block
};

// Goes from one grain's start to the next. One a thread.
class Follower {
public:
    Follower(const AudioEditorBuffer &sound, const WsolaShape &shape)
        : shape_(shape), guide_(sound), likeness_(shape.window, 2 * shape.tolerance) {}

    std::int64_t next(std::int64_t grain, std::int64_t previous) {
        const std::int64_t nominal = shape_.nominalStart(grain), follows = previous + shape_.hop;
        const std::int64_t lo = std::max<std::int64_t>(nominal - shape_.tolerance, 0);
        const std::int64_t hi = std::min(nominal + shape_.tolerance, shape_.lastStart);
        const FrameRange searched{lo, hi + shape_.window}, wanted{follows, follows + shape_.window};
        guide_.need({std::min(lo, follows), std::max(searched.hi, wanted.hi)});
        const Search search{.x = guide_.at(lo),
                            .last = hi - lo,
                            .otherwise = nominal - lo,
                            .level = guide_.levelOf(searched),
                            .wanted = guide_.at(follows),
                            .wantedLevel = guide_.levelOf(wanted)};
        return lo + likeness_.best(search);
    }

private:
    const WsolaShape &shape_;
    Guide guide_;
    Likeness likeness_;
};

// Sections shorter than this are not worth a thread.
constexpr std::int64_t shortestSection = 64;

}  // namespace

// Each start depends on the one before, so the grains are no work for several threads as they stand. But chains that were begun
// apart soon meet, and then go the same way for ever: each thread takes a section of the grains from a guessed start, and when
// all are done the true chain is followed from the end of each section until it meets what was found from the guess.
std::vector<std::int64_t> similarStarts(const AudioEditorBuffer &sound, const WsolaShape &shape, Progress *progress) {
    const std::int64_t grains = shape.grains();
    std::vector<std::int64_t> starts(std::size_t(grains), 0);
    const std::int64_t perSection =
        std::max((grains + parallelThreads() - 1) / parallelThreads(), std::min(grains, shortestSection));
    parallelFor(grains, perSection, [&](std::int64_t lo, std::int64_t hi) {
        Follower follower(sound, shape);
        for (std::int64_t k = lo; k < hi; ++k) {
            const std::int64_t previous = k == lo ? shape.nominalStart(k - 1) : starts[std::size_t(k) - 1];
            if (k > 0) starts[std::size_t(k)] = follower.next(k, previous);
            if (progress) progress->add(shape.hop);
        }
    });
    Follower follower(sound, shape);
    for (std::int64_t section = perSection; section < grains; section += perSection)
        for (std::int64_t k = section; k < grains; ++k) {
            if (progress) progress->throwIfCancelled();
            const std::int64_t start = follower.next(k, starts[std::size_t(k) - 1]);
            if (std::exchange(starts[std::size_t(k)], start) == start) break;
        }
    return starts;
}

}  // namespace kiv
