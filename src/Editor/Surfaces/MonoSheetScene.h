#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "Editor/AudioEditorModel/AudioEditorModel.h"

namespace kiv {

// What the Convert to Mono dialog shows: each outcome in small, the chosen one, and a word about it.
struct MonoSheetScene {
    std::string target;  // "Whole file · 2 channels"
    AudioEditorMonoSource chosen = AudioEditorMonoSource::mix;
    std::string note;

    friend bool operator==(const MonoSheetScene &, const MonoSheetScene &) = default;
};

MonoSheetScene monoSheetScene(const AudioEditorState &state);
std::string tileLabel(AudioEditorMonoSource source);  // "Left", whose first letter is its key
std::string tileHelp(AudioEditorMonoSource source);
std::optional<AudioEditorMonoSource> sourceForKey(char key);
// The neighbour `step` places on; the ends stay.
AudioEditorMonoSource neighbour(AudioEditorMonoSource source, int step);

// The largest absolute samples of an outcome in `columns` equal parts, 0 … 1. Of a part longer than some thousand frames only
// as many are read, evenly spread: this is a small picture of an hour in a millisecond.
std::vector<float> outcomeColumns(const AudioEditorBuffer &buffer, AudioEditorMonoSource source, int columns);

}  // namespace kiv
