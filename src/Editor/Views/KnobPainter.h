#pragma once

#include <QRectF>
#include <optional>

#include "Editor/Surfaces/ValueScenes.h"
#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

struct KnobLook {
    bool isHovered = false;
    bool isDragged = false;
    bool isEnabled = true;
    std::optional<Rgba> ground = {};  // what it stands on, if not a sheet
};

// The knob alone, in its box of 38 x 36.
void paintKnob(QPainter &painter, const QRectF &box, const KnobScene &scene, const KnobLook &look, const ViewStyle &style);
// Its value in the line under it.
void paintKnobText(QPainter &painter, const QRectF &line, const KnobScene &scene, const KnobLook &look, const ViewStyle &style);

}  // namespace kiv
