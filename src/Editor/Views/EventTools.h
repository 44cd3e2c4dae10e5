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

class WheelInput;

Modifiers modifiersOf(Qt::KeyboardModifiers modifiers);
PointerButton buttonOf(const QMouseEvent &event);
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
// A pinch, or nothing: its factor and where it is.
struct Pinch {
    double factor = 1, x = 0;  // logical pixels of the widget
};
std::optional<Pinch> pinchOf(const QEvent &event);
// Turns the view by a wheel or a pinch over a sound that begins `left` pixels from the widget's side and is so wide. False: the
// event is neither.
bool turnView(QEvent &event, WheelInput &wheel, double left, double width);
// Starts or stops a timer, whichever it is not doing yet.
void runWhile(bool wanted, QBasicTimer &timer, int milliseconds, QObject &receiver);
// Sets the shape if it is not the widget's already.
void setShape(QWidget &widget, PointerShape shape);

}  // namespace kiv
