#pragma once

#include <cstdint>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Support/Progress.h"

namespace kiv {

// The smallest and largest sample of every 256 frames, per channel: block b covers frames 256 b … 256 b + 255, the last one
// what is left. NaN samples are passed over; a block of nothing else reads 0.
struct AudioEditorPeaks {
    static constexpr std::int64_t blockSize = 256;

    std::vector<std::vector<float>> mins;  // [channel][block]
    std::vector<std::vector<float>> maxs;

    AudioEditorPeaks() = default;
    // One parallel pass over the sound. A progress is started with its own total and may cancel it by Cancelled; null does
    // without.
    explicit AudioEditorPeaks(const AudioEditorBuffer &buffer, Progress *progress = nullptr);
    // The same result for less work: `old` are the peaks of `before`, and only blocks that may differ are read. Blocks are
    // taken over where the two buffers share memory and lie at the same frames.
    AudioEditorPeaks(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before, AudioEditorPeaks old,
                     Progress *progress = nullptr);

    std::int64_t blocks() const { return mins.empty() ? 0 : std::int64_t(mins[0].size()); }
    friend bool operator==(const AudioEditorPeaks &, const AudioEditorPeaks &) = default;
};

}  // namespace kiv
