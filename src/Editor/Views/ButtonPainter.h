#pragma once

#include <QRectF>
#include <QString>
#include <string>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

enum class ButtonKind {
    bar,           // on the top bar
    action,        // the one button of a bar that does the bar's work
    sheet,         // in sheets and windows
    sheetDefault,  // the one that Enter presses
    tab,           // of a window with pages: its icon over its name
};

// All that a button looks like.
struct ButtonLook {
    ButtonKind kind = ButtonKind::bar;
    Corners corners = Corners::all;  // the square ones touch a neighbour of the same group
    std::string icon = {};
    QString label = {};  // dim, before the text, with the text at the right
    QString text = {};
    bool hasDigits = false;  // the text is a number that changes while watched
    bool isOver = false;     // the text tells of something over full scale
    bool isSegment = false;  // one of a row of choices
    bool isOn = false;
    bool isHovered = false;
    bool isPressed = false;
    bool isEnabled = true;
};

void paintButton(QPainter &painter, const QRectF &rect, const ButtonLook &look, const ViewStyle &style);
// The width its content asks for.
int buttonWidth(const ButtonLook &look, const ViewStyle &style);
int buttonHeight(ButtonKind kind, const ViewStyle &style);

}  // namespace kiv
