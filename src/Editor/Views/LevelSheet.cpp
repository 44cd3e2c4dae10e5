#include "Editor/Views/LevelSheet.h"

#include <algorithm>
#include <cmath>

#include "Editor/Surfaces/DecibelText.h"
#include "Editor/Views/CommandTarget.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int sheetWidth = 480;
constexpr int fieldWidth = 96;
constexpr int tickToField = 28;
constexpr int aboveField = 2, belowField = 4;

std::string withoutSign(double db) { return decibelText(db).substr(1); }

std::string titleOf(Dialog dialog) { return dialog == Dialog::gain ? "Gain" : "Normalize"; }

}  // namespace

LevelSheet::LevelSheet(AudioEditorModel &model, Dialog dialog, ViewStyle &style, QWidget *parent)
    : DialogSheet(model, dialog, {titleOf(dialog), "Apply"}, style, parent),
      dialog_(dialog),
      slider_(new LevelSliderView(style, levelSlider(dialog), this)),
      field_(new Field(style, FieldContent::number, this)) {
    field_->setUnit(onScreen("dB"));
    field_->setType(15, QFont::DemiBold);
    setOrder({field_, slider_}, {slider_, field_});
    for (QWidget *control : {static_cast<QWidget *>(slider_), static_cast<QWidget *>(field_)}) {
        control->setAccessibleName(accessibleName());
        control->setToolTip(stepHelp(withoutSign(levelStepDb), withoutSign(levelSmallStepDb), "0 dB"));
    }
    connectInput(slider_->input());
    connectInput(field_->input());
    slider_->onValue = [this](double db) { set(db); };
    connectField();
    refresh();
}

void LevelSheet::connectInput(ValueInput &input) {
    input.onStep = [this](double steps, bool isSmall) {
        isTyping_ = false;
        stepDialogLevel(model(), dialog_, steps * (isSmall ? levelSmallStepDb : levelStepDb));
    };
    input.onReset = [this] { set(0); };
    restoreWhenCancelled(
        input, [this] { return dialogLevel(model().state(), dialog_); }, [this](double db) { set(db); });
}

void LevelSheet::connectField() {
    connect(field_, &QLineEdit::textEdited, this, [this](const QString &typed) {
        isTyping_ = true;
        typeDialogLevel(model(), dialog_, typed.toStdString(), false);
    });
    // What has been typed and left is written as numbers are; what cannot be read stays to be mended.
    connect(field_, &QLineEdit::editingFinished, this, [this] {
        if (!scene_.isReadable || field_->hasFocus()) return;
        isTyping_ = false;
        refresh();
    });
    field_->onEnter = [this] { confirm(); };
    field_->onEscape = [this] { cancel(); };
}

void LevelSheet::set(double db) {
    isTyping_ = false;
    setDialogLevel(model(), dialog_, db);
}

float LevelSheet::peak() {
    const AudioEditorState &state = model().state();
    const auto range = model().activeRange();
    if (measured_.generation != state.generation || measured_.range != range)
        measured_ = {state.generation, range, range ? peakOfRange(state.buffer, state.peaks, *range) : 0.0f};
    return measured_.peak;
}

void LevelSheet::refresh() {
    scene_ = levelSheetScene(model().state(), dialog_, peak());
    slider_->setLevel(scene_.value);
    if (!isTyping_) field_->setText(onScreen(decibelNumber(scene_.value)));
    field_->setReadable(scene_.isReadable);
    setAccessibleDescription(
        onScreen(scene_.target + ". Peak " + scene_.peakBefore + " → " + scene_.peakAfter + " " + scene_.note));
    layOut(scene_.target, scene_.isReadable);
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
    typeDialogLevel(model(), dialog_, press.unmodified, true);
    return true;
}

// "Peak −1.0 dB → +2.0 dB  over full scale".
int LevelSheet::paintNote(QPainter *painter, const QRectF &row) const {
    const ThemeColors &colors = style().colors();
    const Rgba outcome = scene_.isOver ? colors.over : colors[Role::dialogText];
    std::vector<Word> words{{"Peak", QFont::Normal, colors.dialogDim, 8},
                            {scene_.peakBefore + " →", QFont::Normal, colors[Role::dialogText], 4},
                            {scene_.peakAfter, QFont::DemiBold, outcome, 8}};
    if (!scene_.note.empty()) words.push_back({scene_.note, QFont::Normal, scene_.isOver ? colors.over : colors.dialogDim, 0});
    return paintWords(painter, row, words);
}

int LevelSheet::wishedWidth() const { return int(std::lround(sheetWidth * style().textFactor())); }

int LevelSheet::bodyHeight(int, const DialogSheetDistances &) const {
    const int slider = LevelSliderView::heightFor(style()) - aboveField - belowField;
    return std::max(aboveField + style().grown(32) + belowField, slider);
}

void LevelSheet::placeBody(const QRect &body, const DialogSheetDistances &) {
    const int fieldBox = int(std::lround(fieldWidth * style().textFactor()));
    const QRect box(body.right() + 1 - fieldBox, body.top() + aboveField, fieldBox, style().grown(32));
    field_->setGeometry(box.adjusted(-Field::frame, -Field::frame, Field::frame, Field::frame));
    const int firstTick = body.left() + 4;
    const int left = firstTick - LevelSliderView::beside, right = box.left() - tickToField + LevelSliderView::beside;
    slider_->setGeometry(left, box.top() - 4, right - left, LevelSliderView::heightFor(style()));
}

}  // namespace kiv
