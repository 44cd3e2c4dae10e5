#pragma once

#include <string>
#include <vector>

#include "Editor/Surfaces/WaveformGeometry.h"

namespace kiv {

// What is to be seen in the level gutter, in device pixels.
struct GutterScene {
    struct Text {
        double y = 0;
        std::string text;
        friend bool operator==(const Text &, const Text &) = default;
    };

    ViewSize size;
    std::vector<Text> levels;      // y is the middle of the level's line
    std::vector<Text> channels;    // y is the top of the lane
    std::vector<PixelSpan> edges;  // rows between lanes

    friend bool operator==(const GutterScene &, const GutterScene &) = default;
};

GutterScene gutterScene(const AudioEditorState &state, ViewSize size);

}  // namespace kiv
