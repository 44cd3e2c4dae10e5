#pragma once

#include <optional>
#include <variant>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/Pointer.h"
#include "Editor/Surfaces/RulerGeometry.h"

namespace kiv {

// What the pointer does to ruler, corner and marker lane. Event places count from the view's left side.
class RulerInput {
public:
    explicit RulerInput(AudioEditorModel &model) : model_(model) {}

    // While a sheet is open the pointer may move the view, and nothing else. Ends the drag in progress.
    void setViewOnly(bool isViewOnly);
    // clicks counts quick successive presses.
    void press(const PointerEvent &event, int clicks, const RulerGeometry &geometry);
    void move(const PointerEvent &event, const RulerGeometry &geometry);
    // A modifier was pressed or let go while the pointer rests.
    void modifiersChanged(Modifiers modifiers, const RulerGeometry &geometry);
    // A click on the ruler that did not move switches the unit.
    void release();
    // View and loop as at the press. False when nothing is being dragged.
    bool cancel();
    PointerShape shape(const PointerEvent &event, const RulerGeometry &geometry) const;

private:
    struct ViewDrag {
        AudioEditorZoom view;
        double x = 0, y = 0;
        double frame = 0;  // the one grabbed
        bool moved = false;
    };
    // In Edit Loop: one of the loop's points, or a new loop where there is none.
    struct LoopDrag {
        std::optional<bool> isStart;  // which point; none: a new loop
        std::int64_t fixed = 0;       // the other point, or where the new loop was begun
        double x = 0;
        double grab = 0;  // columns from the pointer to what it holds
        bool moved = false;
    };

    void pressLane(const PointerEvent &event, int clicks, const RulerGeometry &geometry);
    void pressMarker(std::int64_t frame, int clicks);
    bool pressLoop(const PointerEvent &event, const RulerGeometry &geometry);
    void dragView(ViewDrag &drag, const PointerEvent &event, const RulerGeometry &geometry);
    void dragLoop(LoopDrag &drag, const PointerEvent &event, const RulerGeometry &geometry);

    AudioEditorModel &model_;
    std::variant<std::monostate, ViewDrag, LoopDrag> drag_;
    PointerEvent last_;  // of the drag
    bool isViewOnly_ = false;
};

}  // namespace kiv
