#include "Editor/Views/LevelSheet.h"

#include <QPainter>
#include <cmath>

#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/Surfaces/DecibelText.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/DigitText.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int sheetWidth = 480;
constexpr int fieldWidth = 96;
constexpr int tickToField = 28;
constexpr int titleLine = 20;

}  // namespace

LevelSheet::LevelSheet(AudioEditorModel &model, Dialog dialog, ViewStyle &style, QWidget *parent)
    : Sheet(style, parent),
      model_(model),
      dialog_(dialog),
      slider_(new LevelSliderView(style, levelSlider(dialog), this)),
      field_(new Field(style, FieldContent::number, this)),
      apply_(new Button(style, ButtonKind::sheetDefault, this)),
      cancel_(new Button(style, ButtonKind::sheet, this)) {
    field_->setUnit("dB");
    field_->setType(15, QFont::DemiBold);
    apply_->setLabelAndText({}, "Apply");
    cancel_->setLabelAndText({}, "Cancel");
    setTabRing({field_, slider_, apply_, cancel_});
    readInOrder({slider_, field_, cancel_, apply_});
    connectControls();
    modelChanges_ = model.observers.add([this](const Changes &changes) {
        if (changes.containsAny({Change::dialog, Change::audio, Change::selection, Change::timeUnit})) refresh();
    });
    refresh();
}

void LevelSheet::connectControls() {
    connect(apply_, &QPushButton::clicked, this, [this] { confirm(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { cancel(); });
    connect(field_, &QLineEdit::textEdited, this, [this](const QString &typed) {
        isTyping_ = true;
        typeDialogLevel(model_, dialog_, typed.toStdString(), false);
    });
    connect(field_, &QLineEdit::editingFinished, this, [this] { finishTyping(); });
    field_->onEnter = [this] { confirm(); };
    field_->onEscape = [this] { cancel(); };
    field_->onStep = slider_->onStep = [this](int steps, bool isSmall) { step(steps, isSmall); };
    slider_->onLevel = [this](double db) {
        isTyping_ = false;
        setDialogLevel(model_, dialog_, db);
    };
}

// What has been typed and left is written as numbers are; what cannot be read stays to be mended.
void LevelSheet::finishTyping() {
    if (!scene_.isReadable || field_->hasFocus()) return;
    isTyping_ = false;
    refresh();
}

void LevelSheet::step(int steps, bool isSmall) {
    isTyping_ = false;
    stepDialogLevel(model_, dialog_, steps * (isSmall ? levelSmallStepDb : levelStepDb));
}

float LevelSheet::peak() {
    const AudioEditorState &state = model_.state();
    const auto range = model_.activeRange();
    if (measured_.generation != state.generation || measured_.range != range)
        measured_ = {state.generation, range, range ? peakOfRange(state.buffer, state.peaks, *range) : 0.0f};
    return measured_.peak;
}

void LevelSheet::refresh() {
    if (model_.state().dialog != dialog_) return;
    scene_ = levelSheetScene(model_.state(), dialog_, peak());
    slider_->setLevel(scene_.value);
    if (!isTyping_) field_->setText(onScreen(decibelNumber(scene_.value)));
    field_->setReadable(scene_.isReadable);
    apply_->setEnabled(scene_.isReadable);
    setAccessibleName(onScreen(scene_.title));
    setAccessibleDescription(
        onScreen(scene_.target + ". Peak " + scene_.peakBefore + " → " + scene_.peakAfter + " " + scene_.note));
    slider_->setAccessibleName(onScreen(scene_.title));
    field_->setAccessibleName(onScreen(scene_.title));
    update();
}

void LevelSheet::confirm() {
    if (scene_.isReadable) AudioEditorEdits::confirmDialog(model_);
}

void LevelSheet::takeFocus() {
    field_->setFocus(Qt::PopupFocusReason);
    field_->selectAll();
}

bool LevelSheet::takeKey(const KeyPress &press) {
    if (!beginsNumber(press)) return Sheet::takeKey(press);
    field_->setFocus(Qt::PopupFocusReason);
    field_->setText(onScreen(press.unmodified));
    isTyping_ = true;
    typeDialogLevel(model_, dialog_, press.unmodified, true);
    return true;
}

int LevelSheet::rowTop() const { return padding + style().grown(titleLine) + padding; }

// "Peak −1.0 dB → +2.0 dB  over full scale"; measures only, without a painter. Returns the right end.
double LevelSheet::paintPeak(QPainter *painter, double x, const QRectF &row) const {
    const ThemeColors &colors = style().colors();
    const Rgba outcome = scene_.isOver ? colors.over : colors[Role::dialogText];
    const auto part = [&](const std::string &words, QFont::Weight weight, Rgba color, double after) {
        const QFont font = style().font(13, weight);
        const double width = digitTextWidth(font, onScreen(words));
        if (painter)
            drawText(*painter, QRectF(x, row.top(), width + 2, row.height()), Qt::AlignLeft, font, color, onScreen(words));
        x += width + after;
    };
    part("Peak", QFont::Normal, colors.dialogDim, 8);
    part(scene_.peakBefore + " →", QFont::Normal, colors[Role::dialogText], 4);
    part(scene_.peakAfter, QFont::DemiBold, outcome, 8);
    if (!scene_.note.empty()) part(scene_.note, QFont::Normal, scene_.isOver ? colors.over : colors.dialogDim, 0);
    return x;
}

bool LevelSheet::needsTwoRows(int width) const {
    const int buttons = apply_->sizeHint().width() + cancel_->sizeHint().width() + 8;
    return paintPeak(nullptr, padding, {}) + 8 > width - padding - buttons;
}

QSize LevelSheet::sizeFor(int width) const {
    const int chosen = std::min(int(std::lround(sheetWidth * style().textFactor())), width);
    const int button = buttonHeight(ButtonKind::sheet, style());
    const int rows = button + (needsTwoRows(chosen) ? style().grown(24) + 8 : 0);
    return {chosen, rowTop() + style().grown(32) + 20 + rows + padding};
}

void LevelSheet::resizeEvent(QResizeEvent *) {
    const int fieldBox = int(std::lround(fieldWidth * style().textFactor()));
    const QRect box(width() - padding - fieldBox, rowTop(), fieldBox, style().grown(32));
    field_->setGeometry(box.adjusted(-Field::frame, -Field::frame, Field::frame, Field::frame));
    const int firstTick = padding + 4;
    const int left = firstTick - LevelSliderView::beside, right = box.left() - tickToField + LevelSliderView::beside;
    slider_->setGeometry(left, rowTop() - 4, right - left, LevelSliderView::heightFor(style()));
    placeButtons({apply_, cancel_}, width() - padding, height() - padding - apply_->sizeHint().height());
}

void LevelSheet::paintEvent(QPaintEvent *event) {
    Sheet::paintEvent(event);
    QPainter painter(this);
    const ThemeColors &colors = style().colors();
    const QRectF title(padding, padding, width() - 2 * padding, style().grown(titleLine));
    drawText(painter, title, Qt::AlignLeft, style().font(15, QFont::DemiBold), colors[Role::dialogText],
             onScreen(scene_.title));
    drawText(painter, title, Qt::AlignRight, style().font(13), colors.dialogDim, onScreen(scene_.target));
    const double top = rowTop() + style().grown(32) + 20;
    const double rowHeight = needsTwoRows(width()) ? style().grown(24) : apply_->height();
    paintPeak(&painter, padding, QRectF(0, top, width(), rowHeight));
}

}  // namespace kiv
