#pragma once

#include <string>

#include "Editor/AudioEditorModel/AudioEditorModel.h"

namespace kiv {

// What the top bar shows of a document.
struct TopBarScene {
    std::string position;      // the playhead while there is one, else the cursor
    std::string maxLevel;      // "–" before anything was heard
    std::string verticalZoom;  // "+6 dB"
    bool isOver = false;       // the highest level was above full scale
    bool isPlaying = false;
    bool loops = false;
    bool followsPlayhead = false;

    friend bool operator==(const TopBarScene &, const TopBarScene &) = default;
};

TopBarScene topBarScene(const AudioEditorState &state);
// The frame that the position read-out shows.
double shownPosition(const AudioEditorState &state);

}  // namespace kiv
