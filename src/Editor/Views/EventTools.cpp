#include "Editor/Views/EventTools.h"

#include <QBasicTimer>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QStyleHints>
#include <QWheelEvent>
#include <QWidget>
#include <algorithm>
#include <cmath>

#include "Editor/Surfaces/WheelInput.h"

namespace kiv {
namespace {

constexpr double unitsPerNotch = 120;
constexpr double pixelsPerDoubling = 64;  // of the zoom, as in a drag on the ruler

Qt::CursorShape cursorShape(PointerShape shape) {
    switch (shape) {
        case PointerShape::textBeam:
            return Qt::IBeamCursor;
        case PointerShape::horizontalSize:
            return Qt::SizeHorCursor;
        case PointerShape::openHand:
            return Qt::OpenHandCursor;
        case PointerShape::closedHand:
            return Qt::ClosedHandCursor;
        case PointerShape::arrow:
            break;
    }
    return Qt::ArrowCursor;
}

}  // namespace

Modifiers modifiersOf(Qt::KeyboardModifiers modifiers) {
    return {modifiers.testFlag(Qt::ShiftModifier), modifiers.testFlag(Qt::ControlModifier)};
}

PointerButton buttonOf(const QMouseEvent &event) {
    const Qt::MouseButton button = event.button();
    return button == Qt::LeftButton     ? PointerButton::left
           : button == Qt::MiddleButton ? PointerButton::middle
           : button == Qt::RightButton  ? PointerButton::right
                                        : PointerButton::other;
}

PointerEvent pointerEvent(const QMouseEvent &event, double scale) {
    return {event.position().x() * scale, event.position().y() * scale, modifiersOf(event.modifiers())};
}

// Pixels are believed only of a device that says when fingers touch it: of others they may be anything.
WheelTurn wheelTurn(const QWheelEvent &event, double width) {
    const Modifiers modifiers = modifiersOf(event.modifiers());
    if (event.phase() == Qt::NoScrollPhase || event.pixelDelta().isNull())
        return {event.angleDelta().y() / unitsPerNotch, event.angleDelta().x() / unitsPerNotch, modifiers};
    const double viewsPerPixel = 1 / std::max(width, 1.0);
    const double up = event.pixelDelta().y(), left = event.pixelDelta().x();
    const double leftNotches = left * viewsPerPixel / scrollPerNotch;
    if (modifiers.shift && !modifiers.control) return {up * viewsPerPixel / scrollPerNotch, leftNotches, modifiers};
    return {up / (pixelsPerDoubling * std::log2(zoomPerNotch)), leftNotches, modifiers};
}

WheelTurn controlTurn(const QWheelEvent &event) {
    const QPoint turned = event.angleDelta();
    return {(turned.y() != 0 ? turned.y() : turned.x()) / unitsPerNotch, 0, modifiersOf(event.modifiers())};
}

int clicks(ClickCounter &counter, const QMouseEvent &event, double scale) {
    const QStyleHints *hints = QGuiApplication::styleHints();
    return counter.press(double(event.timestamp()), event.position().x() * scale, event.position().y() * scale,
                         hints->mouseDoubleClickInterval(), hints->mouseDoubleClickDistance() * scale);
}

bool isMovedByKey(const QFocusEvent &event) {
    const Qt::FocusReason reason = event.reason();
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason;
}

std::optional<ViewKey> viewKey(const QKeyEvent &event) {
    switch (event.key()) {
        case Qt::Key_Left:
            return ViewKey::left;
        case Qt::Key_Right:
            return ViewKey::right;
        case Qt::Key_Home:
            return ViewKey::home;
        case Qt::Key_End:
            return ViewKey::end;
        case Qt::Key_PageUp:
            return ViewKey::pageUp;
        case Qt::Key_PageDown:
            return ViewKey::pageDown;
        case Qt::Key_Up:
            return ViewKey::up;
        case Qt::Key_Down:
            return ViewKey::down;
        default:
            return std::nullopt;
    }
}

std::optional<Pinch> pinchOf(const QEvent &event) {
    if (event.type() != QEvent::NativeGesture) return std::nullopt;
    const auto &gesture = static_cast<const QNativeGestureEvent &>(event);
    if (gesture.gestureType() != Qt::ZoomNativeGesture || gesture.value() == 0) return std::nullopt;
    return Pinch{1 + gesture.value(), gesture.position().x()};
}

bool turnView(QEvent &event, WheelInput &wheel, double left, double width) {
    if (event.type() == QEvent::Wheel) {
        const auto &turned = static_cast<const QWheelEvent &>(event);
        wheel.turn(wheelTurn(turned, width), turned.position().x() - left, width);
        event.accept();
        return true;
    }
    const auto pinch = pinchOf(event);
    if (pinch) wheel.pinch(pinch->factor, pinch->x - left, width);
    return pinch.has_value();
}

void runWhile(bool wanted, QBasicTimer &timer, int milliseconds, QObject &receiver) {
    if (!wanted)
        timer.stop();
    else if (!timer.isActive())
        timer.start(milliseconds, &receiver);
}

void setShape(QWidget &widget, PointerShape shape) {
    if (widget.cursor().shape() != cursorShape(shape)) widget.setCursor(cursorShape(shape));
}

}  // namespace kiv
