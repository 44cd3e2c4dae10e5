#include "Editor/Views/ValueReadout.h"

#include <QEvent>
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

ValueReadout::ValueReadout(ViewStyle &style, QWidget *parent) : ValueControl(style, parent) {
    inPlace().onDoubleClick = [this] { input().doubleClick(); };
}

void ValueReadout::setType(int pixels, QFont::Weight weight) {
    pixels_ = pixels;
    weight_ = weight;
    update();
}

void ValueReadout::setValue(const QString &text, const ValueFacts &facts) {
    facts_ = facts;
    if (text == value_) return;
    value_ = text;
    tellValueChanged();
}

int ValueReadout::textWidth() const { return int(std::ceil(digitTextWidth(style().font(pixels_, weight_), value_))); }

QRect ValueReadout::fieldPlace() const {
    const int height = std::min(style().grown(isLarge(pixels_) ? 32 : 22), parentWidget()->height());
    const int around = fieldPadding(pixels_) + Field::frame;
    const int wanted = std::max(width() - 2 * reach, textWidth()) + 2 * around;
    QRect place(x() + reach - around, geometry().center().y() - height / 2 + 1, wanted, height);
    place.moveLeft(std::max(0, place.left()));
    return place;
}

void ValueReadout::openField(const QString &typed) {
    if (inPlace().isOpen() || !isEnabled()) return;
    auto *field = new Field(style(), FieldContent::number, parentWidget());
    field->setType(pixels_, weight_);
    field->setPadding(fieldPadding(pixels_));
    field->setGround(Role::waveBg);
    field->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    field->setGeometry(fieldPlace());
    inPlace().open(field, value_, typed);
}

// The second of two quick clicks goes to the field that the first one has opened. One that comes here comes after that has
// closed.
bool ValueReadout::event(QEvent *event) {
    if (event->type() != QEvent::MouseButtonDblClick) return ValueControl::event(event);
    clicked();
    return true;
}

void ValueReadout::paintEvent(QPaintEvent *) {
    if (inPlace().isOpen()) return;
    QPainter painter(this);
    const ThemeColors &colors = style().colors();
    const bool isDragged = input().isDragging();
    if (isDragged || (isEnabled() && underMouse())) {
        const int inset = isLarge(pixels_) ? 0 : 4;
        paintBox(painter, rect().adjusted(0, inset, 0, -inset), 4, toColor(isDragged ? colors[Role::accentBg] : colors.hover));
    }
    const Rgba text = isDragged ? colors[Role::accentFg] : isEnabled() ? colors[Role::topbarButtonText] : colors.disabled;
    paintDigitText(painter, rect().adjusted(reach, 0, 0, 0), Qt::AlignLeft, style().font(pixels_, weight_), toColor(text),
                   value_);
}

void connectInfoField(ValueReadout &readout, AudioEditorModel &model, InfoField field) {
    connectInfoField(readout.input(), model, field);
    readout.inPlace().onEntered = [&model, field](const std::string &typed) { return typeInfoField(model, field, typed); };
    readout.onValue = [&model, field](double value) { setInfoFieldInUnit(model, field, value); };
}

}  // namespace kiv
