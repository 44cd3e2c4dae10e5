#pragma once

#include "Editor/Surfaces/StretchSheetGeometry.h"
#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

// The texts of the Pitch / Time dialog: its title and what it acts on, the labels over the controls, both lengths.
void paintStretchSheet(QPainter &painter, const StretchSheetGeometry &geometry, const StretchSheetScene &scene,
                       const ViewStyle &style);
// The width that the lengths take.
int stretchLengthWidth(const StretchSheetScene &scene, const ViewStyle &style);

}  // namespace kiv
