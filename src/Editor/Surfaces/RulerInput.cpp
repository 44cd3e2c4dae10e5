#include "Editor/Surfaces/RulerInput.h"

#include <algorithm>
#include <cmath>

#include "Editor/Surfaces/WaveformInput.h"

namespace kiv {
namespace {

constexpr double dragFrom = 4, pixelsPerDoubling = 64;  // logical pixels

}  // namespace

void RulerInput::press(const PointerEvent &event, int clicks, const RulerGeometry &geometry) {
    if (event.y >= geometry.lane.lo && event.x >= geometry.left) return pressLane(event, clicks, geometry);
    drag_ = Drag{model_.state().view, event.x, event.y, geometry.axis.frameAt(event.x - geometry.left), false};
}

void RulerInput::pressLane(const PointerEvent &event, int clicks, const RulerGeometry &geometry) {
    const AudioEditorState &state = model_.state();
    const double column = event.x - geometry.left;
    if (const auto marker = markerAt(state, geometry, column, event.y)) {
        const std::int64_t frame = state.markerFrames[*marker];
        if (clicks == 1) return model_.placeCursor(frame);
        auto next = state.buffer.frames();
        for (const std::int64_t other : state.markerFrames)
            if (other > frame) next = std::min(next, other);
        model_.select({frame, next});
    } else if (clicks == 2 && isLoopBarAt(state, geometry, column, event.y)) {
        model_.select(*state.loopPoints);
    }
}

void RulerInput::move(const PointerEvent &event, const RulerGeometry &geometry) {
    if (!drag_) return;
    const double scale = geometry.size.scale;
    if (!drag_->moved && std::hypot(event.x - drag_->x, event.y - drag_->y) < dragFrom * scale) return;
    drag_->moved = true;
    const std::int64_t frames = model_.state().buffer.frames();
    const double zoom = drag_->view.zoom * std::exp2((event.y - drag_->y) / (pixelsPerDoubling * scale));
    AudioEditorZoom view{std::clamp(zoom, 1.0, maximumZoom(frames)), 0};
    const double visible = visibleFrames(view, frames);
    view.centerFrame = drag_->frame + (0.5 - (event.x - geometry.left) / std::max(geometry.columns(), 1.0)) * visible;
    model_.setView(view);
}

void RulerInput::release() {
    const bool isClick = drag_ && !drag_->moved;
    drag_.reset();
    if (isClick) model_.toggleTimeUnit();
}

bool RulerInput::cancel() {
    if (!drag_) return false;
    model_.setView(drag_->view);
    drag_.reset();
    return true;
}

}  // namespace kiv
