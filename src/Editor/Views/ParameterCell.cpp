#include "Editor/Views/ParameterCell.h"

#include <QPainter>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/FocusRing.h"

namespace kiv {

void ParameterCell::setScene(const ParameterCellScene &scene) {
    if (scene == scene_) return;
    const bool isOtherValue = scene.facts != scene_.facts || scene.text() != scene_.text();
    scene_ = scene;
    setAccessibleName(onScreen(scene.label));
    isOtherValue ? tellValueChanged() : update();
}

QString ParameterCell::valueText() const {
    return onScreen(scene_.second.empty() ? scene_.text() : scene_.text() + " " + scene_.second);
}

QSize ParameterCell::sizeHint() const {
    return {parameterCellWidth(scene_, style()) + 2 * frame, parameterCellHeight(style()) + 2 * frame};
}

void ParameterCell::resizeEvent(QResizeEvent *) { FocusRing::setPlace(*this, box()); }

void ParameterCell::openField(const QString &typed) {
    if (inPlace().isOpen() || !isEnabled()) return;
    auto *field = new Field(style(), FieldContent::number, this);
    field->setBare(true);
    field->setUnit(onScreen(scene_.unit));
    field->setType(13, QFont::DemiBold);
    field->setGround(AudioEditorThemeColor::waveBg);
    field->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    field->setGeometry(parameterCellValuePlace(box(), style()).toRect().adjusted(0, -1, 0, 1));
    inPlace().open(field, onScreen(scene_.value), typed);
}

void ParameterCell::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const Field *field = inPlace().field();
    paintParameterCell(painter, box(), scene_,
                       {.isHovered = underMouse() || hasFocus(),
                        .isDragged = input().isDragging(),
                        .isTyping = field != nullptr,
                        .isReadable = !field || field->isReadable(),
                        .isEnabled = isEnabled()},
                       style());
}

}  // namespace kiv
