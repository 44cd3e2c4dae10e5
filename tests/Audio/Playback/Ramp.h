#pragma once

#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

namespace kiv {

// A sound in which every sample tells where it is from: frame f of channel c is c · 100000 + f + 1. Exact in a float, and
// beyond full scale nearly everywhere, so that anything that clips or converts shows.
inline float rampSample(std::int64_t frame, std::int64_t channel = 0) { return float(channel * 100000 + frame + 1); }

inline AudioEditorBuffer ramp(std::int64_t frames, std::int64_t channels = 1, std::int64_t sampleRate = 44100) {
    std::vector<float> samples;
    samples.reserve(std::size_t(frames * channels));
    for (std::int64_t frame = 0; frame < frames; ++frame)
        for (std::int64_t channel = 0; channel < channels; ++channel) samples.push_back(rampSample(frame, channel));
    return {samples, channels, sampleRate};
}

// The same sound in many pieces, of samples that stand in different memory.
inline AudioEditorBuffer pieced(const AudioEditorBuffer &sound, std::int64_t pieceFrames) {
    AudioEditorBuffer result = sound;
    for (std::int64_t at = 0; at + pieceFrames <= sound.frames(); at += 2 * pieceFrames) {
        const FrameRange range{at, at + pieceFrames};
        std::vector<float> copy(std::size_t(pieceFrames * sound.channels()));
        sound.copyFrames(range, copy.data());
        result = result.replacing(range, AudioEditorBuffer(copy, sound.channels(), sound.sampleRate()));
    }
    return result;
}

}  // namespace kiv
