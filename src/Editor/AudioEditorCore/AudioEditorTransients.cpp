#include <algorithm>
#include <cmath>

#include "Editor/AudioEditorCore/AudioEditorSlicer.h"

// The hits of a sound: where both its energy and that of its edges rise above what came before.
namespace kiv::AudioEditorSlicer {
namespace {

constexpr double powerFloor = 1e-12;

std::int64_t hopsIn(double seconds, std::int64_t sampleRate) {
    return std::max<std::int64_t>(std::llround(double(sampleRate) * seconds / double(Energy::hop)), 1);
}

class Hits {
public:
    Hits(const AudioEditorBuffer &buffer, const Energy &energy)
        : buffer_(buffer),
          attackHops_(hopsIn(0.01, buffer.sampleRate())),
          hops_(energy.hops, attackHops_, hopsIn(0.03, buffer.sampleRate())),
          edges_(energy.edges, attackHops_, hopsIn(0.03, buffer.sampleRate())) {}

    // The hops where hits begin: of each run of hops that rise enough, the one that rises most.
    std::vector<std::int64_t> find(int sensitivity) const {
        const double thresholdDb = 30 - 27 * std::clamp(sensitivity, 0, 100) / 100.0;
        const double threshold = std::pow(10.0, thresholdDb / 5);  // of two ratios of power
        const double gate = std::max(1e-6 * hops_.loudest, 1e-7);
        std::vector<std::int64_t> hits;
        double highest = 0;  // of the run that is open; 0: none is
        for (std::int64_t i = 0; i < hops_.n; ++i) {
            const double rise = hops_.level[std::size_t(i)] >= gate ? riseRatio(i) : 0;
            if (rise < threshold) {
                highest = 0;
            } else if (highest == 0) {
                hits.push_back(i);
                highest = rise;
            } else if (rise > highest) {
                hits.back() = i;
                highest = rise;
            }
        }
        return hits;
    }

    // The frame where a hit's attack begins, behind that of the hit before; nothing where that one is the sound's last frame.
    std::optional<std::int64_t> attack(std::int64_t hit, std::int64_t previous) const {
        const std::int64_t lo = std::max((hit - 2) * Energy::hop, previous + 1);
        const std::int64_t hi = std::min(buffer_.frames(), (hit + attackHops_) * Energy::hop);
        if (lo >= hi) return std::nullopt;
        const std::vector<float> levels = framePeaks({lo, hi});
        const auto peak = std::max_element(levels.begin(), levels.end());
        const double threshold = std::min(0.5 * *peak, std::max(4 * std::sqrt(hops_.before(hit)), 0.05 * *peak));
        const auto isUnder = [&](float level) { return level < threshold; };
        const auto quiet = std::max<std::int64_t>(std::int64_t(double(buffer_.sampleRate()) * 0.0015), 1);
        std::int64_t run = 0;
        for (auto at = peak; at != levels.begin();) {
            run = isUnder(*--at) ? run + 1 : 0;
            if (run == quiet) return lo + (at - levels.begin()) + quiet;
        }
        return lo + (std::find_if_not(levels.begin(), peak, isUnder) - levels.begin());
    }

    // Where the sound of a hit has fallen far enough; at the latest on the next one.
    std::int64_t end(std::int64_t hit, std::optional<std::int64_t> next, int tailDb) const {
        const auto level = hops_.level.begin();
        const auto loudest = std::max_element(level + hit, level + std::min(hops_.n - 1, hit + attackHops_) + 1);
        constexpr double aboveFloor = 3.9810717055349722;  // 6 dB
        const double tail = std::max(std::pow(10.0, tailDb / 10.0) * *loudest, aboveFloor * hops_.floor);
        const std::int64_t limit = next.value_or(hops_.n);
        for (std::int64_t i = loudest - level + 1; i < limit; ++i)
            if (level[i] < tail) return std::min(buffer_.frames(), (i + attackHops_) * Energy::hop);
        return next ? *next * Energy::hop : buffer_.frames();
    }

private:
    // The product of both rises: twice as many decibels as their mean.
    double riseRatio(std::int64_t i) const { return riseRatio(hops_, i) * riseRatio(edges_, i); }
    static double riseRatio(const EnergyWindows &windows, std::int64_t i) {
        return std::max(windows.level[std::size_t(i)], powerFloor) / std::max(windows.before(i), powerFloor);
    }

    std::vector<float> framePeaks(FrameRange range) const {
        const std::vector<float> samples = buffer_.part(range).samples();
        std::vector<float> peaks(std::size_t(range.count()), 0.0f);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            float &peak = peaks[i / std::size_t(buffer_.channels())];
            peak = std::max(peak, std::fabs(samples[i]));
        }
        return peaks;
    }

    const AudioEditorBuffer &buffer_;
    const std::int64_t attackHops_;
    const EnergyWindows hops_, edges_;
};

// Each length to its share of what was found, up to the next slice.
void scaleLengths(std::vector<FrameRange> &slices, int percent, std::int64_t frames) {
    for (std::size_t i = 0; i < slices.size(); ++i) {
        const std::int64_t limit = i + 1 < slices.size() ? slices[i + 1].lo : frames;
        const auto length = std::int64_t(std::llround(double(percent) * double(slices[i].count()) / 100));
        slices[i].hi = std::min(slices[i].lo + std::max<std::int64_t>(length, 1), limit);
    }
}

}  // namespace

std::vector<FrameRange> transients(const AudioEditorBuffer &buffer, const Energy &energy, const TransientSettings &settings) {
    const std::int64_t frames = buffer.frames(), count = (frames + Energy::hop - 1) / Energy::hop;
    if (count == 0 || std::int64_t(energy.hops.size()) != count || std::int64_t(energy.edges.size()) != count) return {};
    const Hits finder(buffer, energy);
    const std::vector<std::int64_t> hits = finder.find(settings.sensitivity);
    const auto preRoll = std::int64_t(settings.preRollMs / 1000.0 * double(buffer.sampleRate()));
    std::vector<FrameRange> slices;
    std::int64_t attack = -1;
    for (std::size_t i = 0; i < hits.size(); ++i) {
        const auto begun = finder.attack(hits[i], attack);
        if (!begun) continue;
        attack = *begun;
        std::int64_t start = std::max<std::int64_t>(attack - preRoll, 0);
        if (!slices.empty()) {
            start = std::max(start, slices.back().lo + 1);
            slices.back().hi = std::min(slices.back().hi, start);
        }
        const auto next = i + 1 < hits.size() ? std::optional(hits[i + 1]) : std::nullopt;
        slices.push_back({start, finder.end(hits[i], next, settings.tailDb)});
    }
    scaleLengths(slices, settings.lengthPercent, frames);
    std::erase_if(slices, [](FrameRange slice) { return slice.isEmpty(); });
    return slices;
}

}  // namespace kiv::AudioEditorSlicer
