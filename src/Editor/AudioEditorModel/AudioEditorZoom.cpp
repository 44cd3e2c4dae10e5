#include "Editor/AudioEditorModel/AudioEditorZoom.h"

#include <algorithm>
#include <cmath>

namespace kiv {
namespace {

constexpr double zoomPerFrame = 0.0625;  // 16 frames stay in view
constexpr double revealedAt = 0.1;       // of the view, from the left

double length(std::int64_t frames) { return double(std::max<std::int64_t>(frames, 1)); }

double limitedZoom(double zoom, std::int64_t frames) {
    return zoom >= 1 ? std::min(zoom, maximumZoom(frames)) : 1;  // also 1 for what is no number
}

// With the frame standing at that fraction of the view.
AudioEditorZoom placed(double zoom, double frame, double fraction, std::int64_t frames) {
    const double visible = length(frames) / zoom;
    return clampedCenter({zoom, frame + (0.5 - fraction) * visible}, frames);
}

}  // namespace

double maximumZoom(std::int64_t frames) { return std::max(length(frames) * zoomPerFrame, 1.0); }

double visibleFrames(const AudioEditorZoom &view, std::int64_t frames) { return length(frames) / std::max(view.zoom, 1.0); }

double firstVisibleFrame(const AudioEditorZoom &view, std::int64_t frames) {
    return view.centerFrame - visibleFrames(view, frames) * 0.5;
}

bool isInView(const AudioEditorZoom &view, double frame, std::int64_t frames) {
    return std::abs(frame - view.centerFrame) <= visibleFrames(view, frames) * 0.5;
}

AudioEditorZoom clampedCenter(AudioEditorZoom view, std::int64_t frames) {
    const double half = std::max(visibleFrames(view, frames), 1.0) * 0.5;
    view.centerFrame = std::isnan(view.centerFrame) ? half : std::clamp(view.centerFrame, half, length(frames) - half);
    return view;
}

AudioEditorZoom clampedView(AudioEditorZoom view, std::int64_t frames) {
    view.zoom = limitedZoom(view.zoom, frames);
    return clampedCenter(view, frames);
}

AudioEditorZoom zoomedToFit(std::int64_t frames) { return {1, length(frames) * 0.5}; }

AudioEditorZoom zoomedToRange(FrameRange range, std::int64_t frames) {
    const double middle = double(range.lo) + double(range.count()) * 0.5;
    return clampedView({length(frames) / length(range.count()), middle}, frames);
}

AudioEditorZoom zoomedAround(AudioEditorZoom view, double zoom, double anchorFrame, std::int64_t frames) {
    const double fraction = (anchorFrame - firstVisibleFrame(view, frames)) / visibleFrames(view, frames);
    return placed(limitedZoom(zoom, frames), anchorFrame, fraction, frames);
}

AudioEditorZoom zoomedAt(AudioEditorZoom view, double zoom, double x, double width, std::int64_t frames) {
    const double fraction = width > 0 ? std::clamp(x / width, 0.0, 1.0) : 0.5;
    const double anchor = firstVisibleFrame(view, frames) + fraction * visibleFrames(view, frames);
    return placed(limitedZoom(zoom, frames), anchor, fraction, frames);
}

AudioEditorZoom scrolledBy(AudioEditorZoom view, double deltaFrames, std::int64_t frames) {
    view.centerFrame += deltaFrames;
    return clampedCenter(view, frames);
}

AudioEditorZoom revealing(AudioEditorZoom view, double frame, std::int64_t frames) {
    return isInView(view, frame, frames) ? view : placed(limitedZoom(view.zoom, frames), frame, revealedAt, frames);
}

}  // namespace kiv
