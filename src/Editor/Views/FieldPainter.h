#pragma once

#include <QRectF>
#include <optional>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

struct FieldLook {
    bool isEdited = false;
    bool isReadable = true;  // what is typed makes sense
    bool isEnabled = true;
    bool isDragged = false;
    Corners corners = Corners::all;  // the square ones touch what belongs to the field; while it is edited all are round
    std::optional<Rgba> fill = {};   // where it does not stand in a sheet
};

// The box of a field; one that is edited wears a frame of two pixels outside it.
void paintFieldBox(QPainter &painter, const QRectF &box, const FieldLook &look, const ViewStyle &style);

}  // namespace kiv
