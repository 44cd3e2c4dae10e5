#pragma once

#include <QRectF>

#include "Editor/Surfaces/ValueScenes.h"
#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

struct ParameterCellLook {
    bool isHovered = false;
    bool isDragged = false;
    bool isTyping = false;  // the value is left to the field that stands there
    bool isReadable = true;
    bool isEnabled = true;
};

void paintParameterCell(QPainter &painter, const QRectF &rect, const ParameterCellScene &scene, const ParameterCellLook &look,
                        const ViewStyle &style);
int parameterCellWidth(const ParameterCellScene &scene, const ViewStyle &style);
int parameterCellHeight(const ViewStyle &style);
// Where its value stands.
QRectF parameterCellValuePlace(const QRectF &rect, const ViewStyle &style);

}  // namespace kiv
