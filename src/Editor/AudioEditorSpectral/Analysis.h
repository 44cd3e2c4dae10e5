#pragma once

#include <cstdint>
#include <vector>

#include "Editor/AudioEditorSpectral/State.h"
#include "Support/Progress.h"

namespace kiv::AudioEditorSpectral {

// The spectrum of a state's original, as the picture needs it: one level for each column and band, the largest of what the
// column holds and of all channels. A level is a number of steps of 0.4 dB above −96 dB, 0 dB being a full-scale sine; below
// −96 dB not even the largest gain brings anything into the picture.
struct Analysis {
    static constexpr double lowestDb = -96, stepDb = 0.4;

    std::int64_t stateID = 0;
    std::int64_t columns = 0;
    std::vector<std::uint8_t> levels;  // 256 a column, the lowest band first

    const std::uint8_t *column(std::int64_t column) const { return levels.data() + column * bandCount; }
    static double levelDb(std::uint8_t level) { return lowestDb + stepDb * level; }
};

// Runs on all cores. Any thread but the audio thread. Throws Cancelled.
Analysis analyze(const State &state, Progress *progress = nullptr);

}  // namespace kiv::AudioEditorSpectral
