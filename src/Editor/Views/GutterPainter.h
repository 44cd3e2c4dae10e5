#pragma once

#include "Editor/Surfaces/GutterScene.h"
#include "Editor/Views/PainterTools.h"

class QPainter;

namespace kiv {

class ViewStyle;

// Paints the whole gutter; the painter's unit must be a device pixel.
void paintGutter(QPainter &painter, const GutterScene &scene, const ViewStyle &style, TextCache &texts);

}  // namespace kiv
