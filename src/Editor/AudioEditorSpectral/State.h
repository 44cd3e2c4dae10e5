#pragma once

#include <cstdint>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorSpectral/Mask.h"

namespace kiv::AudioEditorSpectral {

// A sound as it was before anything was painted on it, and what is painted. A value.
struct State {
    std::int64_t id = 0;  // of the original: states of the same sound under different masks share it
    AudioEditorBuffer original;
    Geometry geometry;
    Mask mask;
    std::int64_t generation = 0;  // of the audio that the mask makes of the original

    State(std::int64_t identity, AudioEditorBuffer sound, std::int64_t soundGeneration)
        : id(identity),
          original(std::move(sound)),
          geometry(original.frames(), original.sampleRate()),
          mask(geometry.columns),
          generation(soundGeneration) {}
};

}  // namespace kiv::AudioEditorSpectral
