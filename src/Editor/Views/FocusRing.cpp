#include "Editor/Views/FocusRing.h"

#include <QAbstractButton>
#include <QFocusEvent>
#include <QPainter>
#include <utility>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/EventTools.h"
#include "Editor/Views/Field.h"

namespace kiv {

namespace {

constexpr int reach = 3;  // beyond the control
constexpr double line = 2;
constexpr int roundUpTo = 24;  // the slider's thumb, the dot of a choice
constexpr const char *placeProperty = "kivFocusPlace";

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
        // Of a row of choices only the chosen one takes the focus, but any may be it.
        if ((widget->focusPolicy() != Qt::NoFocus || qobject_cast<QAbstractButton *>(widget)) && !dynamic_cast<Field *>(widget))
            follow(widget);
}

bool FocusRing::eventFilter(QObject *watched, QEvent *event) {
    auto *control = static_cast<QWidget *>(watched);
    switch (event->type()) {
        case QEvent::FocusIn:
            control_ = wears(*control, *static_cast<QFocusEvent *>(event)) ? control : nullptr;
            place();
            break;
        case QEvent::FocusOut:
            if (control_ == control) left_ = std::exchange(control_, nullptr);
            place();
            break;
        case QEvent::DynamicPropertyChange:
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

// What wore it before a menu opened, or another window was active, still does.
bool FocusRing::wears(const QWidget &control, const QFocusEvent &event) const {
    const Qt::FocusReason reason = event.reason();
    const bool comesBack =
        reason == Qt::ActiveWindowFocusReason || reason == Qt::MenuBarFocusReason || reason == Qt::PopupFocusReason;
    return isMovedByKey(event) || (comesBack && left_ == &control);
}

void FocusRing::setPlace(QWidget &control, const QRect &place) { control.setProperty(placeProperty, place); }

void FocusRing::place() {
    setVisible(control_ && control_->isVisible());
    if (!control_) return;
    const QVariant told = control_->property(placeProperty);
    const QRect rect = told.isValid() ? told.toRect() : control_->rect();
    const QRect ringed = QRect(control_->mapTo(parentWidget(), rect.topLeft()), rect.size());
    // Where a control reaches to the window's side, the ring stays inside.
    setGeometry(ringed.adjusted(-reach, -reach, reach, reach).intersected(parentWidget()->rect()));
    raise();
}

void FocusRing::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    paintFocusRing(painter, QRectF(rect()).adjusted(reach, reach, -reach, -reach), style_);
}

// Round controls wear a round one.
void paintFocusRing(QPainter &painter, const QRectF &control, const ViewStyle &style) {
    const QRectF outer = snapped(painter, control.adjusted(-reach, -reach, reach, reach));
    const bool isRound = outer.width() == outer.height() && outer.width() <= roundUpTo;
    const double width = lineWidth(painter, line), radius = isRound ? outer.width() / 2 : style.radius() + reach;
    QPainterPath ring = roundedPath(outer, radius);
    ring.addPath(roundedPath(outer.adjusted(width, width, -width, -width), radius - width));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(ring, style.color(AudioEditorThemeColor::accentBg));
    painter.restore();
}

}  // namespace kiv
