#include "Editor/Views/Button.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace kiv {

Button::Button(const ViewStyle &style, ButtonKind kind, QWidget *parent) : QPushButton(parent), style_(style) {
    look_.kind = kind;
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setAutoDefault(false);
}

template <class T>
void Button::change(T ButtonLook::*field, const T &value) {
    if (look_.*field == value) return;
    look_.*field = value;
    update();
}

void Button::setIconName(std::string_view name) { change(&ButtonLook::icon, std::string(name)); }

void Button::setLabelAndText(const QString &label, const QString &text) {
    change(&ButtonLook::label, label);
    change(&ButtonLook::text, text);
    const QString all = label.isEmpty() ? text : label + ' ' + text;
    if (QPushButton::text() != all) setText(all);
}

void Button::setCorners(Corners corners) { change(&ButtonLook::corners, corners); }

void Button::setOver(bool isOver) { change(&ButtonLook::isOver, isOver); }

void Button::setOn(bool isOn) { change(&ButtonLook::isOn, isOn); }

void Button::setHasDigits(bool hasDigits) { change(&ButtonLook::hasDigits, hasDigits); }

void Button::setSegment(bool isSegment) { change(&ButtonLook::isSegment, isSegment); }

QSize Button::sizeHint() const { return {buttonWidth(look_, style_), buttonHeight(look_.kind, style_)}; }

void Button::paintEvent(QPaintEvent *) {
    ButtonLook look = look_;
    look.isEnabled = isEnabled();
    look.isHovered = underMouse();
    look.isPressed = isDown();
    look.isOn = look.isOn || (isCheckable() && isChecked());
    QPainter painter(this);
    paintButton(painter, rect(), look, style_);
}

void Button::keyPressEvent(QKeyEvent *event) {
    if (look_.isSegment && (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right)) return event->ignore();
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    // The chosen one of a row has nothing to press: Enter is for what the row stands in.
    if (isEnter && look_.isSegment && isChecked()) return event->ignore();
    if (isEnter) return click();
    QPushButton::keyPressEvent(event);
}

void Button::mousePressEvent(QMouseEvent *event) {
    QPushButton::mousePressEvent(event);
    event->accept();  // also the buttons that do nothing here: what lies beneath must not get them
}

}  // namespace kiv
