#include "Editor/Views/ValueEvents.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

#include "Editor/Views/EventTools.h"

namespace kiv {

bool ValueEvents::take(QEvent &event) {
    if (event.type() == QEvent::EnabledChange || event.type() == QEvent::Hide) return giveUp(), false;
    if (!control_.isEnabled()) return false;
    switch (event.type()) {
        case QEvent::MouseButtonPress:
            return press(static_cast<QMouseEvent &>(event));
        case QEvent::MouseMove:
            return move(static_cast<QMouseEvent &>(event));
        case QEvent::MouseButtonRelease:
            return release(static_cast<QMouseEvent &>(event));
        case QEvent::MouseButtonDblClick:
            if (static_cast<QMouseEvent &>(event).button() == Qt::LeftButton) input_.doubleClick();
            return true;
        case QEvent::Wheel:
            input_.turn(controlTurn(static_cast<QWheelEvent &>(event)));
            event.accept();
            return true;
        case QEvent::KeyPress:
            return key(static_cast<QKeyEvent &>(event));
        default:
            return false;
    }
}

bool ValueEvents::press(QMouseEvent &event) {
    if (event.button() != Qt::LeftButton) return false;
    pressedAt_ = event.globalPosition().toPoint();
    input_.press(pointerEvent(event, 1));
    if (input_.isDragging()) beginDrag();
    return true;
}

bool ValueEvents::move(QMouseEvent &event) {
    const bool wasDragging = input_.isDragging(), isFar = input_.move(pointerEvent(event, 1));
    if (!input_.isDragging()) return false;
    if (!wasDragging) beginDrag();
    if (isFar) returnPointer();
    control_.update();
    return true;
}

bool ValueEvents::release(QMouseEvent &event) {
    if (event.button() != Qt::LeftButton) return false;
    const bool wasDragging = input_.isDragging();
    if (wasDragging) returnPointer();
    const bool isClick = input_.release();
    if (wasDragging) endDrag();
    if (isClick && onClick) onClick();
    return true;
}

bool ValueEvents::key(QKeyEvent &event) {
    const bool isSmall = event.modifiers() & Qt::ShiftModifier;
    switch (event.key()) {
        case Qt::Key_Up:
            return input_.key(ValueKey::up, isSmall);
        case Qt::Key_Down:
            return input_.key(ValueKey::down, isSmall);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return input_.key(ValueKey::open, isSmall);
        default:
            return !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) && input_.type(event.text().toStdString());
    }
}

void ValueEvents::beginDrag() {
    if (!input_.onFollow) control_.setCursor(Qt::BlankCursor);
    qApp->installEventFilter(this);
}

// Where the desktop does not let us move the pointer, the drag ends at the screen's edge.
void ValueEvents::returnPointer() {
    if (input_.onFollow) return;
    QCursor::setPos(pressedAt_);
    if (QCursor::pos() == pressedAt_) input_.returned();
}

// The control goes: what has been dragged so far holds.
void ValueEvents::giveUp() {
    if (!input_.isDragging()) return;
    returnPointer();
    input_.release();
    endDrag();
}

void ValueEvents::endDrag() {
    qApp->removeEventFilter(this);
    if (!input_.onFollow) control_.unsetCursor();
    control_.update();
}

// While the pointer is hidden.
bool ValueEvents::eventFilter(QObject *, QEvent *event) {
    if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent *>(event)->key() != Qt::Key_Escape) return false;
    returnPointer();
    input_.cancel();
    endDrag();
    return true;
}

}  // namespace kiv
