#pragma once

#include <cstdint>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Support/Progress.h"

namespace kiv {

// A sound resampled, band-limited, from one rate to another into exactly `count` frames, which are said to be of the rate
// `sampleRate`. Counts each sample read in `progress`, if there is one.
AudioEditorBuffer resampledSound(const AudioEditorBuffer &sound, double fromRate, double toRate, std::int64_t count,
                                 std::int64_t sampleRate, Progress *progress);

}  // namespace kiv
