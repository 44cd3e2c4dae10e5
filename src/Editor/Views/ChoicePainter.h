#pragma once

#include <QRectF>
#include <QString>

#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

enum class ChoiceKind { check, radio };

struct ChoiceLook {
    ChoiceKind kind = ChoiceKind::check;
    bool isOn = false;
    bool isHovered = false;
    bool isPressed = false;
    bool isEnabled = true;
};

// A box to check or a dot to choose at the left, in the middle of the height, its words after it.
void paintChoice(QPainter &painter, const QRectF &rect, const ChoiceLook &look, const QString &text, const ViewStyle &style);
int choiceWidth(const ChoiceLook &look, const QString &text, const ViewStyle &style);
int choiceHeight(const ViewStyle &style);
QRect choiceMark(const QRect &rect);

}  // namespace kiv
