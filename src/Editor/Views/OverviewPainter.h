#pragma once

#include <QRect>

#include "Editor/Surfaces/OverviewImage.h"
#include "Editor/Surfaces/OverviewScene.h"
#include "Preferences/AudioEditorTheme.h"

class QPainter;

namespace kiv {

OverviewImage::Look overviewLook(const ThemeColors &colors);

// Paints the given part of the overview, in device pixels of the view; the painter's unit must be one of these. `image` must be
// up to date with the scene.
void paintOverview(QPainter &painter, const OverviewScene &scene, const OverviewImage &image, const ThemeColors &colors,
                   const QRect &part);

}  // namespace kiv
