#include "Editor/Views/Choices.h"

#include <QKeyEvent>
#include <QPainter>

#include "Editor/Views/FocusRing.h"

namespace kiv {

template <class Toggle, ChoiceKind kind>
Choice<Toggle, kind>::Choice(ViewStyle &style, const QString &text, QWidget *parent) : Toggle(text, parent), style_(style) {
    this->setFocusPolicy(Qt::TabFocus);
    this->setAttribute(Qt::WA_Hover);
    styleChanges_ = style.changed.add([this](const ViewStyle &) {
        this->updateGeometry();
        this->update();
    });
}

template <class Toggle, ChoiceKind kind>
QSize Choice<Toggle, kind>::sizeHint() const {
    return {choiceWidth({.kind = kind}, this->text(), style_), choiceHeight(style_)};
}

template <class Toggle, ChoiceKind kind>
void Choice<Toggle, kind>::resizeEvent(QResizeEvent *) {
    FocusRing::setPlace(*this, choiceMark(this->rect()));
}

template <class Toggle, ChoiceKind kind>
void Choice<Toggle, kind>::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const ChoiceLook look{kind, this->isChecked(), this->underMouse(), this->isDown(), this->isEnabled()};
    paintChoice(painter, this->rect(), look, this->text(), style_);
}

template <class Toggle, ChoiceKind kind>
void Choice<Toggle, kind>::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return this->click();
    Toggle::keyPressEvent(event);
}

template class Choice<QCheckBox, ChoiceKind::check>;
template class Choice<QRadioButton, ChoiceKind::radio>;

}  // namespace kiv
