#pragma once

#include <optional>

#include "Editor/Surfaces/WaveformGeometry.h"

namespace kiv {

// Where everything of the overview stands, in device pixels. Columns are counted from the strip's left side, which lies a
// gutter's width to the right of the view's.
struct OverviewGeometry {
    ViewSize size;   // of the whole view
    int left = 0;    // of the strip
    TimeAxis axis;   // the whole sound
    PixelSpan rows;  // below the hairline
    WaveLane lane;
    std::optional<PixelSpan> box;  // the part in view; none when everything is

    double columns() const { return size.width * size.scale - left; }
    int wholeColumns() const { return std::max(int(std::ceil(columns())), 0); }
    friend bool operator==(const OverviewGeometry &, const OverviewGeometry &) = default;
};

OverviewGeometry overviewGeometry(const AudioEditorState &state, ViewSize size);

enum class OverviewPart { outside, box, leftGrip, rightGrip };
// What a column of the strip belongs to.
OverviewPart overviewPartAt(const OverviewGeometry &geometry, double column);

}  // namespace kiv
