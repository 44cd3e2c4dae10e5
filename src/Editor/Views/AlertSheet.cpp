#include "Editor/Views/AlertSheet.h"

#include <QPainter>
#include <algorithm>

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
ParagraphType messageType(const ViewStyle &style) { return {style.font(15, QFont::DemiBold), style.grown(20)}; }
ParagraphType textType(const ViewStyle &style) { return {style.font(13), style.grown(16)}; }

}  // namespace

AlertSheet::AlertSheet(ViewStyle &style, AlertTone tone, DocumentUi::Question question, std::function<void(std::size_t)> answer,
                       QWidget *parent)
    : Sheet(style, parent),
      tone_(tone),
      message_(onScreen(question.message)),
      informative_(onScreen(question.informative)),
      labels_(std::move(question.buttons)),
      answer_(std::move(answer)) {
    const auto cancel =
        std::find_if(labels_.begin(), labels_.end(), [](auto &label) { return label == "Cancel" || label == "Later"; });
    if (cancel != labels_.end()) cancelIndex_ = std::size_t(cancel - labels_.begin());
    setAccessibleName(message_);
    setAccessibleDescription(informative_);
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

int AlertSheet::buttonsTop(int width) const {
    const int room = textWidth(width);
    const int message = paragraphSize(message_, messageType(style()), room).height();
    const int text = paragraphSize(informative_, textType(style()), room).height();
    return edge_ + std::max(iconSize, message + (text > 0 ? messageToText + text : 0)) + textToButtons_;
}

QSize AlertSheet::sizeFor(int width) const {
    const int texts = std::max(paragraphSize(message_, messageType(style()), widestAlert).width(),
                               paragraphSize(informative_, textType(style()), widestAlert).width());
    int row = -8;
    for (const Button *button : buttons_) row += button->sizeHint().width() + 8;
    const int wanted = std::max(texts + iconSize + iconToText + 1, row) + 2 * edge_;
    const int chosen = std::min(std::clamp(wanted, leastWidth_, widestAlert), width);
    return {chosen, buttonsTop(chosen) + buttonHeight(ButtonKind::sheet, style()) + edge_};
}

void AlertSheet::resizeEvent(QResizeEvent *) { placeButtons(rightToLeft(), width() - edge_, buttonsTop(width())); }

void AlertSheet::paintEvent(QPaintEvent *event) {
    Sheet::paintEvent(event);
    QPainter painter(this);
    const ThemeColors &colors = style().colors();
    const QColor tone = toColor(tone_ == AlertTone::error ? colors.over : colors[Role::waveMarker]);
    paintIcon(painter, style(), "warning", QRectF(edge_, edge_, iconSize, iconSize), tone, iconSize);
    QRect text(edge_ + iconSize + iconToText, edge_, textWidth(width()), height());
    painter.setPen(toColor(colors[Role::dialogText]));
    paintParagraph(painter, text, messageType(style()), message_);
    text.translate(0, paragraphSize(message_, messageType(style()), text.width()).height() + messageToText);
    painter.setPen(toColor(colors.dialogDim));
    paintParagraph(painter, text, textType(style()), informative_);
}

}  // namespace kiv
