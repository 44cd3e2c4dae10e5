#pragma once

#include <array>
#include <optional>

#include "Editor/Surfaces/DialogSheetGeometry.h"
#include "Editor/Surfaces/StretchSheetScene.h"

namespace kiv {

// Where the controls of the Pitch / Time dialog stand in its body: mode and numbers in a row, each under its label, that goes
// on in a second one where it finds no room.
class StretchSheetGeometry {
public:
    // The widths of the controls that are as wide as their texts.
    struct Widths {
        int segments = 0, autoButton = 0;
    };
    // The body begins at `top` and is `width` wide.
    StretchSheetGeometry(StretchMode mode, int top, int width, const Widths &widths, const DialogSheetMeasures &measures,
                         const DialogSheetDistances &distances);

    // How wide the dialog is where there is room.
    static int wishedWidth(StretchMode mode, const Widths &widths, const DialogSheetMeasures &measures);

    int bottom() const { return y_ + measures_.controlHeight; }
    Box segments() const { return segments_; }
    // Nothing for a number that the mode does not have.
    std::optional<Box> field(StretchField field) const { return fields_[std::size_t(field)]; }
    std::optional<Box> autoButton() const { return autoButton_; }
    // Of the label over a control.
    Box labelOver(const Box &control) const;

private:
    Box place(int width, int before);

    DialogSheetMeasures measures_;
    DialogSheetDistances distances_;
    int right_;
    int x_, y_;  // where the next control may stand
    Box segments_;
    std::array<std::optional<Box>, stretchNumbers.size()> fields_;
    std::optional<Box> autoButton_;
};

}  // namespace kiv
