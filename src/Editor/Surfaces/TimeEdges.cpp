#include "Editor/Surfaces/TimeEdges.h"

#include <algorithm>
#include <cmath>

namespace kiv {
namespace {

double distance(const TimeAxis &axis, std::int64_t frame, double x) { return std::abs(axis.xOf(double(frame)) - x); }

void sortOut(std::vector<std::int64_t> &frames) {
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
}

}  // namespace

FrameRange rangeOf(const AudioEditorState &state, TimeEdge::Kind kind) {
    return kind == TimeEdge::Kind::loop ? *state.loopPoints : *state.selection;
}

std::optional<TimeEdge> edgeNear(const AudioEditorState &state, const TimeAxis &axis, double x, double scale) {
    using Kind = TimeEdge::Kind;
    std::optional<TimeEdge> nearest;
    double within = edgeGrace * scale;
    const auto consider = [&](Kind kind, bool isStart) {
        const double away = distance(axis, frameOf(rangeOf(state, kind), isStart), std::floor(x));
        if (nearest ? away >= within : away > within) return;
        within = away;
        nearest = TimeEdge{kind, isStart};
    };
    if (state.editLoopEnabled && state.loopPoints)
        for (const bool isStart : {false, true}) consider(Kind::loop, isStart);
    if (state.selection)
        for (const bool isStart : {false, true}) consider(Kind::selection, isStart);
    return nearest;
}

std::vector<std::int64_t> markedFrames(const AudioEditorState &state) {
    std::vector<std::int64_t> frames = state.markerFrames;
    frames.insert(frames.end(), {0, state.buffer.frames()});
    if (state.loopPoints) frames.insert(frames.end(), {state.loopPoints->lo, state.loopPoints->hi});
    sortOut(frames);
    return frames;
}

std::vector<std::int64_t> stickyFrames(const AudioEditorState &state, TimeEdge::Kind dragged) {
    if (dragged == TimeEdge::Kind::selection) return markedFrames(state);
    std::vector<std::int64_t> frames = state.markerFrames;
    frames.insert(frames.end(), {0, state.buffer.frames(), state.cursorFrame});
    sortOut(frames);
    return frames;
}

std::optional<std::int64_t> stuckTo(const std::vector<std::int64_t> &frames, const TimeAxis &axis, double x, double scale) {
    const auto nearer = [&](std::int64_t a, std::int64_t b) { return distance(axis, a, x) < distance(axis, b, x); };
    const auto nearest = std::min_element(frames.begin(), frames.end(), nearer);
    if (nearest == frames.end() || distance(axis, *nearest, x) > edgeGrace * scale) return std::nullopt;
    return *nearest;
}

}  // namespace kiv
