#include "Editor/Views/Knob.h"

#include <QPainter>
#include <cmath>

#include "Editor/Surfaces/KnobGeometry.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/DigitText.h"
#include "Editor/Views/FocusRing.h"

namespace kiv {

namespace {

constexpr double pixelsPerRange = 200;
constexpr double stepsPerRange = 100;
constexpr double smallStep = 0.1;
constexpr int textHeight = 14;
constexpr int fieldHeight = 22, fieldPadding = 4;

}  // namespace

Knob::Knob(ViewStyle &style, QWidget *parent)
    : ValueControl(style, parent, pixelsPerRange / stepsPerRange, Stepping::continuous) {
    input().onStep = [this](double steps, bool isSmall) {
        if (onTurn) onTurn(steps * (isSmall ? smallStep : 1) / stepsPerRange);
    };
}

void Knob::setScene(const KnobScene &scene) {
    if (scene == scene_) return;
    const bool isOtherValue = scene.facts != scene_.facts || scene.text != scene_.text;
    scene_ = scene;
    setAccessibleName(onScreen(scene.name));
    isOtherValue ? tellValueChanged() : update();
}

void Knob::setGround(Rgba ground) {
    ground_ = ground;
    update();
}

QString Knob::valueText() const { return onScreen(scene_.text); }

QSize Knob::sizeHint() const {
    const double text = digitTextWidth(style().font(11), valueText());
    return {std::max(KnobGeometry::width, int(std::ceil(text))), KnobGeometry::height + style().grown(textHeight)};
}

QRect Knob::knobBox() const { return {(width() - KnobGeometry::width) / 2, 0, KnobGeometry::width, KnobGeometry::height}; }

QRect Knob::textLine() const { return {0, KnobGeometry::height, width(), height() - KnobGeometry::height}; }

void Knob::resizeEvent(QResizeEvent *) { FocusRing::setPlace(*this, knobBox()); }

void Knob::openField(const QString &typed) {
    if (inPlace().isOpen() || !isEnabled()) return;
    auto *field = new Field(style(), FieldContent::number, parentWidget());
    field->setType(11, QFont::Normal);
    field->setPadding(fieldPadding);
    field->setAlignment(Qt::AlignCenter);
    QRect place(0, 0, std::max(64, width()), style().grown(fieldHeight) + 2 * Field::frame);
    place.moveCenter(textLine().center() + pos());
    field->setGeometry(place);
    inPlace().open(field, valueText(), typed);
}

void Knob::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const KnobLook look{
        .isHovered = underMouse(), .isDragged = input().isDragging(), .isEnabled = isEnabled(), .ground = ground_};
    paintKnob(painter, knobBox(), scene_, look, style());
    if (!inPlace().isOpen()) paintKnobText(painter, textLine(), scene_, look, style());
}

}  // namespace kiv
