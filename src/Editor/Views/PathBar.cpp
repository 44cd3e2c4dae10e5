#include "Editor/Views/PathBar.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int iconSize = 16, iconToText = 8;
constexpr int chevronWidth = 16;  // between two buttons
constexpr int beside = QuietButton::beside;
constexpr int widestCrumb = 240;

}  // namespace

PathBar::PathBar(ViewStyle &style, QWidget *parent) : QWidget(parent), style_(style) {
    styleChanges_ = style.changed.add([this](const ViewStyle &) { layOut(); });
}

void PathBar::setCrumbs(std::vector<FolderCrumb> crumbs) {
    if (crumbs == crumbs_) return;
    const bool hadFocus = isAncestorOf(QApplication::focusWidget());
    for (QuietButton *button : std::exchange(buttons_, {})) {
        button->hide();
        button->deleteLater();  // it may be its own press that leads here
    }
    crumbs_ = std::move(crumbs);
    for (const FolderCrumb &crumb : crumbs_) {
        auto *button = new QuietButton(style_, QString::fromStdString(crumb.label), this);
        connect(button, &QPushButton::clicked, this, [this, path = crumb.path] {
            if (onChosen) onChosen(path);
        });
        buttons_.append(button);
        if (onMade) onMade(button);
    }
    layOut();
    if (hadFocus) setFocus(Qt::TabFocusReason);
}

void PathBar::layOut() {
    std::vector<int> widths;
    for (QuietButton *button : buttons_) widths.push_back(std::min(button->sizeHint().width(), widestCrumb));
    const QFont font = style_.font(13, QFont::Medium);
    const int left = iconSize + iconToText - beside, sign = int(QFontMetricsF(font).horizontalAdvance("…")) + 1;
    firstShown_ = firstCrumbShown(widths, chevronWidth, sign, width() - left);
    int x = left + (firstShown_ > 0 ? beside + sign + chevronWidth : 0);
    for (std::size_t i = 0; i < widths.size(); ++i) {
        QuietButton *button = buttons_[qsizetype(i)];
        button->setVisible(i >= firstShown_);
        if (i < firstShown_) continue;
        button->setGeometry(x, 0, std::min(widths[i], width() - x), height());
        x += button->width() + chevronWidth;
    }
    usedWidth_ = x - chevronWidth;
    update();
}

void PathBar::resizeEvent(QResizeEvent *) { layOut(); }

void PathBar::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const ThemeColors &colors = style_.colors();
    paintIcon(painter, style_, "folder", QRectF(0, 0, iconSize, height()), toColor(colors[Role::dialogText]));
    painter.setFont(style_.font(13, QFont::Medium));
    painter.setPen(toColor(colors.dialogDim));
    if (firstShown_ > 0)
        painter.drawText(QRectF(iconSize + iconToText, 0, width(), height()), Qt::AlignLeft | Qt::AlignVCenter, "…");
    for (std::size_t i = std::max<std::size_t>(firstShown_, 1); i < crumbs_.size(); ++i) {
        const QRectF gap(buttons_[qsizetype(i)]->x() - chevronWidth, 0, chevronWidth, height());
        paintIcon(painter, style_, "chevron-right", gap, toColor(colors.dialogDim));
    }
}

// The focus given to the way goes on to its end, which is where one is.
void PathBar::focusInEvent(QFocusEvent *event) {
    if (!buttons_.isEmpty()) buttons_.last()->setFocus(event->reason());
}

void PathBar::moveFocus(int step) {
    const qsizetype at = buttons_.indexOf(QApplication::focusWidget()) + step;
    if (at >= qsizetype(firstShown_) && at < buttons_.size())
        buttons_[at]->setFocus(step > 0 ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

void PathBar::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) return moveFocus(event->key() == Qt::Key_Left ? -1 : 1);
    QWidget::keyPressEvent(event);
}

}  // namespace kiv
