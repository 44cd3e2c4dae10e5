#pragma once

#include <cstdint>

namespace kiv {

// What the pointer over the waveform stands on: the frame, and the level that its height means (minus infinity on a lane's
// centre line).
struct WaveformHover {
    std::int64_t frame = 0;
    double levelDb = 0;

    friend bool operator==(const WaveformHover &, const WaveformHover &) = default;
};

}  // namespace kiv
