#include "Editor/Views/FieldPainter.h"

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double radius = 6;

}  // namespace

void paintFieldBox(QPainter &painter, const QRectF &box, const FieldLook &look, const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    const QColor fill = toColor(look.isDragged ? colors[Role::accentBg] : look.fill.value_or(colors.field));
    const Rgba rest = look.isEnabled ? colors.fieldBorder : mix(colors[Role::dialogBg], colors.fieldBorder, 0.42);
    const QColor edge = toColor(!look.isReadable                  ? colors.over
                                : look.isEdited || look.isDragged ? colors[Role::accentBg]
                                                                  : rest);
    look.isEdited ? paintFramed(painter, box, radius, fill, edge) : paintBox(painter, box, radius, fill, edge, look.corners);
}

}  // namespace kiv
