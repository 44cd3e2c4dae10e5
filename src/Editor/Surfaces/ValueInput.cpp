#include "Editor/Surfaces/ValueInput.h"

#include <cmath>

namespace kiv {

namespace {

constexpr double dragFrom = 2;  // pixels; less is a click
constexpr double farAway = 100;

}  // namespace

int StepCounter::add(double steps) {
    if (steps * rest_ < 0) rest_ = 0;
    rest_ += steps;
    const double whole = std::trunc(rest_);
    rest_ -= whole;
    return int(whole);
}

void ValueInput::press(const PointerEvent &event) {
    pressed_ = last_ = Place{event.x, event.y};
    beforeReturn_.reset();
    dragged_.clear();
    isDragging_ = false;
    if (!onFollow) return;
    begin();
    onFollow(event);
}

// How many pixels the pointer has gone up since the last event.
double ValueInput::climb(const PointerEvent &event) {
    const auto distance = [&](const Place &place) { return std::hypot(event.x - place.x, event.y - place.y); };
    if (beforeReturn_ && distance(*beforeReturn_) < distance(last_)) {
        const double up = beforeReturn_->y - event.y;
        beforeReturn_ = Place{event.x, event.y};
        return up;
    }
    beforeReturn_.reset();
    const double up = last_.y - event.y;
    last_ = Place{event.x, event.y};
    return up;
}

bool ValueInput::move(const PointerEvent &event) {
    if (!pressed_) return false;
    if (!isDragging_) {
        const double across = std::abs(event.x - pressed_->x), along = std::abs(event.y - pressed_->y);
        if (sideways_ == Sideways::choosesText && across >= dragFrom && across > along) pressed_.reset();
        if (!pressed_ || along < dragFrom) return false;
        begin();
    }
    if (onFollow) return onFollow(event), false;
    const double steps = climb(event) / pixelsPerStep_;
    step(stepping_ == Stepping::whole ? dragged_.add(steps) : steps, event.modifiers.shift);
    return pressed_ && std::hypot(event.x - pressed_->x, event.y - pressed_->y) > farAway;
}

void ValueInput::returned() {
    if (!pressed_) return;
    beforeReturn_ = last_;
    last_ = *pressed_;
}

void ValueInput::begin() {
    isDragging_ = true;
    if (onDragBegan) onDragBegan();
}

void ValueInput::step(double steps, bool isSmall) {
    if (steps != 0 && onStep) onStep(steps, isSmall);
}

void ValueInput::end(bool isCancelled) {
    pressed_.reset();
    if (!isDragging_) return;
    isDragging_ = false;
    if (onDragEnded) onDragEnded(isCancelled);
}

bool ValueInput::release() {
    const bool isClick = pressed_ && !isDragging_;
    end(false);
    return isClick;
}

bool ValueInput::cancel() {
    const bool wasDragging = isDragging_;
    end(true);
    return wasDragging;
}

void ValueInput::doubleClick() {
    pressed_.reset();
    if (onReset) onReset();
}

void ValueInput::turn(const WheelTurn &turn) {
    step(stepping_ == Stepping::whole ? turned_.add(turn.up) : turn.up, turn.modifiers.shift);
}

bool ValueInput::key(ValueKey key, bool isSmall) {
    if (key == ValueKey::open) return onOpen ? onOpen({}), true : false;
    step(key == ValueKey::up ? 1 : -1, isSmall);
    return bool(onStep);
}

bool ValueInput::type(const std::string &text) {
    if (!onOpen || text.size() != 1 || std::string("0123456789+-.,").find(text) == std::string::npos) return false;
    if (onOpen) onOpen(text);
    return true;
}

}  // namespace kiv
