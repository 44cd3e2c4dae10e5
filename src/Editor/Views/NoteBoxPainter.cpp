#include "Editor/Views/NoteBoxPainter.h"

#include <QFontMetricsF>
#include <QPainter>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Paragraph.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double radius = 8, raised = 0.055;
constexpr int padding = 12, above = 10, iconSize = 16, iconToText = 10, lineIconToText = 8;
constexpr int textLeft = padding + iconSize + iconToText;

ParagraphType textType(const ViewStyle &style) { return {style.font(13), style.grown(16)}; }

QColor signColor(NoteTone tone, const ThemeColors &colors) {
    if (tone == NoteTone::plain) return toColor(colors.dialogDim);
    return toColor(tone == NoteTone::error ? colors.over : colors[Role::waveMarker]);
}

const char *signName(NoteTone tone) { return tone == NoteTone::error ? "warning" : "info"; }

}  // namespace

int noteBoxHeight(const QString &text, int width, const ViewStyle &style) {
    return 2 * above + paragraphSize(text, textType(style), width - textLeft - padding).height();
}

void paintNoteBox(QPainter &painter, const QRectF &box, NoteTone tone, const QString &text, const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    const ParagraphType type = textType(style);
    paintBox(painter, box, radius, toColor(mix(colors[Role::dialogBg], colors[Role::dialogText], raised)));
    const QRectF sign(box.left() + padding, box.top() + above, iconSize, type.lineHeight);
    paintIcon(painter, style, signName(tone), sign, signColor(tone, colors));
    painter.setPen(toColor(colors[Role::dialogText]));
    paintParagraph(painter, box.adjusted(textLeft, above, -padding, -above), type, text);
}

void paintNoteLine(QPainter &painter, const QRectF &line, NoteTone tone, const QString &text, const ViewStyle &style) {
    const QRectF sign(line.left(), line.top(), iconSize, line.height());
    paintIcon(painter, style, signName(tone), sign, signColor(tone, style.colors()));
    const QRectF words = line.adjusted(iconSize + lineIconToText, 0, 0, 0);
    const QFont font = style.font(12);
    painter.setFont(font);
    painter.setPen(style.color(Role::dialogText));
    painter.drawText(words, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip,
                     QFontMetricsF(font).elidedText(text, Qt::ElideMiddle, words.width()));
}

}  // namespace kiv
