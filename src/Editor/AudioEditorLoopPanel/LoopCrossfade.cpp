#include "Editor/AudioEditorLoopPanel/LoopCrossfade.h"

#include <cmath>
#include <numbers>

namespace kiv {

LoopCrossfade::Gains LoopCrossfade::gains(std::int64_t i) const {
    const float t = float(i + 1) / float(frames);
    if (curve == Curve::equalGain) return {t, 1 - t};
    const float angle = t * std::numbers::pi_v<float> / 2;
    return {std::sin(angle), std::cos(angle)};
}

std::vector<float> LoopCrossfade::faded(const AudioEditorBuffer &buffer, FrameRange part) const {
    const std::int64_t back = loop.count(), first = part.lo - range().lo;
    std::vector<float> samples = buffer.part(part).samples();
    const std::vector<float> before = buffer.part({part.lo - back, part.hi - back}).samples();
    const auto channels = std::size_t(buffer.channels());
    for (std::size_t i = 0; i < samples.size();) {
        const Gains gain = gains(first + std::int64_t(i / channels));
        for (const std::size_t end = i + channels; i < end; ++i) samples[i] = gain.out * samples[i] + gain.in * before[i];
    }
    return samples;
}

AudioEditorBuffer crossfaded(const AudioEditorBuffer &buffer, const LoopCrossfade &crossfade) {
    if (crossfade.frames < 1) return buffer;
    const AudioEditorBuffer fade(crossfade.faded(buffer, crossfade.range()), buffer.channels(), buffer.sampleRate());
    return buffer.replacing(crossfade.range(), fade);
}

}  // namespace kiv
