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
    inPlace_.onChanged = [this] { update(); };
    inPlace_.onEntered = [this](const std::string &typed) { return !onEntered || onEntered(typed); };
    inPlace_.onLeft = [this] {
        if (onLeft) onLeft();
    };
}

void ValueButton::setType(int pixels, QFont::Weight weight) {
    pixels_ = pixels;
    weight_ = weight;
    update();
}

void ValueButton::setValue(const QString &text) {
    if (text == value_) return;
    value_ = text;
    // For those who cannot see it; its name is what the number means.
    setText(text);
    setAccessibleDescription(text);
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
    if (isEditing() || !isEnabled()) return;
    auto *field = new Field(style_, FieldContent::number, parentWidget());
    field->setType(pixels_, weight_);
    field->setPadding(fieldPadding(pixels_));
    field->setBackground(style_.colors()[Role::waveBg]);
    field->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    field->setGeometry(fieldPlace());
    inPlace_.open(field, value_);
}

void ValueButton::paintEvent(QPaintEvent *) {
    if (isEditing()) return;
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
