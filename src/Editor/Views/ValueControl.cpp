#include "Editor/Views/ValueControl.h"

#include <QAccessible>
#include <QEvent>
#include <algorithm>

namespace kiv {

namespace {

bool isOfPointer(const QEvent &event) {
    return event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseMove ||
           event.type() == QEvent::MouseButtonRelease || event.type() == QEvent::MouseButtonDblClick;
}

}  // namespace

ValueControl::ValueControl(ViewStyle &style, QWidget *parent, double pixelsPerStep, Stepping stepping)
    : QWidget(parent), style_(style), input_(pixelsPerStep, stepping) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    input_.onOpen = [this](const std::string &typed) { openField(QString::fromStdString(typed)); };
    events_.onClick = [this] { clicked(); };
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

// What lies beneath gets nothing of the pointer, and while another number is typed this one stays.
bool ValueControl::event(QEvent *event) {
    const bool isTaken = !inPlace_.isOpen() && events_.take(*event);
    if (!isTaken && !isOfPointer(*event)) return QWidget::event(event);
    event->accept();
    return true;
}

}  // namespace kiv
