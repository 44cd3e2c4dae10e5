#include "Editor/Views/StretchSheet.h"

#include <QPainter>

#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/StretchSheetPainter.h"

namespace kiv {

StretchSheet::StretchSheet(AudioEditorModel &model, ViewStyle &style, QWidget *parent)
    : Sheet(style, parent),
      model_(model),
      segments_(new Segments(style, ButtonKind::sheet, {onScreen("Clean"), onScreen("Cyclic")}, this)),
      auto_(new Button(style, ButtonKind::sheet, this)),
      apply_(new Button(style, ButtonKind::sheetDefault, this)),
      cancel_(new Button(style, ButtonKind::sheet, this)) {
    auto_->setSegment(true);
    auto_->setCorners(Corners::right);
    auto_->setLabelAndText({}, onScreen("Auto"));
    apply_->setLabelAndText({}, onScreen("Apply"));
    cancel_->setLabelAndText({}, onScreen("Cancel"));
    for (const StretchNumber &number : stretchNumbers) connectField(number.field);
    QList<QWidget *> seen{segments_};
    for (Field *each : fields_) seen.append(each);
    readInOrder(seen << auto_ << cancel_ << apply_);
    connectControls();
    modelChanges_ = model.observers.add([this](const Changes &changes) {
        if (changes.containsAny({Change::dialog, Change::audio, Change::selection, Change::timeUnit})) refresh();
    });
    setAccessibleName(onScreen("Pitch / Time"));
    segments_->setAccessibleName(onScreen("Mode"));
    refresh();
}

void StretchSheet::connectControls() {
    connect(apply_, &QPushButton::clicked, this, [this] { confirm(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { cancel(); });
    connect(auto_, &QPushButton::clicked, this, [this] {
        typing_.reset();
        findStretchCycle(model_);
    });
    segments_->onChosen = [this](int index) { setStretchMode(model_, index == 0 ? StretchMode::clean : StretchMode::s950); };
}

void StretchSheet::connectField(StretchField which) {
    const StretchNumber &number = row(which);
    auto *made = fields_[std::size_t(which)] = new Field(style(), FieldContent::number, this);
    made->setUnit(onScreen(number.unit));
    made->setType(13, QFont::DemiBold);
    made->setAccessibleName(onScreen(number.label));
    if (which == StretchField::cycle) made->setCorners(Corners::left);
    connect(made, &QLineEdit::textEdited, this, [this, which](const QString &typed) { typeInto(which, typed, false); });
    connect(made, &QLineEdit::editingFinished, this, [this, which] { endTyping(which); });
    made->onEnter = [this] { confirm(); };
    made->onEscape = [this] { cancel(); };
    made->onStep = [this, which](int steps, bool isSmall) {
        typing_.reset();
        stepStretchNumber(model_, which, steps, isSmall);
    };
}

void StretchSheet::typeInto(StretchField which, const QString &typed, bool typedAhead) {
    typing_ = latest_ = which;
    typeStretchNumber(model_, which, typed.toStdString(), typedAhead);
}

// What cannot be read stays, to be put right.
void StretchSheet::endTyping(StretchField which) {
    if (typing_ != which || !scene_.isReadable) return;
    typing_.reset();
    model_.setDialogText({}, false);
}

void StretchSheet::refresh() {
    if (model_.state().dialog != Dialog::timeStretch) return;
    const bool wasCyclic = scene_.isCyclic;
    scene_ = stretchSheetScene(model_.state());
    segments_->setChosen(scene_.isCyclic ? 1 : 0);
    for (const StretchNumber &number : stretchNumbers) {
        Field &shown = field(number.field);
        shown.setVisible(isShown(number.field, model_.state().stretch.mode));
        if (typing_ != number.field) shown.setText(onScreen(scene_.numbers[std::size_t(number.field)]));
        shown.setReadable(typing_ != number.field || scene_.isReadable);
    }
    auto_->setVisible(scene_.isCyclic);
    apply_->setEnabled(scene_.isReadable);
    showTabRing();
    setAccessibleDescription(onScreen(scene_.target + ". Length " + scene_.lengthBefore + " → " + scene_.lengthAfter));
    if (wasCyclic != scene_.isCyclic && onSizeChanged) onSizeChanged();
    placeControls();
    update();
}

void StretchSheet::showTabRing() {
    QList<QWidget *> ring{segments_->button(segments_->chosen())};
    for (Field *each : fields_) ring.append(each);
    setTabRing(ring << auto_ << apply_ << cancel_);
}

void StretchSheet::confirm() {
    if (scene_.isReadable) AudioEditorEdits::confirmDialog(model_);
}

void StretchSheet::takeFocus() {
    field(latest_).setFocus(Qt::PopupFocusReason);
    field(latest_).selectAll();
}

bool StretchSheet::takeKey(const KeyPress &press) {
    if (!beginsNumber(press)) return Sheet::takeKey(press);
    const StretchField into = isShown(latest_, model_.state().stretch.mode) ? latest_ : StretchField::time;
    field(into).setFocus(Qt::PopupFocusReason);
    field(into).setText(onScreen(press.unmodified));
    typeInto(into, field(into).text(), true);
    return true;
}

StretchSheetGeometry StretchSheet::geometryFor(int width) const {
    return {model_.state().stretch.mode,
            width,
            {.textFactor = style().textFactor(),
             .titleHeight = style().grown(20),
             .labelHeight = style().grown(16),
             .controlHeight = buttonHeight(ButtonKind::sheet, style()),
             .segmentsWidth = segments_->sizeHint().width(),
             .autoWidth = auto_->sizeHint().width(),
             .buttonsWidth = apply_->sizeHint().width() + cancel_->sizeHint().width() + 8,
             .lengthWidth = stretchLengthWidth(scene_, style())}};
}

QSize StretchSheet::sizeFor(int width) const { return QSize(geometryFor(width).width(), geometryFor(width).height()); }

void StretchSheet::placeControls() {
    const StretchSheetGeometry geometry = geometryFor(width());
    segments_->setGeometry(toRect(geometry.segments()));
    for (const StretchNumber &number : stretchNumbers)
        if (const auto box = geometry.field(number.field))
            field(number.field).setGeometry(toRect(*box).adjusted(-Field::frame, -Field::frame, Field::frame, Field::frame));
    if (const auto box = geometry.autoButton()) auto_->setGeometry(toRect(*box));
    placeButtons({apply_, cancel_}, width() - padding, geometry.buttonsTop());
}

void StretchSheet::paintEvent(QPaintEvent *event) {
    Sheet::paintEvent(event);
    QPainter painter(this);
    paintStretchSheet(painter, geometryFor(width()), scene_, style());
}

}  // namespace kiv
