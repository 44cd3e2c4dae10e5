#include "Editor/Surfaces/StretchSheetGeometry.h"

#include <algorithm>
#include <cmath>

namespace kiv {

namespace {

constexpr int padding = 16;
constexpr int cleanWidth = 480, cyclicWidth = 640;
constexpr int underTitle = 14, underLabel = 4, betweenRows = 16, betweenLines = 8;
constexpr int betweenFields = 8, besideSegments = 16;
constexpr int sharedBorder = 1;

}  // namespace

StretchSheetGeometry::StretchSheetGeometry(StretchMode mode, int mostWidth, const StretchSheetMeasures &measures)
    : measures_(measures) {
    const auto scaled = [&](int length) { return int(std::lround(length * measures.textFactor)); };
    width_ = std::min(scaled(mode == StretchMode::clean ? cleanWidth : cyclicWidth), mostWidth);
    title_ = {padding, padding, width_ - 2 * padding, measures.titleHeight};
    x_ = padding;
    y_ = title_.bottom() + underTitle + measures.labelHeight + underLabel;
    segments_ = place(measures.segmentsWidth, 0);
    for (const StretchNumber &number : stretchNumbers) {
        if (!isShown(number.field, mode)) continue;
        const bool hasButton = number.field == StretchField::cycle;
        const int before = number.field == StretchField::time ? besideSegments : betweenFields;
        Box box = place(scaled(number.width) + (hasButton ? measures.autoWidth - sharedBorder : 0), before);
        if (hasButton) {
            autoButton_ = {box.right() - measures.autoWidth, box.y, measures.autoWidth, box.height};
            box.width = scaled(number.width);
        }
        fields_[std::size_t(number.field)] = box;
    }
    const int below = y_ + measures.controlHeight + betweenRows;
    const bool wraps = padding + measures.lengthWidth + betweenFields + measures.buttonsWidth + padding > width_;
    length_ = {padding, below, measures.lengthWidth, wraps ? measures.labelHeight : measures.controlHeight};
    buttonsTop_ = wraps ? length_.bottom() + betweenLines : below;
    height_ = buttonsTop_ + measures.controlHeight + padding;
}

Box StretchSheetGeometry::place(int width, int before) {
    const bool isFirst = x_ == padding;
    if (!isFirst && x_ + before + width > width_ - padding) {
        x_ = padding;
        y_ += measures_.controlHeight + betweenLines + measures_.labelHeight + underLabel;
    } else if (!isFirst) {
        x_ += before;
    }
    const Box box{x_, y_, width, measures_.controlHeight};
    x_ = box.right();
    return box;
}

Box StretchSheetGeometry::labelOver(const Box &control) const {
    return {control.x, control.y - underLabel - measures_.labelHeight, width_ - control.x - padding, measures_.labelHeight};
}

}  // namespace kiv
