#include "Editor/Views/Field.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <QPalette>
#include <QValidator>
#include <cmath>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/FieldPainter.h"
#include "Editor/Views/Menu.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int beforeUnit = 6;

// Numbers are shown with the minus sign from the moment it is typed, pasted or dropped; any text is acceptable.
class TrueMinus : public QValidator {
public:
    using QValidator::QValidator;
    State validate(QString &text, int &) const override {
        text.replace('-', QChar(0x2212));
        return Acceptable;
    }
};

}  // namespace

Field::Field(ViewStyle &style, FieldContent content, QWidget *parent) : QLineEdit(parent), style_(style), content_(content) {
    setFrame(false);
    if (isNumber()) setValidator(new TrueMinus(this));
    setAttribute(Qt::WA_MacShowFocusRect, false);
    setAlignment((isNumber() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    styleChanges_ = style.changed.add([this](const ViewStyle &) { applyStyle(); });
    applyStyle();
}

void Field::setUnit(const QString &unit) {
    unit_ = unit;
    applyStyle();
}

void Field::setType(int pixels, QFont::Weight weight) {
    pixels_ = pixels;
    weight_ = weight;
    applyStyle();
}

void Field::setPadding(int padding) {
    padding_ = padding;
    applyStyle();
}

void Field::setGround(AudioEditorThemeColor ground) {
    ground_ = ground;
    applyStyle();
}

void Field::setCorners(Corners corners) {
    corners_ = corners;
    update();
}

void Field::setReadable(bool isReadable) {
    if (isReadable == isReadable_) return;
    isReadable_ = isReadable;
    update();
}

void Field::setBare(bool isBare) {
    isBare_ = isBare;
    applyStyle();
}

void Field::applyStyle() {
    setFont(style_.font(pixels_, weight_));
    const double unit = unit_.isEmpty() ? 0 : QFontMetricsF(style_.font(pixels_)).horizontalAdvance(unit_) + beforeUnit;
    if (isBare_)
        setTextMargins(-2, 0, -2, 0);
    else
        setTextMargins(frame + padding_ - 2, frame, frame + padding_ - 2 + int(std::lround(unit)), frame);
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, style_.color(ground_ ? Role::topbarButtonText : Role::dialogText));
    colors.setColor(QPalette::Highlight, style_.color(Role::accentBg));
    colors.setColor(QPalette::HighlightedText, style_.color(Role::accentFg));
    setPalette(colors);
}

// At the right, or where what is typed has no box of its own, after it.
void Field::paintUnit(QPainter &painter) const {
    const QRectF box = QRectF(rect()).adjusted(frame, frame, -frame, -frame);
    const double text = QFontMetricsF(font()).horizontalAdvance(displayText()) + beforeUnit;
    const QRectF place = isBare_ ? rect().adjusted(int(text), 0, 0, 0) : box.adjusted(padding_, 0, -padding_, 0);
    painter.setFont(style_.font(pixels_));
    painter.setPen(input_.isDragging() ? style_.color(Role::accentFg)
                                       : toColor(ground_ ? style_.colors().dim : style_.colors().dialogDim));
    painter.drawText(place, (isBare_ ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter, unit_);
}

// The number where the toolkit would write it, in the colour that stands on the accent.
void Field::paintDragged(QPainter &painter) const {
    constexpr int toolkitsMargin = 2, cursorWidth = 2;
    const QMargins text = textMargins();
    const QRect place = rect().adjusted(0, text.top(), -text.right() - toolkitsMargin - cursorWidth, -text.bottom());
    painter.setFont(font());
    painter.setPen(style_.color(Role::accentFg));
    painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter | Qt::TextDontClip, displayText());
}

void Field::paintEvent(QPaintEvent *event) {
    {
        QPainter painter(this);
        const QRectF box = QRectF(rect()).adjusted(frame, frame, -frame, -frame);
        const auto ground = ground_ ? std::optional(style_.colors()[*ground_]) : std::nullopt;
        const bool isDragged = input_.isDragging();
        if (!isBare_) paintFieldBox(painter, box, {hasFocus(), isReadable_, isEnabled(), isDragged, corners_, ground}, style_);
        paintUnit(painter);
        if (isDragged) return paintDragged(painter);
    }
    QLineEdit::paintEvent(event);
}

// A press is the text's as well, for it may be the beginning of a choice of text.
bool Field::event(QEvent *event) {
    const bool isTaken = input_.onStep && events_.take(*event);
    const bool isShared = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease;
    return (isTaken && !isShared) || QLineEdit::event(event);
}

void Field::keyPressEvent(QKeyEvent *event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (onEnter) return onEnter();
            break;
        case Qt::Key_Escape:
            if (onEscape) return onEscape();
            break;
        default:
            break;
    }
    QLineEdit::keyPressEvent(event);
}

void Field::contextMenuEvent(QContextMenuEvent *event) {
    auto *menu = new Menu(style_, this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](const char *text, bool isEnabled, auto act) {
        menu->addAction(onScreen(text), this, act)->setEnabled(isEnabled);
    };
    add("Cut", hasSelectedText(), [this] { cut(); });
    add("Copy", hasSelectedText(), [this] { copy(); });
    add("Paste", true, [this] { paste(); });
    menu->addSeparator();
    add("Select All", !text().isEmpty(), [this] { selectAll(); });
    menu->popup(event->globalPos());
}

}  // namespace kiv
