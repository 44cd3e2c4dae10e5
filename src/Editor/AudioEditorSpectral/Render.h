#pragma once

#include "Editor/AudioEditorSpectral/State.h"
#include "Support/Progress.h"

namespace kiv::AudioEditorSpectral {

// The sound with the mask's gains, rendered anew under some columns: every frame that a transform reading one of them covers;
// elsewhere `buffer` stays as it is, of which only the length must be the original's. The rest of `buffer` must be what the
// mask makes of it already for the whole to be so.
//
// Rendered is the difference: each transform adds what its gains take away or put on. So a frame under no transform with a
// gain other than 1 is the original's, and shares its memory, exactly; and each frame is the sum of the same numbers in the
// same order however the work is divided. A mask with one gain all over makes each sample that many times itself.
//
// Runs on all cores. Any thread but the audio thread. Throws Cancelled.
AudioEditorBuffer render(const State &state, const Mask &mask, ColumnRange columns, const AudioEditorBuffer &buffer,
                         Progress *progress = nullptr);

// How much work that is, in transforms of all channels: a few microseconds each.
std::int64_t renderCost(const State &state, ColumnRange columns);

}  // namespace kiv::AudioEditorSpectral
