#pragma once

#include <cstdint>

namespace kiv {

// A half-open range of frames, lo ..< hi. A frame is one sample per channel; frame 0 is the first.
struct FrameRange {
    std::int64_t lo = 0;
    std::int64_t hi = 0;

    std::int64_t count() const { return hi - lo; }
    bool isEmpty() const { return hi <= lo; }
    bool contains(std::int64_t frame) const { return frame >= lo && frame < hi; }
    friend bool operator==(const FrameRange &, const FrameRange &) = default;
};

}  // namespace kiv
