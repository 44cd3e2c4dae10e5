#include "Editor/Surfaces/RulerInput.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Editor/Surfaces/TimeEdges.h"

namespace kiv {
namespace {

constexpr double dragFrom = 4, pixelsPerDoubling = 64;  // logical pixels

}  // namespace

void RulerInput::setViewOnly(bool isViewOnly) {
    isViewOnly_ = isViewOnly;
    if (isViewOnly && !std::holds_alternative<std::monostate>(drag_)) release();
}

void RulerInput::press(const PointerEvent &event, int clicks, const RulerGeometry &geometry) {
    last_ = event;
    if (event.y >= geometry.lane.lo && event.x >= geometry.left) return pressLane(event, clicks, geometry);
    drag_ = ViewDrag{model_.state().view, event.x, event.y, geometry.axis.frameAt(event.x - geometry.left), false};
    model_.setViewDragged(true);
}

void RulerInput::pressLane(const PointerEvent &event, int clicks, const RulerGeometry &geometry) {
    if (isViewOnly_) return;
    const AudioEditorState &state = model_.state();
    const double column = event.x - geometry.left;
    if (clicks == 1 && pressLoop(event, geometry)) return;
    if (const auto marker = markerAt(state, geometry, column, event.y))
        pressMarker(state.markerFrames[*marker], clicks);
    else if (clicks == 2 && isLoopBarAt(state, geometry, column, event.y))
        model_.select(*state.loopPoints);
    else if (state.editLoopEnabled && !state.loopPoints && !state.buffer.isEmpty())
        drag_ = LoopDrag{{}, std::llround(geometry.axis.frameAt(column)), event.x, 0, false};
}

void RulerInput::pressMarker(std::int64_t frame, int clicks) {
    if (clicks == 1) return model_.placeCursor(frame);
    auto next = model_.state().buffer.frames();
    for (const std::int64_t other : model_.state().markerFrames)
        if (other > frame) next = std::min(next, other);
    model_.select({frame, next});
}

// Whether there is one of the loop's tabs to be taken hold of.
bool RulerInput::pressLoop(const PointerEvent &event, const RulerGeometry &geometry) {
    const AudioEditorState &state = model_.state();
    const double column = event.x - geometry.left;
    const auto isStart = state.editLoopEnabled ? loopTabAt(state, geometry, column, event.y) : std::nullopt;
    if (!isStart) return false;
    const double held = geometry.axis.xOf(double(frameOf(*state.loopPoints, *isStart)));
    drag_ = LoopDrag{isStart, frameOf(*state.loopPoints, !*isStart), event.x, held - column, false};
    return true;
}

void RulerInput::move(const PointerEvent &event, const RulerGeometry &geometry) {
    last_ = event;
    if (auto *drag = std::get_if<ViewDrag>(&drag_)) dragView(*drag, event, geometry);
    if (auto *drag = std::get_if<LoopDrag>(&drag_)) dragLoop(*drag, event, geometry);
}

void RulerInput::modifiersChanged(Modifiers modifiers, const RulerGeometry &geometry) {
    last_.modifiers = modifiers;
    if (std::holds_alternative<LoopDrag>(drag_)) move(last_, geometry);
}

void RulerInput::dragView(ViewDrag &drag, const PointerEvent &event, const RulerGeometry &geometry) {
    const double scale = geometry.size.scale;
    drag.moved = drag.moved || std::hypot(event.x - drag.x, event.y - drag.y) >= dragFrom * scale;
    if (!drag.moved) return;
    const std::int64_t frames = model_.state().buffer.frames();
    const double zoom = drag.view.zoom * std::exp2((event.y - drag.y) / (pixelsPerDoubling * scale));
    AudioEditorZoom view{std::clamp(zoom, 1.0, maximumZoom(frames)), 0};
    const double visible = visibleFrames(view, frames);
    view.centerFrame = drag.frame + (0.5 - (event.x - geometry.left) / std::max(geometry.columns(), 1.0)) * visible;
    model_.setView(view);
}

// A point of the loop stops where the other stands; a new loop turns round there.
void RulerInput::dragLoop(LoopDrag &drag, const PointerEvent &event, const RulerGeometry &geometry) {
    drag.moved = drag.moved || std::abs(event.x - drag.x) >= dragFrom * geometry.size.scale;
    if (!drag.moved) return;
    const AudioEditorState &state = model_.state();
    const double column = std::clamp(event.x - geometry.left + drag.grab, 0.0, geometry.columns());
    auto sticky = stickyFrames(state, TimeEdge::Kind::loop);
    std::erase(sticky, drag.fixed);
    if (event.modifiers.control) sticky.clear();
    const std::int64_t here = std::clamp<std::int64_t>(std::llround(geometry.axis.frameAt(column)), 0, state.buffer.frames());
    const std::int64_t frame = stuckTo(sticky, geometry.axis, column, geometry.size.scale).value_or(here);
    if (!drag.isStart) return model_.moveLoop({std::min(frame, drag.fixed), std::max(frame, drag.fixed)});
    model_.moveLoop(*drag.isStart ? FrameRange{std::min(frame, drag.fixed - 1), drag.fixed}
                                  : FrameRange{drag.fixed, std::max(frame, drag.fixed + 1)});
}

void RulerInput::release() {
    const auto drag = std::exchange(drag_, std::monostate());
    model_.setViewDragged(false);
    model_.endLoopMove();
    const auto *view = std::get_if<ViewDrag>(&drag);
    if (view && !view->moved && !isViewOnly_) model_.toggleTimeUnit();
}

bool RulerInput::cancel() {
    const auto drag = std::exchange(drag_, std::monostate());
    if (const auto *view = std::get_if<ViewDrag>(&drag)) model_.setView(view->view);
    model_.setViewDragged(false);
    model_.cancelLoopMove();
    return !std::holds_alternative<std::monostate>(drag);
}

PointerShape RulerInput::shape(const PointerEvent &event, const RulerGeometry &geometry) const {
    const auto *view = std::get_if<ViewDrag>(&drag_);
    const auto *loop = std::get_if<LoopDrag>(&drag_);
    const bool isOverTab = !isViewOnly_ && std::holds_alternative<std::monostate>(drag_) && model_.state().editLoopEnabled &&
                           loopTabAt(model_.state(), geometry, event.x - geometry.left, event.y);
    const bool isSizing = isOverTab || (view && view->moved) || (loop && (loop->moved || loop->isStart));
    return isSizing ? PointerShape::horizontalSize : PointerShape::arrow;
}

}  // namespace kiv
