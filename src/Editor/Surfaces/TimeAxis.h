#pragma once

#include <cstdint>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/DevicePixels.h"

namespace kiv {

// How frames stand along the device-pixel columns of a view. Columns are counted over the whole sound: column k covers the
// frames k · framesPerColumn ..< (k + 1) · framesPerColumn, and the view shows whole ones from firstColumn on. So a column
// always covers the same frames however far the view is scrolled, and everything in it moves by whole pixels.
struct TimeAxis {
    std::int64_t firstColumn = 0;
    double framesPerColumn = 1;

    double xOf(double frame) const { return frame / framesPerColumn - double(firstColumn); }
    double frameAt(double x) const { return (x + double(firstColumn)) * framesPerColumn; }
    // The column that a mark at a frame stands in.
    int columnOf(double frame) const { return pixelAt(xOf(frame) + 1e-6); }
    friend bool operator==(const TimeAxis &, const TimeAxis &) = default;
};

// The part of a model's sound that is in view, over `width` columns (which may be fractional and is taken as at least 1).
TimeAxis viewAxis(const AudioEditorState &state, double width);
// The whole sound.
TimeAxis wholeAxis(const AudioEditorState &state, double width);

}  // namespace kiv
