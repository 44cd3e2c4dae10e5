#pragma once

#include <optional>

#include "Editor/Surfaces/ViewMarks.h"
#include "Editor/Surfaces/WaveformGeometry.h"

namespace kiv {

inline constexpr int rulerHeight = 22, markerLaneHeight = 18;  // logical pixels, at the usual type size

// Where everything of ruler, marker lane and corner stands, in device pixels. Columns are counted from the waveform's left
// side.
struct RulerGeometry {
    ViewSize size;  // of the whole view
    int left = 0;
    TimeAxis axis;
    PixelSpan ruler, lane;  // rows

    double columns() const { return size.width * size.scale - left; }
    int wholeColumns() const { return std::max(int(std::ceil(columns())), 0); }
    friend bool operator==(const RulerGeometry &, const RulerGeometry &) = default;
};

RulerGeometry rulerGeometry(const AudioEditorState &state, ViewSize size);
// The index of the marker whose flag is at a place, the one drawn last if there are several.
std::optional<std::size_t> markerAt(const AudioEditorState &state, const RulerGeometry &geometry, double column, double y);
// Whether the loop's bar or one of its tabs is there.
bool isLoopBarAt(const AudioEditorState &state, const RulerGeometry &geometry, double column, double y);

// Which of the loop's tabs is there, with some grace around them: true for the one at its start.
std::optional<bool> loopTabAt(const AudioEditorState &state, const RulerGeometry &geometry, double column, double y);

}  // namespace kiv
