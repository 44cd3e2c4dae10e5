#pragma once

#include <cstdint>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

namespace kiv {

// The end of a loop fading into what stands before its start, so that the jump from end to start goes on with that sound.
struct LoopCrossfade {
    enum class Curve { equalGain, equalPower };

    FrameRange loop;
    std::int64_t frames = 0;  // at most the loop's length, and at most what stands before it
    Curve curve = Curve::equalGain;

    struct Gains {
        float in, out;
    };
    // Of frame i, 0 … frames − 1; the last is all in.
    Gains gains(std::int64_t i) const;
    // The faded frames of a part of the last `frames` of the loop, interleaved.
    std::vector<float> faded(const AudioEditorBuffer &buffer, FrameRange part) const;
    FrameRange range() const { return {loop.hi - frames, loop.hi}; }

    friend bool operator==(const LoopCrossfade &, const LoopCrossfade &) = default;
};

// The sound with the crossfade written into it.
AudioEditorBuffer crossfaded(const AudioEditorBuffer &buffer, const LoopCrossfade &crossfade);

}  // namespace kiv
