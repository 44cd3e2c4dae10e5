#include "Editor/Views/InPlaceField.h"

#include <QEvent>

namespace kiv {

void InPlaceField::open(Field *field, const QString &text, const QString &typed) {
    field_ = field;
    wasPressed_ = false;
    field->installEventFilter(this);
    field->setAccessibleName(control_.accessibleName());
    field->setText(typed.isEmpty() ? text : typed);
    field->onEnter = [this] { enter(); };
    field->onEscape = [this] { close(); };
    connect(field, &QLineEdit::textEdited, this, [this, field] {
        field->setReadable(true);
        tell();
    });
    connect(field, &QLineEdit::editingFinished, this, [this] {
        if (field_ && !field_->hasFocus()) close();
    });
    field->show();
    field->raise();
    field->setFocus(Qt::PopupFocusReason);
    if (typed.isEmpty()) field->selectAll();
    tell();
}

bool InPlaceField::eventFilter(QObject *watched, QEvent *event) {
    if (watched != field_) return false;
    if (event->type() == QEvent::MouseButtonPress) wasPressed_ = true;
    if (event->type() != QEvent::MouseButtonDblClick || wasPressed_ || !onDoubleClick) return false;
    close();
    onDoubleClick();
    return true;
}

void InPlaceField::enter() {
    if (!onEntered || onEntered(field_->text().toStdString())) return close();
    field_->setReadable(false);
    tell();
}

void InPlaceField::close() {
    const QPointer<Field> field = std::exchange(field_, nullptr);
    if (!field) return;
    const bool hadFocus = field->hasFocus();
    field->hide();
    field->deleteLater();
    tell();
    if (hadFocus && onLeft) onLeft();
}

void InPlaceField::tell() const {
    if (onChanged) onChanged();
}

}  // namespace kiv
