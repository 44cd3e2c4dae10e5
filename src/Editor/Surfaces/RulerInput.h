#pragma once

#include <optional>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/Pointer.h"
#include "Editor/Surfaces/RulerGeometry.h"

namespace kiv {

// What the pointer does to ruler, corner and marker lane. Event places count from the view's left side.
class RulerInput {
public:
    explicit RulerInput(AudioEditorModel &model) : model_(model) {}

    // clicks counts quick successive presses.
    void press(const PointerEvent &event, int clicks, const RulerGeometry &geometry);
    void move(const PointerEvent &event, const RulerGeometry &geometry);
    // A click that did not move switches the unit.
    void release();
    // The view as at the press. False when nothing is being dragged.
    bool cancel();
    PointerShape shape() const { return drag_ && drag_->moved ? PointerShape::horizontalSize : PointerShape::arrow; }

private:
    struct Drag {
        AudioEditorZoom view;
        double x = 0, y = 0;
        double frame = 0;  // the one grabbed
        bool moved = false;
    };

    void pressLane(const PointerEvent &event, int clicks, const RulerGeometry &geometry);

    AudioEditorModel &model_;
    std::optional<Drag> drag_;
};

}  // namespace kiv
