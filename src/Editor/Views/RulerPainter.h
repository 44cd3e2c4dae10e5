#pragma once

#include <QRect>

#include "Editor/Surfaces/RulerScene.h"
#include "Editor/Views/PainterTools.h"

class QPainter;

namespace kiv {

class ViewStyle;

// Paints the given part of ruler, marker lane and corner, in device pixels of the view; the painter's unit must be one of
// these.
void paintRuler(QPainter &painter, const RulerScene &scene, const ViewStyle &style, TextCache &texts, const QRect &part);

}  // namespace kiv
