#pragma once

#include "Editor/Surfaces/Box.h"

namespace kiv {

// What depends on the type in use and on what is asked for; heights and widths in logical pixels.
struct SavePanelMeasures {
    int note = 36;   // 0: there is nothing to say
    int field = 32;  // also of buttons and segments
    int crumb = 24;
    int status = 16;
    int label = 72;  // from the left edge of a label to its control
    int places = 160;
    int containers = 191;  // width of the row of formats; 0: there is no choice
    int bitsLabel = 34;    // with what stands free after it
    int bits = 274;        // of the widest row of sample widths
};

// Where the parts of the panel stand that asks where to save. Fields without their frames.
struct SavePanelLayout {
    SavePanelLayout(int width, int height, const SavePanelMeasures &measures);

    Box note, name, folder, list, places, files, status, band, containers, bits, buttons;
    int bitsLabelLeft = 0;

    static int smallestWidth(const SavePanelMeasures &measures);
    static int smallestHeight(int width, const SavePanelMeasures &measures);
};

inline constexpr int savePanelPadding = 24;
inline constexpr int savePanelWidth = 720, savePanelHeight = 636;  // at first, with the type of the pictures

}  // namespace kiv
