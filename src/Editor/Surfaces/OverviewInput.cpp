#include "Editor/Surfaces/OverviewInput.h"

#include <algorithm>
#include <cmath>

namespace kiv {
namespace {

constexpr double leastFrames = 16;

}  // namespace

double overviewFrameAt(const OverviewGeometry &geometry, double x) {
    return geometry.axis.frameAt(std::clamp(x - geometry.left, 0.0, geometry.columns()));
}

void OverviewInput::press(const PointerEvent &event, const OverviewGeometry &geometry) {
    if (!geometry.box) return;  // all of it is in view: there is nothing to move
    const AudioEditorZoom view = model_.state().view;
    const std::int64_t frames = model_.state().buffer.frames();
    const double frame = overviewFrameAt(geometry, event.x);
    const double first = firstVisibleFrame(view, frames), last = first + visibleFrames(view, frames);
    model_.setViewDragged(true);
    switch (overviewPartAt(geometry, event.x - geometry.left)) {
        case OverviewPart::box:
            drag_ = {OverviewPart::box, view, view.centerFrame - frame, 0};
            break;
        case OverviewPart::leftGrip:
            drag_ = {OverviewPart::leftGrip, view, first - frame, last};
            break;
        case OverviewPart::rightGrip:
            drag_ = {OverviewPart::rightGrip, view, last - frame, first};
            break;
        case OverviewPart::outside:
            drag_ = {OverviewPart::box, view, 0, 0};
            model_.setView({view.zoom, frame});
            break;
    }
}

void OverviewInput::move(const PointerEvent &event, const OverviewGeometry &geometry) {
    if (!drag_) return;
    const double frames = double(std::max<std::int64_t>(model_.state().buffer.frames(), 1));
    // Not clamped before the offset is added, or the ends could not be reached.
    const double place = geometry.axis.frameAt(event.x - geometry.left) + drag_->offset, fixed = drag_->fixed;
    if (drag_->part == OverviewPart::box) return model_.setView({drag_->view.zoom, place});
    const bool isLeft = drag_->part == OverviewPart::leftGrip;
    const double lo = isLeft ? std::clamp(place, 0.0, std::max(fixed - leastFrames, 0.0)) : fixed;
    const double hi = isLeft ? fixed : std::clamp(place, std::min(fixed + leastFrames, frames), frames);
    model_.setView({frames / std::max(hi - lo, 1.0), (lo + hi) / 2});
}

void OverviewInput::release() {
    drag_.reset();
    model_.setViewDragged(false);
}

bool OverviewInput::cancel() {
    if (!drag_) return false;
    model_.setView(drag_->view);
    release();
    return true;
}

void OverviewInput::doubleClick() {
    release();
    model_.zoomToFit();
}

PointerShape OverviewInput::shape(const PointerEvent &event, const OverviewGeometry &geometry) const {
    const OverviewPart part = drag_ ? drag_->part : overviewPartAt(geometry, event.x - geometry.left);
    switch (part) {
        case OverviewPart::box:
            return drag_ ? PointerShape::closedHand : PointerShape::openHand;
        case OverviewPart::leftGrip:
        case OverviewPart::rightGrip:
            return PointerShape::horizontalSize;
        case OverviewPart::outside:
            break;
    }
    return PointerShape::arrow;
}

void OverviewInput::key(ViewKey key) {
    const AudioEditorState &state = model_.state();
    const double visible = visibleFrames(state.view, state.buffer.frames());
    const auto scroll = [&](double views) { model_.setView(scrolledBy(state.view, views * visible, state.buffer.frames())); };
    switch (key) {
        case ViewKey::left:
            return scroll(-0.1);
        case ViewKey::right:
            return scroll(0.1);
        case ViewKey::pageUp:
            return scroll(-0.8);
        case ViewKey::pageDown:
            return scroll(0.8);
        case ViewKey::home:
            return model_.setView({state.view.zoom, 0});
        case ViewKey::end:
            return model_.setView({state.view.zoom, double(state.buffer.frames())});
        case ViewKey::up:
            return model_.zoomBy(zoomStep);
        case ViewKey::down:
            return model_.zoomBy(1 / zoomStep);
    }
}

}  // namespace kiv
