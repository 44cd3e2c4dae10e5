#include "Editor/Surfaces/WheelInput.h"

#include <cmath>

namespace kiv {
template <class Zoom>
void WheelInput::apply(const WheelTurn &turn, Zoom zoom) {
    if (turn.modifiers.control && turn.modifiers.shift)
        turnVertical(turn.up + turn.left);
    else if (turn.modifiers.shift)
        scroll(turn.up + turn.left);
    else if (std::abs(turn.left) > std::abs(turn.up))
        scroll(turn.left);
    else if (turn.up != 0)
        zoom(std::pow(zoomPerNotch, turn.up));
}

void WheelInput::turn(const WheelTurn &turn, double x, double width) {
    if (x < 0) return turnVertical(turn.up);
    apply(turn, [&](double factor) { pinch(factor, x, width); });
}

void WheelInput::turnAround(const WheelTurn &turn, double frame) {
    apply(turn, [&](double factor) { pinchAround(factor, frame); });
}

void WheelInput::pinch(double factor, double x, double width) {
    const AudioEditorState &state = model_.state();
    model_.setView(zoomedAt(state.view, state.view.zoom * factor, x, width, state.buffer.frames()));
}

void WheelInput::pinchAround(double factor, double frame) {
    const AudioEditorState &state = model_.state();
    model_.setView(zoomedAround(state.view, state.view.zoom * factor, frame, state.buffer.frames()));
}

void WheelInput::scroll(double notches) {
    const AudioEditorState &state = model_.state();
    const std::int64_t frames = state.buffer.frames();
    model_.setView(scrolledBy(state.view, -notches * scrollPerNotch * visibleFrames(state.view, frames), frames));
}

void WheelInput::turnVertical(double notches) {
    const int steps = verticalSteps_.add(notches);
    if (steps != 0) model_.setVerticalZoomDb(model_.state().verticalZoomDb + steps * verticalZoomStepDb);
}

}  // namespace kiv
