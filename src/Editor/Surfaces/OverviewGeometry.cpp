#include "Editor/Surfaces/OverviewGeometry.h"

#include <algorithm>
#include <cmath>

namespace kiv {
namespace {

constexpr double roomAbove = 6, leastBox = 8, gripReach = 4;

// At least eight wide, and inside the strip.
PixelSpan boxOf(const AudioEditorState &state, const OverviewGeometry &geometry) {
    const std::int64_t frames = state.buffer.frames();
    const double first = firstVisibleFrame(state.view, frames), last = first + visibleFrames(state.view, frames);
    const int columns = geometry.wholeColumns(), least = std::min(devicePixels(leastBox, geometry.size.scale), columns);
    PixelSpan box{pixelAt(geometry.axis.xOf(first) + 0.5), pixelAt(geometry.axis.xOf(last) + 0.5)};
    if (box.count() < least) {
        box.lo = pixelAt(geometry.axis.xOf((first + last) / 2) - least / 2.0 + 0.5);
        box.hi = box.lo + least;
    }
    const int shift = std::clamp(box.lo, 0, std::max(columns - box.count(), 0)) - box.lo;
    return {box.lo + shift, std::min(box.hi + shift, columns)};
}

}  // namespace

OverviewGeometry overviewGeometry(const AudioEditorState &state, ViewSize size) {
    OverviewGeometry geometry{size, devicePixels(gutterWidth(size.textFactor), size.scale), {}, {}, {}, {}};
    const int height = int(std::lround(size.height * size.scale));
    geometry.axis = wholeAxis(state, geometry.columns());
    geometry.rows = {std::min(hairline(size.scale), height), height};
    geometry.lane = {geometry.rows, height / 2 + 0.5, std::max(height / 2.0 - roomAbove * size.scale, 1.0)};
    if (state.view.zoom > 1) geometry.box = boxOf(state, geometry);
    return geometry;
}

OverviewPart overviewPartAt(const OverviewGeometry &geometry, double column) {
    if (!geometry.box) return OverviewPart::outside;
    const double reach = gripReach * geometry.size.scale;
    // A narrow box keeps a middle to be moved by.
    const double inward = std::min(reach, geometry.box->count() / 4.0);
    const double left = column - geometry.box->lo, right = geometry.box->hi - column;
    if (left >= -reach && left < inward) return OverviewPart::leftGrip;
    if (right >= -reach && right < inward) return OverviewPart::rightGrip;
    return left > 0 && right > 0 ? OverviewPart::box : OverviewPart::outside;
}

}  // namespace kiv
