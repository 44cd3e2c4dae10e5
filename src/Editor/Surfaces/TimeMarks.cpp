#include "Editor/Surfaces/TimeMarks.h"

#include <cmath>

#include "Editor/AudioEditorCore/AudioEditorTimeGrid.h"

namespace kiv {
namespace {

constexpr double betweenLabels = 92;  // logical pixels
constexpr double roomAtTheEdge = 30;
constexpr double labelAfterTick = 5;

// Labelled marks stand `frames` frames apart, which need not be whole.
struct Grid {
    double frames = 1;
    double step = 1;  // in the unit
    int divisions = 10;
};

Grid gridOf(const AudioEditorState &state, const TimeAxis &axis, double textScale) {
    const double framesPerPixel = axis.framesPerColumn * textScale, rate = double(state.buffer.sampleRate());
    Grid grid;
    if (state.timeUnit == AudioEditorTimeUnit::samples) {
        grid.step = double(AudioEditorTimeGrid::samplesStep(framesPerPixel, betweenLabels));
        grid.frames = grid.step;
    } else {
        grid.step = AudioEditorTimeGrid::secondsStep(framesPerPixel / rate, betweenLabels);
        grid.frames = grid.step * rate;
    }
    grid.divisions = AudioEditorTimeGrid::minorDivisions(grid.frames / framesPerPixel);
    return grid;
}

std::string labelOf(const AudioEditorState &state, const Grid &grid, std::int64_t index) {
    const double place = double(index) * grid.step;
    if (state.timeUnit == AudioEditorTimeUnit::samples) return std::to_string(std::llround(place));
    const bool isFine = grid.step < AudioEditorTimeGrid::labelPrecision(place) * (1 - 1e-9);
    return isFine ? AudioEditorTimeGrid::fineLabel(place, grid.step) : AudioEditorTimeGrid::label(place, grid.step);
}

// Calls visit(index, x) for every mark in view, `divisions` to a labelled step. Without a sound there is only its beginning.
template <class Visit>
void forEachMark(const AudioEditorState &state, const Grid &grid, int divisions, const TimeAxis &axis, int columns,
                 Visit visit) {
    if (state.buffer.isEmpty()) return visit(0, 0);
    const double frames = grid.frames / divisions;
    for (auto i = std::int64_t(std::ceil(axis.frameAt(0) / frames - 1e-9)); axis.xOf(double(i) * frames) < columns; ++i)
        visit(i, axis.columnOf(double(i) * frames));
}

}  // namespace

std::vector<TimeTick> timeTicks(const AudioEditorState &state, const TimeAxis &axis, int columns, double textScale) {
    const Grid grid = gridOf(state, axis, textScale);
    const double lastLabel = columns - (roomAtTheEdge + labelAfterTick) * textScale;
    std::vector<TimeTick> ticks;
    forEachMark(state, grid, grid.divisions, axis, columns, [&](std::int64_t i, int x) {
        const std::int64_t index = i / grid.divisions;
        const int part = int(i % grid.divisions);
        if (part != 0)
            ticks.push_back({x, 2 * part == grid.divisions ? TimeTick::Kind::middle : TimeTick::Kind::minor, {}});
        else
            ticks.push_back({x, TimeTick::Kind::labelled, x <= lastLabel ? labelOf(state, grid, index) : ""});
    });
    return ticks;
}

std::vector<int> timeLines(const AudioEditorState &state, const TimeAxis &axis, int columns, double textScale) {
    std::vector<int> lines;
    forEachMark(state, gridOf(state, axis, textScale), 1, axis, columns, [&](std::int64_t, int x) { lines.push_back(x); });
    return lines;
}

}  // namespace kiv
