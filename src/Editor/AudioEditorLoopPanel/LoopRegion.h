#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

// Where in a sound a loop may lie, and how loud it is there.
namespace kiv {

// The level of a sound in dB, by 10 ms and smoothed over eleven of them.
struct LoopLevels {
    std::int64_t hop = 1;  // frames
    std::vector<double> blocks;
    std::vector<double> smoothed;

    explicit LoopLevels(const AudioEditorBuffer &buffer);
    double at(std::int64_t frame) const;  // smoothed; the nearest block's outside the sound
};

// From where the attack is over to where the sound has died away, at most 60 s of it.
struct LoopRegion {
    FrameRange frames;
    std::int64_t minLength = 0;  // of a loop
};

// Nothing where the sound is too quiet or too short.
std::optional<LoopRegion> loopRegion(const AudioEditorBuffer &buffer, const LoopLevels &levels);

}  // namespace kiv
