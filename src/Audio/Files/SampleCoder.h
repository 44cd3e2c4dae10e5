#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Editor/AudioEditorCore/FrameRange.h"

namespace kiv {

// Turns the frames of one sound into the bytes of a file, in parts that can be worked on side by side. A part starts at a
// multiple of blockFrames(), and ends at one or at the end of the sound.
class SampleCoder {
public:
    virtual ~SampleCoder() = default;
    virtual std::int64_t frames() const = 0;
    virtual std::int64_t blockFrames() const = 0;
    // The bytes of a part, known without encoding it.
    virtual std::int64_t size(FrameRange part) const = 0;
    virtual void encode(FrameRange part, std::span<std::byte> out) const = 0;
};

}  // namespace kiv
