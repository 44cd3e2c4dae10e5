#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/TimeAxis.h"

// What can be taken hold of along the time axis, and what dragged edges stick to. Places are device-pixel columns.
namespace kiv {

inline constexpr double edgeGrace = 5;  // logical pixels to both sides

// A start or an end that can be dragged: of the selection, or of the loop while it is being edited.
struct TimeEdge {
    enum class Kind { selection, loop };

    Kind kind = Kind::selection;
    bool isStart = false;

    friend bool operator==(const TimeEdge &, const TimeEdge &) = default;
};

// The range whose edge it is; it must be there.
FrameRange rangeOf(const AudioEditorState &state, TimeEdge::Kind kind);
inline std::int64_t frameOf(FrameRange range, bool isStart) { return isStart ? range.lo : range.hi; }

// The edge nearest to a place, if one is near enough; the loop's before the selection's where they stand together.
std::optional<TimeEdge> edgeNear(const AudioEditorState &state, const TimeAxis &axis, double x, double scale);

// The file's ends, markers and loop points, in order, each once.
std::vector<std::int64_t> markedFrames(const AudioEditorState &state);
// What a dragged edge sticks to. A loop has the cursor instead of its own points; the cursor of a selection is its start.
std::vector<std::int64_t> stickyFrames(const AudioEditorState &state, TimeEdge::Kind dragged);
// The one of these that is nearest to a place, if it is near enough to stick to.
std::optional<std::int64_t> stuckTo(const std::vector<std::int64_t> &frames, const TimeAxis &axis, double x, double scale);

}  // namespace kiv
