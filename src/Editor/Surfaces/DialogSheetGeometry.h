#pragma once

#include "Editor/Surfaces/Box.h"

namespace kiv {

// What the places in an edit dialog depend on: the sizes of its texts and buttons, in logical pixels.
struct DialogSheetMeasures {
    double textFactor = 1;
    int titleHeight = 20;
    int labelHeight = 16;
    int controlHeight = 32;
    int noteWidth = 0;     // of the text at its foot
    int buttonsWidth = 0;  // of the whole row of buttons
};

// What stays free between its parts.
struct DialogSheetDistances {
    int edge, underTitle, aboveFoot;
    int underLabel, betweenLines;
};
inline constexpr DialogSheetDistances roomyDistances{16, 14, 16, 4, 8};
// Where the window is too low for them.
inline constexpr DialogSheetDistances closeDistances{12, 6, 8, 2, 4};

// An edit dialog of a width: title, body, and at the foot the text with the buttons, or the buttons below it where both find no
// room in one row.
struct DialogSheetGeometry {
    static constexpr int padding = 16;  // at both sides

    DialogSheetGeometry(int width, int bodyHeight, const DialogSheetMeasures &measures, const DialogSheetDistances &distances);

    Box title, body, note;
    int buttonsTop = 0;
    int height = 0;
};

}  // namespace kiv
