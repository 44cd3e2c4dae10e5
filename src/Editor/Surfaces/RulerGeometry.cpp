#include "Editor/Surfaces/RulerGeometry.h"

#include <cmath>

namespace kiv {
namespace {

constexpr double flagWidth = 11, flagFoot = 12;  // rows of the lane that a flag may be caught in
constexpr double flagGrace = 2;
constexpr double barRoom = 8;  // from the lane's foot; the bar is thinner
constexpr double tabRoom = 14, tabWidth = 9, tabGrace = 5;

}  // namespace

RulerGeometry rulerGeometry(const AudioEditorState &state, ViewSize size) {
    RulerGeometry geometry{size, devicePixels(gutterWidth(size.textFactor), size.scale), {}, {}, {}};
    const int height = int(std::lround(size.height * size.scale));
    const int lane = std::min(devicePixels(markerLaneHeight, size.scale), height);
    geometry.axis = viewAxis(state, geometry.columns());
    geometry.ruler = {0, height - lane};
    geometry.lane = {height - lane, height};
    return geometry;
}

std::optional<std::size_t> markerAt(const AudioEditorState &state, const RulerGeometry &geometry, double column, double y) {
    const double scale = geometry.size.scale;
    if (y < geometry.lane.lo || y >= geometry.lane.lo + flagFoot * scale) return std::nullopt;
    for (std::size_t i = state.markerFrames.size(); i-- > 0;) {
        const double offset = column - geometry.axis.columnOf(double(state.markerFrames[i]));
        if (offset >= -flagGrace * scale && offset < (flagWidth + flagGrace) * scale) return i;
    }
    return std::nullopt;
}

bool isLoopBarAt(const AudioEditorState &state, const RulerGeometry &geometry, double column, double y) {
    if (!state.loopPoints || y < geometry.lane.hi - barRoom * geometry.size.scale || y >= geometry.lane.hi) return false;
    return column >= geometry.axis.columnOf(double(state.loopPoints->lo)) &&
           column <= geometry.axis.columnOf(double(state.loopPoints->hi));
}

std::optional<bool> loopTabAt(const AudioEditorState &state, const RulerGeometry &geometry, double column, double y) {
    const double scale = geometry.size.scale;
    if (!state.loopPoints || y < geometry.lane.hi - tabRoom * scale || y >= geometry.lane.hi) return std::nullopt;
    const double fromStart = column - geometry.axis.columnOf(double(state.loopPoints->lo));
    const double fromEnd = geometry.axis.columnOf(double(state.loopPoints->hi)) - column;
    const auto isOn = [&](double inwards) { return inwards >= -tabGrace * scale && inwards <= tabWidth * scale; };
    if (isOn(fromStart) && (!isOn(fromEnd) || std::abs(fromStart) <= std::abs(fromEnd))) return true;
    return isOn(fromEnd) ? std::optional(false) : std::nullopt;
}

}  // namespace kiv
