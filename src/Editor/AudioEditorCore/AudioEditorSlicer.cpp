#include "Editor/AudioEditorCore/AudioEditorSlicer.h"

#include <algorithm>
#include <cmath>

#include "Support/Parallel.h"

namespace kiv::AudioEditorSlicer {
namespace {

constexpr std::string_view modeTexts[] = {"transients", "stripSilence", "grid"};

// The block's loud frames, as a region from the first to behind the last. A block is loud when its peaks are, so there is one.
class LoudParts {
public:
    LoudParts(const AudioEditorBuffer &buffer, const AudioEditorPeaks &peaks, float threshold)
        : buffer_(buffer), peaks_(peaks), threshold_(threshold) {}

    std::vector<FrameRange> regions() const {
        std::vector<FrameRange> found;
        const std::int64_t blocks = peaks_.blocks();
        for (std::int64_t block = 0; block < blocks; ++block) {
            if (!isLoud(block)) continue;
            const std::int64_t first = block;
            while (block + 1 < blocks && isLoud(block + 1)) ++block;
            found.push_back({firstLoudFrame(first), lastLoudFrame(block) + 1});
        }
        return found;
    }

private:
    bool isLoud(std::int64_t block) const {
        for (std::size_t channel = 0; channel < peaks_.mins.size(); ++channel)
            if (isLoud(peaks_.maxs[channel][std::size_t(block)]) || isLoud(peaks_.mins[channel][std::size_t(block)]))
                return true;
        return false;
    }
    bool isLoud(float sample) const { return std::fabs(sample) >= threshold_; }

    std::vector<float> samples(std::int64_t block) const {
        const std::int64_t lo = block * AudioEditorPeaks::blockSize;
        return buffer_.part({lo, std::min(lo + AudioEditorPeaks::blockSize, buffer_.frames())}).samples();
    }
    std::int64_t firstLoudFrame(std::int64_t block) const {
        const auto in = samples(block);
        const auto found = std::find_if(in.begin(), in.end(), [this](float sample) { return isLoud(sample); });
        return block * AudioEditorPeaks::blockSize + (found - in.begin()) / buffer_.channels();
    }
    std::int64_t lastLoudFrame(std::int64_t block) const {
        const auto in = samples(block);
        const auto found = std::find_if(in.rbegin(), in.rend(), [this](float sample) { return isLoud(sample); });
        return block * AudioEditorPeaks::blockSize + (in.rend() - found - 1) / buffer_.channels();
    }

    const AudioEditorBuffer &buffer_;
    const AudioEditorPeaks &peaks_;
    const float threshold_;
};

std::vector<FrameRange> merged(const std::vector<FrameRange> &regions, std::int64_t minSilence) {
    std::vector<FrameRange> result;
    for (const FrameRange region : regions) {
        if (!result.empty() && region.lo - result.back().hi < minSilence)
            result.back().hi = region.hi;
        else
            result.push_back(region);
    }
    return result;
}

// No start goes back before the end of the part before, nor an end beyond the next start.
void pad(std::vector<FrameRange> &regions, std::int64_t before, std::int64_t behind, std::int64_t frames) {
    std::int64_t free = 0;
    for (FrameRange &region : regions) {
        region.lo = std::max(region.lo - before, free);
        free = region.hi;
    }
    std::int64_t next = frames;
    for (auto region = regions.rbegin(); region != regions.rend(); ++region) {
        region->hi = std::min(region->hi + behind, next);
        next = region->lo;
    }
}

}  // namespace

std::string_view storedText(Mode mode) { return modeTexts[std::size_t(mode)]; }

std::optional<Mode> modeFromText(std::string_view text) {
    const auto found = std::ranges::find(modeTexts, text);
    if (found == std::end(modeTexts)) return std::nullopt;
    return Mode(found - modeTexts);
}

std::vector<FrameRange> detect(const AudioEditorBuffer &buffer, const AudioEditorPeaks &peaks, int thresholdDb,
                               int minSilenceMs) {
    const double rate = double(buffer.sampleRate());
    const auto minSilence = std::max<std::int64_t>(std::int64_t(minSilenceMs / 1000.0 * rate), 1);
    auto regions = merged(LoudParts(buffer, peaks, float(std::pow(10.0, thresholdDb / 20.0))).regions(), minSilence);
    std::erase_if(regions, [&](FrameRange region) { return region.count() <= std::int64_t(rate * 0.002); });
    pad(regions, std::int64_t(rate * 0.005), std::int64_t(rate * 0.03), buffer.frames());
    return regions;
}

std::vector<FrameRange> grid(std::int64_t frameCount, int parts, std::int64_t offset, int lengthPercent) {
    const std::int64_t count = std::min<std::int64_t>(frameCount, parts);
    const auto boundary = [&](std::int64_t k) {
        return k == count ? frameCount : std::clamp<std::int64_t>(k * frameCount / count + offset, 0, frameCount);
    };
    std::vector<FrameRange> slices;
    for (std::int64_t k = 0; k < count; ++k) {
        const FrameRange part{boundary(k), boundary(k + 1)};
        const auto length = std::int64_t(std::llround(double(lengthPercent) * double(part.count()) / 100));
        if (!part.isEmpty()) slices.push_back({part.lo, part.lo + std::max<std::int64_t>(length, 1)});
    }
    return slices;
}

}  // namespace kiv::AudioEditorSlicer
