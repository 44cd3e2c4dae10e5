#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Editor/Surfaces/Box.h"

namespace kiv {

// The heights that depend on the type in use.
struct EditorWindowMeasures {
    int menuBar = 28;
    int topBar = 44;
    int ruler = 40;  // with the marker lane
    int gutter = 44;
    int infoLine = 28;
};

// Where the parts of an editor window stand. The overview is empty when the window is too low for it.
struct EditorWindowLayout {
    EditorWindowLayout(int width, int height, const EditorWindowMeasures &measures);

    Box menuBar, topBar, overview, ruler, gutter, waveform, infoLine;
};

inline constexpr int editorWindowMinimumWidth = 640, editorWindowMinimumHeight = 400;

// A window's remembered frame: four whole numbers parted by single blanks, x y width height. Nothing for any other text.
std::string frameText(const Box &frame);
std::optional<Box> parseFrame(std::string_view text);

// Where a new editor window opens: at the remembered frame, brought to the smallest size and, should any of it lie where there
// is no screen, into the nearest one; without one, 1280 x 800 in the middle of the first screen or as much of it as there is.
// `screens` are their free areas, the first one first, at least one.
Box openingFrame(const std::optional<Box> &remembered, const std::vector<Box> &screens);
// The frame moved to the right and down, as long as a window (given by its top left corner) stands just there. One that would
// leave its screen begins anew at the screen's upper left corner.
Box cascaded(Box frame, const std::vector<Box> &others, const std::vector<Box> &screens);

}  // namespace kiv
