#include "Editor/Views/ChoicePainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <cmath>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int markSize = 16;
constexpr double boxRadius = 4, dotRadius = 3;
constexpr int checkSize = 14;
constexpr double borderWidth = 1.5;

int markToText(ChoiceKind kind) { return kind == ChoiceKind::check ? 10 : 8; }

}  // namespace

QRect choiceMark(const QRect &rect) { return {rect.left(), rect.top() + (rect.height() - markSize) / 2, markSize, markSize}; }

int choiceHeight(const ViewStyle &style) { return style.grown(28); }

int choiceWidth(const ChoiceLook &look, const QString &text, const ViewStyle &style) {
    return markSize + markToText(look.kind) + int(std::ceil(QFontMetricsF(style.font(13)).horizontalAdvance(text)));
}

void paintChoice(QPainter &painter, const QRectF &rect, const ChoiceLook &look, const QString &text, const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    const auto faded = [&](Rgba color) { return look.isEnabled ? color : mix(colors[Role::dialogBg], color, 0.42); };
    const QRectF mark = choiceMark(rect.toRect());
    const bool isRadio = look.kind == ChoiceKind::radio;
    const double radius = isRadio ? markSize / 2.0 : boxRadius;
    const Rgba rest = look.isOn ? colors[Role::accentBg] : colors[Role::dialogBg];
    const double towardsText = look.isPressed ? 0.16 : look.isHovered && look.isEnabled ? 0.08 : 0;
    const Rgba fill = faded(mix(rest, colors[Role::dialogText], towardsText));
    paintBox(painter, mark, radius, toColor(fill), look.isOn ? QColor() : toColor(faded(colors.fieldBorder)), Corners::all,
             borderWidth);
    if (look.isOn && isRadio)
        paintBox(painter, QRectF(mark.center() - QPointF(dotRadius, dotRadius), QSizeF(2 * dotRadius, 2 * dotRadius)),
                 dotRadius, toColor(faded(colors[Role::accentFg])));
    else if (look.isOn)
        paintIcon(painter, style, "check", mark, toColor(faded(colors[Role::accentFg])), checkSize);
    painter.setFont(style.font(13));
    painter.setPen(toColor(faded(colors[Role::dialogText])));
    painter.drawText(rect.adjusted(markSize + markToText(look.kind), 0, 0, 0),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, text);
}

}  // namespace kiv
