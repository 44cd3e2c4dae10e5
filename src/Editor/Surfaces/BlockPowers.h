#pragma once

#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Support/Progress.h"

namespace kiv {

// The mean square of every 256 frames, per channel, in the blocks of AudioEditorPeaks. A block that is not known yet is
// negative. NaN samples count as silence.
struct BlockPowers {
    std::vector<std::vector<float>> channels;  // [channel][block]

    friend bool operator==(const BlockPowers &, const BlockPowers &) = default;
};

// What is known of `buffer` without reading it: `old` are the powers of `before`, and blocks are taken over where the two
// buffers share memory and lie at the same frames. The others are unknown.
BlockPowers carriedPowers(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before, const BlockPowers &old);
std::int64_t unknownBlocks(const BlockPowers &powers);
// Reads the unknown blocks, on all cores. Throws Cancelled when the progress says so.
void completePowers(const AudioEditorBuffer &buffer, BlockPowers &powers, Progress *progress = nullptr);

}  // namespace kiv
