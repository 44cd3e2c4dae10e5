#pragma once

#include <cstdint>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

namespace kiv {

// The sum of a sound's channels, in their order and in 32-bit float, at single frames that mostly lie near each other.
class ChannelSums {
public:
    explicit ChannelSums(const AudioEditorBuffer &buffer) : buffer_(buffer) {}

    float at(std::int64_t frame) {  // must lie inside the sound
        if (!held_.contains(frame)) hold(frame);
        return sums_[std::size_t(frame - held_.lo)];
    }
    bool isBelowZero(std::int64_t frame) { return at(frame) < 0; }
    // Comes up to zero or above it here.
    bool rises(std::int64_t frame) {
        return frame >= 1 && frame < buffer_.frames() && isBelowZero(frame - 1) && at(frame) >= 0;
    }
    bool changesSign(std::int64_t frame) { return isBelowZero(frame - 1) != isBelowZero(frame); }

private:
    void hold(std::int64_t frame);

    const AudioEditorBuffer &buffer_;
    FrameRange held_;
    std::vector<float> sums_;
};

}  // namespace kiv
