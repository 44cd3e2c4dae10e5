#include "Editor/Surfaces/StretchSheetGeometry.h"

#include <algorithm>
#include <cmath>

namespace kiv {

namespace {

constexpr int padding = DialogSheetGeometry::padding;
constexpr int cleanWidth = 480, cyclicWidth = 640;
constexpr int betweenFields = 8, besideSegments = 16;
constexpr int sharedBorder = 1;

int scaled(int length, const DialogSheetMeasures &measures) { return int(std::lround(length * measures.textFactor)); }

int beforeField(StretchField field) { return field == StretchField::time ? besideSegments : betweenFields; }

// With the button that belongs to it.
int widthOf(const StretchNumber &number, const StretchSheetGeometry::Widths &widths, const DialogSheetMeasures &measures) {
    const int button = number.field == StretchField::cycle ? widths.autoButton - sharedBorder : 0;
    return scaled(number.width, measures) + button;
}

}  // namespace

// Segments keep the size of their words while the fields shrink with the type: the row itself has the last word.
int StretchSheetGeometry::wishedWidth(StretchMode mode, const Widths &widths, const DialogSheetMeasures &measures) {
    int row = widths.segments;
    for (const StretchNumber &number : stretchNumbers)
        if (isShown(number.field, mode)) row += beforeField(number.field) + widthOf(number, widths, measures);
    return std::max(scaled(mode == StretchMode::clean ? cleanWidth : cyclicWidth, measures), row + 2 * padding);
}

StretchSheetGeometry::StretchSheetGeometry(StretchMode mode, int top, int width, const Widths &widths,
                                           const DialogSheetMeasures &measures, const DialogSheetDistances &distances)
    : measures_(measures),
      distances_(distances),
      right_(padding + width),
      x_(padding),
      y_(top + measures.labelHeight + distances.underLabel),
      segments_(place(widths.segments, 0)) {
    for (const StretchNumber &number : stretchNumbers) {
        if (!isShown(number.field, mode)) continue;
        Box box = place(widthOf(number, widths, measures), beforeField(number.field));
        if (number.field == StretchField::cycle) {
            autoButton_ = {box.right() - widths.autoButton, box.y, widths.autoButton, box.height};
            box.width -= widths.autoButton - sharedBorder;
        }
        fields_[std::size_t(number.field)] = box;
    }
}

Box StretchSheetGeometry::place(int width, int before) {
    const bool isFirst = x_ == padding;
    if (!isFirst && x_ + before + width > right_) {
        x_ = padding;
        y_ += measures_.controlHeight + distances_.betweenLines + measures_.labelHeight + distances_.underLabel;
    } else if (!isFirst) {
        x_ += before;
    }
    const Box box{x_, y_, width, measures_.controlHeight};
    x_ = box.right();
    return box;
}

Box StretchSheetGeometry::labelOver(const Box &control) const {
    return {control.x, control.y - distances_.underLabel - measures_.labelHeight, right_ - control.x, measures_.labelHeight};
}

}  // namespace kiv
