#include "Editor/Views/AccessibleValues.h"

#include "Editor/Views/Adjustable.h"

namespace kiv {

AccessibleValue::AccessibleValue(QWidget *widget, Adjustable &adjustable, QAccessible::Role role)
    : QAccessibleWidget(widget, role), adjustable_(adjustable) {}

void *AccessibleValue::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface *>(this);
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QString AccessibleValue::text(QAccessible::Text kind) const {
    return kind == QAccessible::Value ? shownText() : QAccessibleWidget::text(kind);
}

QString AccessibleValue::shownText() const { return adjustable_.valueText(); }

QVariant AccessibleValue::currentValue() const { return adjustable_.facts().value; }

void AccessibleValue::setCurrentValue(const QVariant &value) { adjustable_.setFromOutside(value.toDouble()); }

QVariant AccessibleValue::maximumValue() const { return adjustable_.facts().hi; }

QVariant AccessibleValue::minimumValue() const { return adjustable_.facts().lo; }

QVariant AccessibleValue::minimumStepSize() const { return adjustable_.facts().step; }

QStringList AccessibleValue::actionNames() const {
    return QStringList{increaseAction(), decreaseAction(), pressAction()} + QAccessibleWidget::actionNames();
}

void AccessibleValue::doAction(const QString &name) {
    if (name == increaseAction()) return adjustable_.stepFromOutside(1);
    if (name == decreaseAction()) return adjustable_.stepFromOutside(-1);
    if (name == pressAction()) return adjustable_.openFromOutside();
    QAccessibleWidget::doAction(name);
}

// It is asked for before the button has been told all that it is.
QAccessible::Role AccessibleButton::role() const {
    if (!button().isCheckable()) return QAccessible::Button;
    return button().autoExclusive() ? QAccessible::RadioButton : QAccessible::CheckBox;
}

QString AccessibleButton::text(QAccessible::Text kind) const {
    const QString given = QAccessibleWidget::text(kind);
    return kind == QAccessible::Name && given.isEmpty() ? button().text() : given;
}

QAccessible::State AccessibleButton::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.checkable = button().isCheckable();
    state.checked = button().isChecked();
    state.pressed = button().isDown();
    return state;
}

QStringList AccessibleButton::actionNames() const {
    if (!widget()->isEnabled()) return QAccessibleWidget::actionNames();
    return QStringList{button().isCheckable() ? toggleAction() : pressAction()} + QAccessibleWidget::actionNames();
}

void AccessibleButton::doAction(const QString &name) {
    if (name == pressAction() || name == toggleAction()) return button().click();
    QAccessibleWidget::doAction(name);
}

void *AccessiblePicture::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QString AccessiblePicture::text(QAccessible::Text kind) const {
    return kind == QAccessible::Value ? shownText() : QAccessibleWidget::text(kind);
}

}  // namespace kiv
