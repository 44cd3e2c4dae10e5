#include "Editor/Views/AlertSheet.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Paragraph.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int widestAlert = 576;
constexpr int iconSize = 28;
constexpr int iconToText = 16;
constexpr int messageToText = 8;
constexpr int longestMessage = 3;  // lines, where room is short

ParagraphType messageType(const ViewStyle &style) { return {style.font(15, QFont::DemiBold), style.grown(20)}; }
ParagraphType textType(const ViewStyle &style) { return {style.font(13), style.grown(16)}; }

}  // namespace

AlertSheet::AlertSheet(ViewStyle &style, AlertTone tone, DocumentUi::Question question, std::function<void(std::size_t)> answer,
                       QWidget *parent)
    : Sheet(style, parent),
      tone_(tone),
      all_{onScreen(question.message), onScreen(question.informative)},
      labels_(std::move(question.buttons)),
      answer_(std::move(answer)) {
    const auto cancel =
        std::find_if(labels_.begin(), labels_.end(), [](auto &label) { return label == "Cancel" || label == "Later"; });
    if (cancel != labels_.end()) cancelIndex_ = std::size_t(cancel - labels_.begin());
    setAccessibleName(all_.message);
    setAccessibleDescription(all_.informative);
    makeButtons();
}

void AlertSheet::makeButtons() {
    QList<QWidget *> ring;
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        auto *button = new Button(style(), i == 0 ? ButtonKind::sheetDefault : ButtonKind::sheet, this);
        button->setLabelAndText({}, onScreen(labels_[i]));
        connect(button, &QPushButton::clicked, this, [this, i] { choose(i); });
        buttons_.append(button);
        ring.append(button);
    }
    setTabRing(ring);
}

void AlertSheet::setInWindow() {
    edge_ = 24;
    leastWidth_ = 480;
    textToButtons_ = 48;
}

QList<Button *> AlertSheet::rightToLeft() const {
    QList<Button *> row = buttons_;
    if (cancelIndex_.value_or(0) != 0) row.append(row.takeAt(qsizetype(*cancelIndex_)));
    return row;
}

void AlertSheet::choose(std::size_t index) {
    if (auto answer = std::exchange(answer_, nullptr)) answer(index);
}

void AlertSheet::cancel() {
    if (cancelIndex_ || labels_.size() == 1) choose(cancelIndex_.value_or(0));
}

void AlertSheet::takeFocus() { buttons_.first()->setFocus(Qt::PopupFocusReason); }

int AlertSheet::textWidth(int width) const { return width - 2 * edge_ - iconSize - iconToText; }

int AlertSheet::textsHeight(const Texts &texts, int width) const {
    const int room = textWidth(width);
    const int message = paragraphSize(texts.message, messageType(style()), room).height();
    const int text = paragraphSize(texts.informative, textType(style()), room).height();
    return std::max(iconSize, message + (text > 0 ? messageToText + text : 0));
}

// All but the texts.
int AlertSheet::heightWithout(int width) const {
    return 2 * edge_ + textToButtons_ + buttonRowsHeight(rightToLeft(), width - 2 * edge_);
}

AlertSheet::Texts AlertSheet::textsIn(const QSize &size) const {
    const int width = size.width(), free = size.height() - heightWithout(width);
    if (textsHeight(all_, width) <= free) return all_;
    const ParagraphType type = textType(style());
    Texts cut{elidedParagraph(all_.message, messageType(style()), textWidth(width), longestMessage), {}};
    const int lines = (free - textsHeight(cut, width) - messageToText) / type.lineHeight;
    cut.informative = elidedParagraph(all_.informative, type, textWidth(width), std::max(1, lines));
    return cut;
}

QSize AlertSheet::sizeFor(const QSize &room) const {
    const double factor = style().textFactor();
    const int widest = int(std::lround(widestAlert * factor)), least = int(std::lround(leastWidth_ * factor));
    const int texts = std::max(paragraphSize(all_.message, messageType(style()), widest).width(),
                               paragraphSize(all_.informative, textType(style()), widest).width());
    int row = -8;
    for (const Button *button : buttons_) row += button->sizeHint().width() + 8;
    const int wanted = std::max(texts + iconSize + iconToText + 1, row) + 2 * edge_;
    const int width = std::min(std::clamp(wanted, least, widest), room.width());
    return {width, heightWithout(width) + textsHeight(textsIn({width, room.height()}), width)};
}

void AlertSheet::resizeEvent(QResizeEvent *) {
    const int row = buttonRowsHeight(rightToLeft(), width() - 2 * edge_);
    placeButtons(rightToLeft(), edge_, width() - edge_, height() - edge_ - row);
}

void AlertSheet::paintEvent(QPaintEvent *event) {
    Sheet::paintEvent(event);
    QPainter painter(this);
    const ThemeColors &colors = style().colors();
    const Texts texts = textsIn(size());
    const QColor tone = toColor(tone_ == AlertTone::error ? colors.over : colors[Role::waveMarker]);
    paintIcon(painter, style(), "warning", QRectF(edge_, edge_, iconSize, iconSize), tone, iconSize);
    QRect text(edge_ + iconSize + iconToText, edge_, textWidth(width()), height());
    painter.setPen(toColor(colors[Role::dialogText]));
    paintParagraph(painter, text, messageType(style()), texts.message);
    text.translate(0, paragraphSize(texts.message, messageType(style()), text.width()).height() + messageToText);
    painter.setPen(toColor(colors.dialogDim));
    paintParagraph(painter, text, textType(style()), texts.informative);
}

}  // namespace kiv
