#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace kiv {

// What a sound of two or more channels becomes as mono: channel 0, channel 1, or the mean of all.
enum class AudioEditorMonoSource { left, right, mix };

// In the order in which they are offered.
inline constexpr std::array allMonoSources{AudioEditorMonoSource::left, AudioEditorMonoSource::right,
                                           AudioEditorMonoSource::mix};

// The stored text: "left", "right", "mix".
std::string_view storedText(AudioEditorMonoSource source);
// Nothing for any other text, capitals included.
std::optional<AudioEditorMonoSource> monoSourceFromText(std::string_view text);

}  // namespace kiv
