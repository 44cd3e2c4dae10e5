#include "Editor/Views/StretchSheet.h"

#include <QPainter>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

}  // namespace

StretchSheet::StretchSheet(AudioEditorModel &model, ViewStyle &style, QWidget *parent)
    : DialogSheet(model, Dialog::timeStretch, {"Pitch / Time", "Apply"}, style, parent),
      segments_(new Segments(style, ButtonKind::sheet, {onScreen("Clean"), onScreen("Cyclic")}, this)),
      auto_(new Button(style, ButtonKind::sheet, this)) {
    auto_->setSegment(true);
    auto_->setCorners(Corners::right);
    auto_->setLabelAndText({}, onScreen("Auto"));
    auto_->setToolTip(onScreen("A cycle that suits the sound"));
    segments_->setAccessibleName(onScreen("Mode"));
    segments_->button(0)->setToolTip(onScreen("Keeps the sound's own waves: for all material"));
    segments_->button(1)->setToolTip(onScreen("Repeats grains of a fixed length, as early samplers did"));
    for (const StretchNumber &number : stretchNumbers) makeField(number);
    connect(auto_, &QPushButton::clicked, this, [this] {
        typing_.reset();
        findStretchCycle(this->model());
    });
    segments_->onChosen = [this](int index) {
        setStretchMode(this->model(), index == 0 ? StretchMode::clean : StretchMode::s950);
    };
    refresh();
}

void StretchSheet::makeField(const StretchNumber &number) {
    const StretchField which = number.field;
    auto *made = fields_[std::size_t(which)] = new Field(style(), FieldContent::number, this);
    made->setUnit(onScreen(number.unit));
    made->setType(13, QFont::DemiBold);
    made->setAccessibleName(onScreen(number.label));
    const auto withUnit = [&](const std::string &text) { return text + " " + number.unit; };
    made->setToolTip(stepHelp(withUnit(std::to_string(number.step)), withUnit(std::to_string(number.smallStep)),
                              withUnit(stretchNumberText({}, which))));
    if (which == StretchField::cycle) made->setCorners(Corners::left);
    connect(made, &QLineEdit::textEdited, this, [this, which](const QString &typed) { typeInto(which, typed, false); });
    connect(made, &QLineEdit::editingFinished, this, [this, which] { endTyping(which); });
    made->onEnter = [this] { confirm(); };
    made->onEscape = [this] { cancel(); };
    connectInput(which);
}

void StretchSheet::connectInput(StretchField which) {
    ValueInput &input = field(which).input();
    const auto set = [this, which](int value) {
        typing_.reset();
        setStretchNumber(model(), which, value);
    };
    input.onStep = [this, which](double steps, bool isSmall) {
        typing_.reset();
        stepStretchNumber(model(), which, int(steps), isSmall);
    };
    input.onReset = [set, which] { set(StretchSettings{}.*row(which).value); };
    restoreWhenCancelled(
        input, [this, which] { return model().state().stretch.*row(which).value; }, set);
}

void StretchSheet::typeInto(StretchField which, const QString &typed, bool typedAhead) {
    typing_ = latest_ = which;
    typeStretchNumber(model(), which, typed.toStdString(), typedAhead);
}

// What cannot be read stays, to be put right.
void StretchSheet::endTyping(StretchField which) {
    if (typing_ != which || !scene_.isReadable) return;
    typing_.reset();
    model().setDialogText({}, false);
}

void StretchSheet::refresh() {
    const bool wasCyclic = scene_.isCyclic;
    scene_ = stretchSheetScene(model().state());
    segments_->setChosen(scene_.isCyclic ? 1 : 0);
    for (const StretchNumber &number : stretchNumbers) {
        Field &shown = field(number.field);
        shown.setVisible(isShown(number.field, model().state().stretch.mode));
        if (typing_ != number.field) shown.setText(onScreen(scene_.numbers[std::size_t(number.field)]));
        shown.setReadable(typing_ != number.field || scene_.isReadable);
    }
    auto_->setVisible(scene_.isCyclic);
    showOrder();
    setAccessibleDescription(onScreen(scene_.target + ". Length " + scene_.lengthBefore + " → " + scene_.lengthAfter));
    if (wasCyclic != scene_.isCyclic && onSizeChanged) onSizeChanged();
    layOut(scene_.target, scene_.isReadable);
}

void StretchSheet::showOrder() {
    QList<QWidget *> numbers;
    for (Field *each : fields_) numbers.append(each);
    numbers.append(auto_);
    setOrder(QList<QWidget *>{segments_->button(segments_->chosen())} + numbers, QList<QWidget *>{segments_} + numbers);
}

void StretchSheet::takeFocus() {
    field(latest_).setFocus(Qt::PopupFocusReason);
    field(latest_).selectAll();
}

bool StretchSheet::takeKey(const KeyPress &press) {
    if (!beginsNumber(press)) return Sheet::takeKey(press);
    const StretchField into = isShown(latest_, model().state().stretch.mode) ? latest_ : StretchField::time;
    field(into).setFocus(Qt::PopupFocusReason);
    field(into).setText(onScreen(press.unmodified));
    typeInto(into, field(into).text(), true);
    return true;
}

StretchSheetGeometry::Widths StretchSheet::widths() const { return {segments_->sizeHint().width(), auto_->sizeHint().width()}; }

StretchSheetGeometry StretchSheet::controls(int top, int width, const DialogSheetDistances &distances) const {
    return {model().state().stretch.mode, top, width, widths(), measures(), distances};
}

int StretchSheet::wishedWidth() const {
    return StretchSheetGeometry::wishedWidth(model().state().stretch.mode, widths(), measures());
}

int StretchSheet::bodyHeight(int width, const DialogSheetDistances &distances) const {
    return controls(0, width, distances).bottom();
}

void StretchSheet::placeBody(const QRect &body, const DialogSheetDistances &distances) {
    placed_ = controls(body.top(), body.width(), distances);
    segments_->setGeometry(toRect(placed_->segments()));
    for (const StretchNumber &number : stretchNumbers)
        if (const auto box = placed_->field(number.field))
            field(number.field).setGeometry(toRect(*box).adjusted(-Field::frame, -Field::frame, Field::frame, Field::frame));
    if (const auto box = placed_->autoButton()) auto_->setGeometry(toRect(*box));
}

void StretchSheet::paintBody(QPainter &painter) const {
    painter.setFont(style().font(12));
    painter.setPen(toColor(style().colors().dialogDim));
    const auto label = [&](const Box &control, const char *words) {
        painter.drawText(toRect(placed_->labelOver(control)), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip,
                         onScreen(words));
    };
    label(placed_->segments(), "Mode");
    for (const StretchNumber &number : stretchNumbers)
        if (const auto box = placed_->field(number.field)) label(*box, number.label);
}

int StretchSheet::paintNote(QPainter *painter, const QRectF &row) const {
    const Rgba text = style().colors()[Role::dialogText];
    return paintWords(painter, row,
                      {{"Length", QFont::Normal, style().colors().dialogDim, 8},
                       {scene_.lengthBefore + " →", QFont::Normal, text, 4},
                       {scene_.lengthAfter, QFont::DemiBold, text, 0}});
}

}  // namespace kiv
