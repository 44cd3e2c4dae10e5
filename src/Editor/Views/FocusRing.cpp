#include "Editor/Views/FocusRing.h"

#include <QFocusEvent>
#include <QPainter>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Field.h"

namespace kiv {

namespace {

constexpr int reach = 3;  // beyond the control
constexpr double line = 2;

bool isKeyReason(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason;
}

}  // namespace

FocusRing::FocusRing(ViewStyle &style, QWidget *window) : QWidget(window), style_(style) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    hide();
    styleChanges_ = style.changed.add([this](const ViewStyle &) { update(); });
}

void FocusRing::follow(QWidget *control) {
    control->removeEventFilter(this);  // so that it is never filtered twice
    control->installEventFilter(this);
}

void FocusRing::followAll(QWidget *container) {
    for (QWidget *widget : container->findChildren<QWidget *>())
        if (widget->focusPolicy() != Qt::NoFocus && !dynamic_cast<Field *>(widget)) follow(widget);
}

bool FocusRing::eventFilter(QObject *watched, QEvent *event) {
    auto *control = static_cast<QWidget *>(watched);
    switch (event->type()) {
        case QEvent::FocusIn:
            control_ = isKeyReason(static_cast<QFocusEvent *>(event)->reason()) ? control : nullptr;
            place();
            break;
        case QEvent::FocusOut:
            if (control_ == control) control_ = nullptr;
            place();
            break;
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Hide:
        case QEvent::Show:
            if (control_ == control) place();
            break;
        default:
            break;
    }
    return false;
}

void FocusRing::place() {
    setVisible(control_ && control_->isVisible());
    if (!control_) return;
    const QRect rect(control_->mapTo(parentWidget(), QPoint()), control_->size());
    // Where a control reaches to the window's side, the ring stays inside.
    setGeometry(rect.adjusted(-reach, -reach, reach, reach).intersected(parentWidget()->rect()));
    raise();
}

void FocusRing::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outer = snapped(painter, rect());
    const double width = lineWidth(painter, line), radius = style_.radius() + reach;
    QPainterPath ring = roundedPath(outer, radius);
    ring.addPath(roundedPath(outer.adjusted(width, width, -width, -width), radius - width));
    painter.fillPath(ring, style_.color(AudioEditorThemeColor::accentBg));
}

}  // namespace kiv
