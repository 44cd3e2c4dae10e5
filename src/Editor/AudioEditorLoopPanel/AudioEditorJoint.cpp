#include "Editor/AudioEditorLoopPanel/AudioEditorJoint.h"

#include <algorithm>

namespace kiv {
namespace {

void copyPadded(const AudioEditorBuffer &buffer, FrameRange range, float *out) {
    std::fill_n(out, range.count() * buffer.channels(), 0.0f);
    if (const auto there = buffer.clampedRange(range))
        buffer.copyFrames(*there, out + (there->lo - range.lo) * buffer.channels());
}

}  // namespace

std::int64_t jointHalf(double seconds, std::int64_t sampleRate) {
    return std::max<std::int64_t>(std::int64_t(seconds * double(sampleRate)), 4);
}

AudioEditorJoint makeJoint(const AudioEditorBuffer &buffer, const LoopCrossfade &crossfade, std::int64_t half,
                           std::int64_t generation) {
    const FrameRange loop = crossfade.loop;
    const std::int64_t samples = half * buffer.channels();
    AudioEditorJoint joint;
    joint.half = half;
    joint.fade = crossfade.frames;
    joint.generation = generation;
    joint.buffer.resize(std::size_t(2 * samples));
    joint.continuation.resize(std::size_t(samples));
    copyPadded(buffer, {loop.hi - half, loop.hi}, joint.buffer.data());
    copyPadded(buffer, {loop.lo, loop.lo + half}, joint.buffer.data() + samples);
    copyPadded(buffer, {loop.lo - half, loop.lo}, joint.continuation.data());
    if (crossfade.frames < 1) return joint;
    joint.original.emplace(joint.buffer.begin(), joint.buffer.begin() + samples);
    const std::int64_t seen = std::min(half, crossfade.frames);
    const std::vector<float> faded = crossfade.faded(buffer, {loop.hi - seen, loop.hi});
    std::copy(faded.begin(), faded.end(), joint.buffer.begin() + (half - seen) * buffer.channels());
    return joint;
}

}  // namespace kiv
