#pragma once

#include <Qt>
#include <optional>

#include "Editor/Surfaces/Pointer.h"

class QBasicTimer;
class QKeyEvent;
class QMouseEvent;
class QWheelEvent;
class QEvent;
class QFocusEvent;
class QObject;
class QWidget;

// Events as the plain values that surfaces take.
namespace kiv {

Modifiers modifiersOf(Qt::KeyboardModifiers modifiers);
PointerEvent pointerEvent(const QMouseEvent &event, double scale);
// In a view of a width. Fingers on a touchpad move the picture as far as they go.
WheelTurn wheelTurn(const QWheelEvent &event, double width);
// Over a control, which only goes up and down: some desktops turn a wheel with Shift sideways.
WheelTurn controlTurn(const QWheelEvent &event);
// Which of quick successive presses this is.
int clicks(ClickCounter &counter, const QMouseEvent &event, double scale);
// Whether a key has moved the focus: Tab, F6.
bool isMovedByKey(const QFocusEvent &event);
std::optional<ViewKey> viewKey(const QKeyEvent &event);
// The factor of a pinch, or none: 1.
double pinchFactor(const QEvent &event);
// Starts or stops a timer, whichever it is not doing yet.
void runWhile(bool wanted, QBasicTimer &timer, int milliseconds, QObject &receiver);
// Sets the shape if it is not the widget's already.
void setShape(QWidget &widget, PointerShape shape);

}  // namespace kiv
