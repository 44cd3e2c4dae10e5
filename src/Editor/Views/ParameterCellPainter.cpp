#include "Editor/Views/ParameterCellPainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <cmath>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/DigitText.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int padding = 8;
constexpr int narrowest = 68;
constexpr int labelLine = 14, valueLine = 18;
constexpr int valueToSecond = 6;

QFont valueFont(const ViewStyle &style) { return style.font(13, QFont::DemiBold); }

struct CellColors {
    Rgba label, value, second;
};

CellColors colorsOf(const ParameterCellLook &look, const ThemeColors &colors) {
    if (!look.isEnabled) return {colors.disabled, colors.disabled, colors.disabled};
    if (look.isDragged) return {colors[Role::accentFg], colors[Role::accentFg], colors[Role::accentFg]};
    return {colors.dim, colors[Role::topbarButtonText], colors.dim};
}

void paintGround(QPainter &painter, const QRectF &rect, const ParameterCellLook &look, const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    if (look.isTyping)
        return paintFramed(painter, rect, style.radius(), toColor(colors[Role::waveBg]),
                           toColor(look.isReadable ? colors[Role::accentBg] : colors.over));
    if (look.isDragged) return paintBox(painter, rect, style.radius(), toColor(colors[Role::accentBg]));
    if (look.isHovered && look.isEnabled)
        paintBox(painter, rect, style.radius(), toColor(colors[Role::topbarButtonBg]),
                 toColor(colors[Role::topbarButtonBorder]));
}

}  // namespace

QRectF parameterCellValuePlace(const QRectF &rect, const ViewStyle &style) {
    const double label = style.grown(labelLine), value = style.grown(valueLine);
    return {rect.left() + padding, rect.center().y() + (label - value) / 2, rect.width() - 2 * padding, value};
}

int parameterCellHeight(const ViewStyle &style) { return style.grown(labelLine) + style.grown(valueLine) + 8; }

int parameterCellWidth(const ParameterCellScene &scene, const ViewStyle &style) {
    const double label = QFontMetricsF(style.font(11)).horizontalAdvance(onScreen(scene.label));
    double value = digitTextWidth(valueFont(style), onScreen(scene.text()));
    if (!scene.second.empty()) value += valueToSecond + digitTextWidth(style.font(13), onScreen(scene.second));
    return std::max(narrowest, int(std::ceil(std::max(label, value))) + 2 * (padding + 1));
}

void paintParameterCell(QPainter &painter, const QRectF &rect, const ParameterCellScene &scene, const ParameterCellLook &look,
                        const ViewStyle &style) {
    paintGround(painter, rect, look, style);
    const CellColors colors = colorsOf(look, style.colors());
    const QRectF value = parameterCellValuePlace(rect, style);
    const double labelHeight = style.grown(labelLine);
    painter.setFont(style.font(11));
    painter.setPen(toColor(colors.label));
    painter.drawText(QRectF(value.left(), value.top() - labelHeight, value.width(), labelHeight),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, onScreen(scene.label));
    if (look.isTyping) return;
    const QString text = onScreen(scene.text());
    paintDigitText(painter, value, Qt::AlignLeft, valueFont(style), toColor(colors.value), text);
    if (scene.second.empty()) return;
    const double before = digitTextWidth(valueFont(style), text) + valueToSecond;
    paintDigitText(painter, value.adjusted(before, 0, 0, 0), Qt::AlignLeft, style.font(13), toColor(colors.second),
                   onScreen(scene.second));
}

}  // namespace kiv
