#pragma once

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/Pointer.h"
#include "Editor/Surfaces/ValueInput.h"

namespace kiv {

inline constexpr double zoomPerNotch = 1.25;
inline constexpr double scrollPerNotch = 0.1;  // of the view

// Wheel, touchpad and pinch, the same over waveform, ruler and overview: zoom at the pointer, scroll, vertical zoom.
class WheelInput {
public:
    explicit WheelInput(AudioEditorModel &model) : model_(model) {}

    // Over the waveform and its ruler: x of width is the place that zooming keeps. Left of it is the gutter.
    void turn(const WheelTurn &turn, double x, double width);
    void pinch(double factor, double x, double width);
    // Over the overview: zooming is around the frame there.
    void turnAround(const WheelTurn &turn, double frame);
    void pinchAround(double factor, double frame);
    // Whatever is held: over the level gutter.
    void turnVertical(double notches);

private:
    template <class Zoom>
    void apply(const WheelTurn &turn, Zoom zoom);
    void scroll(double notches);

    AudioEditorModel &model_;
    StepCounter verticalSteps_;
};

}  // namespace kiv
