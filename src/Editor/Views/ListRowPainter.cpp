#include "Editor/Views/ListRowPainter.h"

#include <QFontMetricsF>
#include <QPainter>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double boxRadius = 8, rowRadius = 6;
constexpr double chosenTone = 0.22, hoverTone = 0.05;
constexpr double chosenSecondTone = 0.8;  // secondary text stands out less from a chosen row
constexpr int padding = 10, iconSize = 16, iconToText = 8, beforeColumn = 16;

void paintText(QPainter &painter, const QRectF &rect, Qt::Alignment side, Rgba color, const QFont &font, const QString &text) {
    painter.setFont(font);
    painter.setPen(toColor(color));
    painter.drawText(rect, int(side) | Qt::AlignVCenter | Qt::TextDontClip,
                     QFontMetricsF(font).elidedText(text, Qt::ElideMiddle, rect.width()));
}

void paintTexts(QPainter &painter, const QRectF &rect, const ListRow &row, Rgba first, Rgba others, const ListColumns &columns,
                const QFont &font) {
    QRectF place = rect.adjusted(padding, 0, -padding, 0);
    for (const auto &[width, text] : {std::pair{columns.third, row.third}, std::pair{columns.second, row.second}}) {
        if (width == 0) continue;
        paintText(painter, QRectF(place.right() - width, place.top(), width, place.height()), Qt::AlignRight, others, font,
                  text);
        place.setRight(place.right() - width);
    }
    if (columns.second > 0) place.setRight(place.right() - beforeColumn);
    if (!row.icon.empty()) place.setLeft(place.left() + iconSize + iconToText);
    paintText(painter, place, Qt::AlignLeft, first, font, row.text);
}

}  // namespace

int listRowHeight(const ViewStyle &style) { return style.grown(32); }

int listHeaderHeight(const ViewStyle &style) { return style.grown(24); }

void paintListBox(QPainter &painter, const QRectF &rect, const ViewStyle &style) {
    paintBox(painter, rect, boxRadius, toColor(style.colors().field), toColor(style.colors().dialogLine));
}

void paintListRow(QPainter &painter, const QRectF &rect, const ListRow &row, const ListRowLook &look,
                  const ListColumns &columns, const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    if (look.isFocused) paintBox(painter, rect, rowRadius, toColor(colors[Role::accentBg]));
    const QRectF inside = look.isFocused ? rect.adjusted(2, 2, -2, -2) : rect;
    const Rgba rest = look.isHovered ? mix(colors.field, colors[Role::dialogText], hoverTone) : colors.field;
    const Rgba fill = look.isChosen ? mix(colors[Role::dialogBg], colors[Role::accentBg], chosenTone) : rest;
    if (look.isChosen || look.isHovered || look.isFocused)
        paintBox(painter, inside, look.isFocused ? rowRadius - 2 : rowRadius, toColor(fill));
    const Rgba second =
        look.isChosen ? mix(colors[Role::dialogBg], colors[Role::dialogText], chosenSecondTone) : colors.dialogDim;
    const Rgba first = look.isDim ? second : colors[Role::dialogText];
    if (!row.icon.empty())
        paintIcon(painter, style, row.icon, QRectF(rect.left() + padding, rect.top(), iconSize, rect.height()), toColor(first));
    paintTexts(painter, rect, row, first, second, columns, style.font(13));
}

void paintListNote(QPainter &painter, const QRectF &rect, const QString &note, const ViewStyle &style) {
    const QRectF place = rect.adjusted(padding, 0, -padding, 0);
    paintText(painter, place, Qt::AlignLeft, style.colors().dialogDim, style.font(13), note);
}

void paintListHeader(QPainter &painter, const QRectF &rect, const ListRow &names, const ListColumns &columns,
                     const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    paintTexts(painter, rect, names, colors.dialogDim, colors.dialogDim, columns, style.font(12));
    const double line = lineWidth(painter);
    fillCrisp(painter, QRectF(rect.left(), rect.bottom(), rect.width(), line), toColor(colors.dialogLine));
}

}  // namespace kiv
