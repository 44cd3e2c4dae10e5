#pragma once

#include <optional>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/OverviewGeometry.h"
#include "Editor/Surfaces/Pointer.h"

namespace kiv {

// What pointer and keys do to the overview. Event places count from the view's left side, as its geometry does not.
class OverviewInput {
public:
    explicit OverviewInput(AudioEditorModel &model) : model_(model) {}

    void press(const PointerEvent &event, const OverviewGeometry &geometry);
    void move(const PointerEvent &event, const OverviewGeometry &geometry);
    void release();
    // The view as at the press. False when nothing is being dragged.
    bool cancel();
    void doubleClick();
    PointerShape shape(const PointerEvent &event, const OverviewGeometry &geometry) const;
    // Scrolls by a tenth or 80 % of the view or to an end, zooms in and out.
    void key(ViewKey key);

private:
    struct Drag {
        OverviewPart part = OverviewPart::box;
        AudioEditorZoom view;
        double offset = 0;  // frames from the pointer to what it moves: the view's centre, or an edge
        double fixed = 0;   // the edge that stays, when the other is dragged
    };

    AudioEditorModel &model_;
    std::optional<Drag> drag_;
};

// The frame under a place of the view.
double overviewFrameAt(const OverviewGeometry &geometry, double x);

}  // namespace kiv
