#include "Editor/Views/FloatPainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <cmath>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Paragraph.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double edgeTone = 0.2;  // of the edge that a square float has in place of a shadow
constexpr double disabledTone = 0.42;

constexpr int rowPadding = 12, rowRadius = 5;
constexpr int checkWidth = 22, checkLeft = 3;
constexpr int beforeShortcut = 61;

constexpr int tipPaddingX = 12, tipPaddingY = 8;
ParagraphType tipType(const ViewStyle &style) { return {style.font(12), style.grown(16)}; }

constexpr int noticePadding = 16, noticeTextStart = 43;

const char *iconOf(NoticeKind kind) {
    return kind == NoticeKind::done ? "check" : kind == NoticeKind::information ? "info" : "warning";
}

}  // namespace

void paintFloat(QPainter &painter, const QRectF &box, double radius, const ViewStyle &style, double shadowFrom) {
    const ThemeColors &colors = style.colors();
    const Rgba ground = colors[Role::dialogBg];
    if (!style.hasTranslucency()) {
        const double line = lineWidth(painter);
        const QColor edge = toColor(mix(ground, colors[Role::dialogText], edgeTone));
        return paintBox(painter, box.adjusted(-line, -line, line, line), 0, toColor(ground), edge);
    }
    paintShadow(painter, box.adjusted(0, shadowFrom, 0, 0), style);
    paintBox(painter, box.adjusted(-1, -1, 1, 1), radius + 1, toColor(colors.panelEdge));
    paintBox(painter, box, radius, toColor(ground));
}

int menuRowHeight(const ViewStyle &style) { return style.grown(28); }

double menuRowWidth(const MenuRowLook &look, const ViewStyle &style) {
    const QFontMetricsF metrics(style.font(13));
    const double right = look.shortcut.isEmpty() ? 0 : beforeShortcut + metrics.horizontalAdvance(look.shortcut);
    return metrics.horizontalAdvance(look.text) + right + (look.hasCheckColumn ? checkWidth : 0) + 2 * rowPadding;
}

void paintMenuRule(QPainter &painter, const QRectF &row, const ViewStyle &style) {
    fillCrisp(painter, QRectF(row.left(), row.top() + menuRuleHeight / 2, row.width(), lineWidth(painter)),
              toColor(style.colors().dialogLine));
}

void paintMenuRow(QPainter &painter, const QRectF &row, const MenuRowLook &look, const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    const Rgba pale = mix(colors[Role::dialogBg], colors[Role::dialogText], disabledTone);
    const auto tone = [&](Rgba rest) { return toColor(look.isChosen ? colors[Role::accentFg] : look.isEnabled ? rest : pale); };
    if (look.isChosen) paintBox(painter, row, rowRadius, toColor(colors[Role::accentBg]));
    QRectF inside = row.adjusted(rowPadding, 0, -rowPadding, 0);
    painter.setFont(style.font(13));
    painter.setPen(tone(colors.dialogDim));
    painter.drawText(inside, Qt::AlignRight | Qt::AlignVCenter, look.shortcut);
    const QColor text = tone(colors[Role::dialogText]);
    if (look.isChecked)
        paintIcon(painter, style, "check", QRectF(inside.left() - checkLeft, row.top(), 16, row.height()), text);
    if (look.hasCheckColumn) inside.setLeft(inside.left() + checkWidth);
    painter.setPen(text);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignVCenter, look.text);
}

QSize tipSize(const QString &text, const ViewStyle &style, int widest) {
    const QSize size = paragraphSize(text, tipType(style), widest - 2 * tipPaddingX);
    return size + QSize(2 * tipPaddingX, 2 * tipPaddingY);
}

void paintTipText(QPainter &painter, const QRectF &box, const QString &text, const ViewStyle &style) {
    painter.setPen(style.color(Role::dialogText));
    paintParagraph(painter, box.adjusted(tipPaddingX, tipPaddingY, 1 - tipPaddingX, 0), tipType(style), text);
}

QString noticeText(const QString &text, int widest, const ViewStyle &style) {
    return QFontMetricsF(style.font(13)).elidedText(text, Qt::ElideMiddle, widest - noticeTextStart - noticePadding);
}

QSize noticeSize(const QString &text, const ViewStyle &style) {
    const double width = QFontMetricsF(style.font(13)).horizontalAdvance(text);
    return {noticeTextStart + int(std::ceil(width)) + noticePadding, style.grown(36)};
}

void paintNotice(QPainter &painter, const QRectF &pill, NoticeKind kind, const QString &text, const ViewStyle &style) {
    paintBox(painter, pill, pill.height() / 2, style.color(Role::dialogBg));
    const QColor color = style.color(Role::dialogText);
    paintIcon(painter, style, iconOf(kind), QRectF(pill.left() + noticePadding, pill.top(), 16, pill.height()),
              kind == NoticeKind::warning ? style.color(Role::waveMarker) : color);
    painter.setFont(style.font(13));
    painter.setPen(color);
    painter.drawText(pill.adjusted(noticeTextStart, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, text);
}

}  // namespace kiv
