#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Support/Progress.h"

namespace kiv {

// The smallest and largest sample of every 256 frames, per channel: block b covers frames 256 b … 256 b + 255, the last one
// what is left. NaN samples are passed over; a block of nothing else reads 0.
//
// What lies behind an edit that changes the length falls into other blocks than before, unless it moves by whole blocks.
// Until those have been read again they are loose: at least as wide as they should be, by what may lie up to a block beside.
struct AudioEditorPeaks {
    static constexpr std::int64_t blockSize = 256;
    static constexpr std::int64_t none = std::numeric_limits<std::int64_t>::max();

    std::vector<std::vector<float>> mins;  // [channel][block]
    std::vector<std::vector<float>> maxs;
    std::int64_t looseFrom = none;  // the first loose block

    AudioEditorPeaks() = default;
    // One parallel pass over the sound. A progress is started with its own total and may cancel it by Cancelled; null does
    // without.
    explicit AudioEditorPeaks(const AudioEditorBuffer &buffer, Progress *progress = nullptr);
    // The same result for less work: `old` are the peaks of `before`, and only blocks that may differ are read. Blocks are
    // taken over where the two buffers share memory at their beginning and at their end.
    AudioEditorPeaks(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before, AudioEditorPeaks old,
                     Progress *progress = nullptr);

    // The same, but what would have to be read for no other reason than that it has moved stays loose: takes no longer than
    // what the edit has touched does.
    static AudioEditorPeaks carried(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before, AudioEditorPeaks old);
    bool isExact() const { return looseFrom >= blocks(); }
    // The peaks of all that lies in loose blocks, measured now; they are made exact by handing that over.
    AudioEditorPeaks measuredTail(const AudioEditorBuffer &buffer, Progress *progress = nullptr) const;
    void takeTail(const AudioEditorPeaks &tail);

    std::int64_t blocks() const { return mins.empty() ? 0 : std::int64_t(mins[0].size()); }
    friend bool operator==(const AudioEditorPeaks &, const AudioEditorPeaks &) = default;
};

}  // namespace kiv
