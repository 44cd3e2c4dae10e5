#include "Editor/Views/DialogSheet.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/DigitText.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

}  // namespace

DialogSheet::DialogSheet(AudioEditorModel &model, Dialog dialog, const Words &words, ViewStyle &style, QWidget *parent)
    : Sheet(style, parent),
      model_(model),
      dialog_(dialog),
      title_(onScreen(words.title)),
      apply_(new Button(style, ButtonKind::sheetDefault, this)),
      cancel_(new Button(style, ButtonKind::sheet, this)) {
    setAccessibleName(title_);
    apply_->setLabelAndText({}, onScreen(words.confirm));
    cancel_->setLabelAndText({}, onScreen("Cancel"));
    apply_->setToolTip(tipText(apply_->text(), onScreen("↩")));
    cancel_->setToolTip(tipText(cancel_->text(), onScreen("⎋")));
    connect(apply_, &QPushButton::clicked, this, [this] { confirm(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { cancel(); });
    modelChanges_ = model.observers.add([this](const Changes &changes) {
        const bool concerns = changes.containsAny({Change::dialog, Change::audio, Change::selection, Change::timeUnit});
        if (concerns && model_.state().dialog == dialog_) refresh();
    });
}

void DialogSheet::confirm() {
    if (isReadable_) AudioEditorEdits::confirmDialog(model_);
}

void DialogSheet::setOrder(const QList<QWidget *> &tabs, const QList<QWidget *> &read) {
    setTabRing(tabs + QList<QWidget *>{apply_, cancel_});
    readInOrder(read + QList<QWidget *>{cancel_, apply_});
}

QString DialogSheet::stepHelp(const std::string &step, const std::string &smallStep, const std::string &reset) {
    const std::string small = smallStep == step ? "" : ", with ⇧ = " + smallStep;
    return onScreen("Scroll or drag up / down = " + step + small + "; double-click = " + reset + ".");
}

DialogSheetMeasures DialogSheet::measures() const {
    return {.textFactor = style().textFactor(),
            .titleHeight = style().grown(20),
            .labelHeight = style().grown(16),
            .controlHeight = buttonHeight(ButtonKind::sheet, style()),
            .noteWidth = paintNote(nullptr, {}),
            .buttonsWidth = apply_->sizeHint().width() + cancel_->sizeHint().width() + 8};
}

DialogSheetGeometry DialogSheet::geometryFor(int width, const DialogSheetDistances &distances) const {
    return {width, bodyHeight(width - 2 * padding, distances), measures(), distances};
}

const DialogSheetDistances &DialogSheet::distancesFor(int width, int height) const {
    return geometryFor(width, roomyDistances).height <= height ? roomyDistances : closeDistances;
}

DialogSheetGeometry DialogSheet::geometryNow() const { return geometryFor(width(), distancesFor(width(), height())); }

QSize DialogSheet::sizeFor(const QSize &room) const {
    const int width = std::min(wishedWidth(), room.width());
    return {width, geometryFor(width, distancesFor(width, room.height())).height};
}

void DialogSheet::layOut(const std::string &target, bool isReadable) {
    target_ = target;
    isReadable_ = isReadable;
    apply_->setEnabled(isReadable);
    const DialogSheetGeometry geometry = geometryNow();
    placeBody(toRect(geometry.body), distancesFor(width(), height()));
    placeButtons({apply_, cancel_}, padding, width() - padding, geometry.buttonsTop);
    update();
}

int DialogSheet::paintWords(QPainter *painter, QRectF row, const std::vector<Word> &words) const {
    const double left = row.left();
    for (const Word &word : words) {
        const QFont font = style().font(13, word.weight);
        if (painter) paintDigitText(*painter, row, Qt::AlignLeft, font, toColor(word.color), onScreen(word.text));
        row.setLeft(row.left() + digitTextWidth(font, onScreen(word.text)) + word.after);
    }
    return int(std::ceil(row.left() - left));
}

void DialogSheet::paintEvent(QPaintEvent *event) {
    Sheet::paintEvent(event);
    QPainter painter(this);
    const ThemeColors &colors = style().colors();
    const DialogSheetGeometry geometry = geometryNow();
    const QRectF title = toRect(geometry.title);
    paintDigitText(painter, title, Qt::AlignLeft, style().font(15, QFont::DemiBold), toColor(colors[Role::dialogText]), title_);
    paintDigitText(painter, title, Qt::AlignRight, style().font(13), toColor(colors.dialogDim), onScreen(target_));
    paintBody(painter);
    paintNote(&painter, toRect(geometry.note));
}

}  // namespace kiv
