#include "Editor/Surfaces/ViewMarks.h"

#include <algorithm>
#include <iterator>

namespace kiv {
namespace {

void addDifferent(Damage &damage, std::vector<int> before, std::vector<int> now, int reach) {
    if (before == now) return;
    std::sort(before.begin(), before.end());
    std::sort(now.begin(), now.end());
    std::vector<int> different;
    std::set_symmetric_difference(before.begin(), before.end(), now.begin(), now.end(), std::back_inserter(different));
    for (const int column : different) damage.add(column, reach);
}

// The columns between the old and the new place of an edge, for a tint that ends there.
void addEdge(Damage &damage, int before, int now, int reach) {
    if (before != now) damage.strips.push_back({std::min(before, now) - reach, std::max(before, now) + reach});
}

void addSpan(Damage &damage, const std::optional<PixelSpan> &before, const std::optional<PixelSpan> &now, int reach) {
    if (before && now) {
        addEdge(damage, before->lo, now->lo, reach);
        addEdge(damage, before->hi, now->hi, reach);
    } else if (const auto &only = before ? before : now) {
        damage.strips.push_back({only->lo - reach, only->hi + reach});
    }
}

}  // namespace

ViewMarks viewMarks(const AudioEditorState &state, const TimeAxis &axis, int columns) {
    const auto shown = [&](int column) { return column == columns ? columns - 1 : column; };
    const auto columnOf = [&](std::int64_t frame) { return shown(axis.columnOf(double(frame))); };
    ViewMarks marks;
    for (const std::int64_t frame : state.markerFrames) marks.markers.push_back(columnOf(frame));
    if (state.loopPoints) marks.loop = {columnOf(state.loopPoints->lo), columnOf(state.loopPoints->hi)};
    if (state.selection) {
        const int lo = axis.columnOf(double(state.selection->lo)), hi = axis.columnOf(double(state.selection->hi));
        marks.selection = {lo, std::max(hi, lo + 1)};
    }
    marks.cursor = columnOf(state.cursorFrame);
    for (const AudioEditorPlayhead &head : state.playheads)
        marks.playheads.push_back(shown(pixelAt(axis.xOf(head.frame) + 0.5)));
    return marks;
}

PixelSpan lineAt(int mark, int width, int columns, int before) {
    const bool isInView = mark >= 0 && mark < columns;
    const int lo = isInView ? std::max(std::min(mark - before, columns - width), 0) : mark - before;
    return {lo, lo + width};
}

void addMarksDamage(Damage &damage, const ViewMarks &before, const ViewMarks &now, int reach) {
    addDifferent(damage, before.markers, now.markers, reach);
    addDifferent(damage, before.playheads, now.playheads, reach);
    addDifferent(damage, {before.cursor}, {now.cursor}, reach);
    addSpan(damage, before.loop, now.loop, reach);
    addSpan(damage, before.selection, now.selection, reach);
}

}  // namespace kiv
