#pragma once

#include <array>
#include <optional>

#include "Editor/Surfaces/Box.h"
#include "Editor/Surfaces/StretchSheetScene.h"

namespace kiv {

// What the places in the Pitch / Time dialog depend on: the sizes of its texts and controls, in logical pixels.
struct StretchSheetMeasures {
    double textFactor = 1;
    int titleHeight = 20;
    int labelHeight = 16;
    int controlHeight = 32;
    int segmentsWidth = 0;
    int autoWidth = 0;
    int buttonsWidth = 0;  // of the whole row of buttons
    int lengthWidth = 0;   // of the text of both lengths
};

// Where everything stands: mode and numbers in a row, each under its label, that goes on in a second one where it finds no
// room; under it the lengths with the buttons, or the buttons below them.
class StretchSheetGeometry {
public:
    StretchSheetGeometry(StretchMode mode, int mostWidth, const StretchSheetMeasures &measures);

    int width() const { return width_; }
    int height() const { return height_; }
    Box title() const { return title_; }
    Box segments() const { return segments_; }
    // Nothing for a number that the mode does not have.
    std::optional<Box> field(StretchField field) const { return fields_[std::size_t(field)]; }
    std::optional<Box> autoButton() const { return autoButton_; }
    // Of the label over a control.
    Box labelOver(const Box &control) const;
    Box length() const { return length_; }
    int buttonsTop() const { return buttonsTop_; }

private:
    Box place(int width, int before);

    StretchSheetMeasures measures_;
    int width_, height_ = 0;
    int x_ = 0, y_ = 0;  // where the next control may stand
    Box title_, segments_, length_;
    std::array<std::optional<Box>, stretchNumbers.size()> fields_;
    std::optional<Box> autoButton_;
    int buttonsTop_ = 0;
};

}  // namespace kiv
