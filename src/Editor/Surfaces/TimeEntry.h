#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Editor/AudioEditorCore/AudioEditorTimeUnit.h"

namespace kiv {

// A position or length typed by the user, in frames, rounded half away from zero. Times ("1.5", "1,5 s", "250 ms", "1:05.25",
// "1:02:03") and samples ("48000 smp") are understood whatever the unit; a bare whole number counts in `unit`, but one that as
// seconds would lie beyond the sound counts as samples if it lies inside as such. Nothing when it cannot be read.
std::optional<std::int64_t> parseTimeEntry(std::string_view text, AudioEditorTimeUnit unit, std::int64_t sampleRate,
                                           std::int64_t frames);

}  // namespace kiv
