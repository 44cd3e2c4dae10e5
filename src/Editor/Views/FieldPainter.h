#pragma once

#include <QRectF>
#include <optional>

#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

struct FieldLook {
    bool isEdited = false;
    bool isReadable = true;  // what is typed makes sense
    bool isEnabled = true;
    std::optional<Rgba> fill = {};  // where it does not stand in a sheet
};

// The box of a field; one that is edited wears a frame of two pixels outside it.
void paintFieldBox(QPainter &painter, const QRectF &box, const FieldLook &look, const ViewStyle &style);

}  // namespace kiv
