#include "Editor/Views/ValueControl.h"

#include <QAccessible>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <algorithm>

#include "Editor/Views/EventTools.h"

namespace kiv {

ValueControl::ValueControl(ViewStyle &style, double pixelsPerStep, Stepping stepping, QWidget *parent)
    : QWidget(parent), style_(style), input_(pixelsPerStep, stepping) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    input_.onOpen = [this](const std::string &typed) { openField(QString::fromStdString(typed)); };
    inPlace_.onChanged = [this] { update(); };
    inPlace_.onLeft = [this] { setFocus(Qt::TabFocusReason); };
    styleChanges_ = style.changed.add([this](const ViewStyle &) {
        updateGeometry();
        update();
    });
}

void ValueControl::tellValueChanged() {
    QAccessibleValueChangeEvent event(this, facts().value);
    QAccessible::updateAccessibility(&event);
    update();
}

void ValueControl::setFromOutside(double value) {
    if (onValue) onValue(std::clamp(value, facts().lo, facts().hi));
}

// Where the desktop does not let us move the pointer, the drag ends at the screen's edge.
void ValueControl::returnPointer() {
    QCursor::setPos(pressedAt_);
    if (QCursor::pos() == pressedAt_) input_.returned();
}

void ValueControl::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton) return;
    pressedAt_ = event->globalPosition().toPoint();
    input_.press(pointerEvent(*event, 1));
}

void ValueControl::mouseMoveEvent(QMouseEvent *event) {
    const bool isFar = input_.move(pointerEvent(*event, 1));
    if (input_.isDragging() && cursor().shape() != Qt::BlankCursor) setCursor(Qt::BlankCursor);
    if (isFar) returnPointer();
    update();
}

void ValueControl::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton) return;
    if (input_.isDragging()) returnPointer();
    unsetCursor();
    // A click is to make it ready for typing; a drag leaves the keyboard where it was.
    if (input_.release()) setFocus(Qt::MouseFocusReason);
    update();
}

void ValueControl::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton) input_.doubleClick();
}

void ValueControl::wheelEvent(QWheelEvent *event) {
    input_.turn(controlTurn(*event));
    event->accept();
}

void ValueControl::keyPressEvent(QKeyEvent *event) {
    const bool isSmall = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
        case Qt::Key_Up:
            return input_.key(ValueKey::up, isSmall);
        case Qt::Key_Down:
            return input_.key(ValueKey::down, isSmall);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return input_.key(ValueKey::open, isSmall);
        case Qt::Key_Escape:
            if (input_.cancel()) return unsetCursor();
            break;
        default:
            if (!(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)) && input_.type(event->text().toStdString()))
                return;
    }
    QWidget::keyPressEvent(event);
}

void ValueControl::changeEvent(QEvent *event) {
    if (event->type() == QEvent::EnabledChange && !isEnabled()) input_.cancel();
    QWidget::changeEvent(event);
}

}  // namespace kiv
