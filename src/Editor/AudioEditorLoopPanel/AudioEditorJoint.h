#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Editor/AudioEditorLoopPanel/LoopCrossfade.h"

namespace kiv {

// A loop's end running into its start, as a sampler plays it. All samples are interleaved; what lies outside the sound is 0.
struct AudioEditorJoint {
    std::vector<float> buffer;                   // 2 · half frames: up to the loop's end, crossfaded, then on from its start
    std::optional<std::vector<float>> original;  // the first half without the crossfade; only when there is one
    std::vector<float> continuation;             // half frames: the audio before the start
    std::int64_t half = 0;                       // frames
    std::int64_t fade = 0;                       // frames of the crossfade
    std::int64_t generation = 0;                 // of the audio it was built from

    friend bool operator==(const AudioEditorJoint &, const AudioEditorJoint &) = default;
};

// Half the joint's width in frames, at least 4.
std::int64_t jointHalf(double seconds, std::int64_t sampleRate);

AudioEditorJoint makeJoint(const AudioEditorBuffer &buffer, const LoopCrossfade &crossfade, std::int64_t half,
                           std::int64_t generation);

}  // namespace kiv
