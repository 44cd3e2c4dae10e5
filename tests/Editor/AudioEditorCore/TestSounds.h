#pragma once

#include <random>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

namespace kiv {

inline std::vector<float> noiseSamples(std::int64_t count, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<float> samples(std::size_t(count), 0.0f);
    for (float &sample : samples) sample = float(std::int32_t(random())) / 2147483648.0f;
    return samples;
}

inline AudioEditorBuffer noise(std::int64_t frames, std::int64_t channels, std::uint32_t seed) {
    return AudioEditorBuffer(noiseSamples(frames * channels, seed), channels, 44100);
}

// The same sound in three pieces that lie apart in memory.
inline AudioEditorBuffer inPieces(const AudioEditorBuffer &buffer) {
    const std::int64_t third = buffer.frames() / 3;
    const auto own = [&](FrameRange range) {
        return AudioEditorBuffer(buffer.part(range).samples(), buffer.channels(), buffer.sampleRate());
    };
    const AudioEditorBuffer start = own({0, third}).replacing({third, third}, own({third, 2 * third}));
    return start.replacing({2 * third, 2 * third}, own({2 * third, buffer.frames()}));
}

}  // namespace kiv
