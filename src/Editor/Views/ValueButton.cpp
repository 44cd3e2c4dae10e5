#include "Editor/Views/ValueButton.h"

#include <QKeyEvent>
#include <QPainter>
#include <cmath>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/DigitText.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

// What the field adds on either side of the number: small ones have a label close before them.
bool isLarge(int pixels) { return pixels > 15; }
int fieldPadding(int pixels) { return isLarge(pixels) ? 10 : 3; }

}  // namespace

ValueButton::ValueButton(ViewStyle &style, QWidget *parent) : QPushButton(parent), style_(style) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    connect(this, &QPushButton::clicked, this, [this] { edit(); });
}

void ValueButton::setType(int pixels, QFont::Weight weight) {
    pixels_ = pixels;
    weight_ = weight;
    update();
}

void ValueButton::setValue(const QString &text) {
    if (text == value_) return;
    value_ = text;
    setText(text);  // for those who cannot see it
    update();
}

int ValueButton::textWidth() const { return int(std::ceil(digitTextWidth(style_.font(pixels_, weight_), value_))); }

QRect ValueButton::fieldPlace() const {
    const int height = std::min(style_.grown(isLarge(pixels_) ? 32 : 22), parentWidget()->height());
    const int around = fieldPadding(pixels_) + Field::frame;
    const int wanted = std::max(width() - 2 * reach, textWidth()) + 2 * around;
    QRect place(x() + reach - around, geometry().center().y() - height / 2 + 1, wanted, height);
    place.moveLeft(std::max(0, place.left()));
    return place;
}

void ValueButton::edit() {
    if (field_ || !isEnabled()) return;
    field_ = new Field(style_, FieldContent::number, parentWidget());
    field_->setType(pixels_, weight_);
    field_->setPadding(fieldPadding(pixels_));
    field_->setBackground(style_.colors()[Role::waveBg]);
    field_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    field_->setAccessibleName(accessibleName());
    field_->setText(value_);
    field_->setGeometry(fieldPlace());
    field_->onEnter = [this] {
        if (!onEntered || onEntered(field_->text().toStdString()))
            endEditing();
        else
            field_->setReadable(false);
    };
    field_->onEscape = [this] { endEditing(); };
    connect(field_, &QLineEdit::textEdited, field_, [this] { field_->setReadable(true); });
    // Leaving it by the pointer or the Tab key drops what was typed, as Esc does.
    connect(field_, &QLineEdit::editingFinished, this, [this] {
        if (field_ && !field_->hasFocus()) endEditing();
    });
    field_->show();
    field_->raise();
    field_->setFocus(Qt::PopupFocusReason);
    field_->selectAll();
    update();
}

void ValueButton::endEditing() {
    Field *field = std::exchange(field_, nullptr);
    if (!field) return;
    const bool hadFocus = field->hasFocus();
    field->hide();
    field->deleteLater();
    update();
    if (hadFocus && onLeft) onLeft();
}

void ValueButton::paintEvent(QPaintEvent *) {
    if (field_) return;
    QPainter painter(this);
    const ThemeColors &colors = style_.colors();
    if (isEnabled() && underMouse()) {
        const int inset = isLarge(pixels_) ? 0 : 4;
        paintBox(painter, rect().adjusted(0, inset, 0, -inset), 4, toColor(colors.hover));
    }
    const QColor text = toColor(isEnabled() ? colors[Role::topbarButtonText] : colors.disabled);
    paintDigitText(painter, rect().adjusted(reach, 0, 0, 0), Qt::AlignLeft, style_.font(pixels_, weight_), text, value_);
}

void ValueButton::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return edit();
    QPushButton::keyPressEvent(event);
}

}  // namespace kiv
