#include "Editor/Views/ButtonPainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <cmath>

#include "Editor/Views/DigitText.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int iconSize = 16;
constexpr int iconToText = 6;
constexpr int labelPadding = 9;
constexpr int labelToText = 4;  // at least
constexpr double pale = 0.4;    // a default button that cannot be pressed

struct ButtonColors {
    Rgba fill, border, text;
};

constexpr int tabWidth = 92, tabHeight = 52, tabIcon = 18;
constexpr int tabIconMiddle = 15, tabTextMiddle = 37;

bool isSheet(ButtonKind kind) { return kind == ButtonKind::sheet || kind == ButtonKind::sheetDefault; }

ButtonColors restColors(const ButtonLook &look, const ThemeColors &colors) {
    if (look.kind == ButtonKind::sheet && !look.isOn)
        return {colors[Role::dialogBg], colors.fieldBorder, colors[Role::dialogText]};
    if (look.isOn || look.kind == ButtonKind::sheetDefault)
        return {colors[Role::accentBg], colors[Role::accentBg], colors[Role::accentFg]};
    if (look.kind == ButtonKind::tab) return {colors[Role::topbarBg], colors[Role::topbarBg], colors[Role::topbarButtonText]};
    if (look.kind == ButtonKind::action)
        return {colors[Role::topbarActionBg], colors[Role::topbarActionBorder], colors[Role::topbarActionText]};
    return {colors[Role::topbarButtonBg], colors[Role::topbarButtonBorder], colors[Role::topbarButtonText]};
}

ButtonColors disabledColors(const ButtonLook &look, const ThemeColors &colors) {
    ButtonColors result = restColors(look, colors);
    if (!isSheet(look.kind)) {
        result.text = colors.disabled;
        return result;
    }
    const auto faded = [&](Rgba color) { return mix(colors[Role::dialogBg], color, pale); };
    return {faded(result.fill), faded(result.border), faded(result.text)};
}

// What is filled with the accent turns away from its text, which in a light theme is white.
Rgba touchTone(const ButtonLook &look, const ButtonColors &rest, const ThemeColors &colors) {
    if (rest.fill != colors[Role::accentBg]) return rest.text;
    return colors[isSheet(look.kind) ? Role::dialogText : Role::topbarButtonText];
}

ButtonColors colorsOf(const ButtonLook &look, const ThemeColors &colors) {
    if (!look.isEnabled) return disabledColors(look, colors);
    const ButtonColors rest = restColors(look, colors);
    ButtonColors result = rest;
    result.fill = mix(rest.fill, touchTone(look, rest, colors), look.isPressed ? 0.16 : look.isHovered ? 0.08 : 0);
    if (rest.border == rest.fill) result.border = result.fill;
    return result;
}

int padding(ButtonKind kind) { return isSheet(kind) ? 14 : 8; }

QFont textFont(const ViewStyle &style) { return style.font(13, QFont::Medium); }

double textWidth(const ButtonLook &look, const ViewStyle &style) {
    if (look.text.isEmpty()) return 0;
    const QFont font = textFont(style);
    return look.hasDigits ? digitTextWidth(font, look.text) : QFontMetricsF(font).horizontalAdvance(look.text);
}

double contentWidth(const ButtonLook &look, const ViewStyle &style) {
    const double icon = look.icon.empty() ? 0 : iconSize;
    return icon + (icon > 0 && !look.text.isEmpty() ? iconToText : 0) + textWidth(look, style);
}

void paintText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const ButtonLook &look, const QColor &color,
               const ViewStyle &style) {
    if (look.hasDigits) return paintDigitText(painter, rect, alignment, textFont(style), color, look.text);
    painter.setFont(textFont(style));
    painter.setPen(color);
    painter.drawText(rect, int(alignment) | Qt::AlignVCenter | Qt::TextDontClip, look.text);
}

// The label at the left, the value at the right.
void paintLabelled(QPainter &painter, const QRectF &rect, const ButtonLook &look, const QColor &text, const ViewStyle &style) {
    const QRectF inside = rect.adjusted(labelPadding, 0, -labelPadding, 0);
    painter.setFont(style.font(13));
    painter.setPen(look.isEnabled ? toColor(style.colors().dim) : text);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignVCenter, look.label);
    paintText(painter, inside, Qt::AlignRight, look, look.isOver ? toColor(style.colors().over) : text, style);
}

void paintTab(QPainter &painter, const QRectF &rect, const ButtonLook &look, const QColor &text, const ViewStyle &style) {
    const double grown = style.grown(tabHeight) - tabHeight;
    paintIcon(painter, style, look.icon, QRectF(rect.left(), rect.top(), rect.width(), 2 * tabIconMiddle), text, tabIcon);
    painter.setFont(style.font(12, QFont::Medium));
    painter.setPen(text);
    const double middle = rect.top() + tabTextMiddle + grown / 2;
    painter.drawText(QRectF(rect.left(), middle - rect.height() / 2, rect.width(), rect.height()),
                     Qt::AlignCenter | Qt::TextDontClip, look.text);
}

double radiusOf(ButtonKind kind, const ViewStyle &style) {
    return kind == ButtonKind::tab ? 8 : isSheet(kind) ? 6 : style.radius();
}

}  // namespace

void paintButton(QPainter &painter, const QRectF &rect, const ButtonLook &look, const ViewStyle &style) {
    const ButtonColors colors = colorsOf(look, style.colors());
    paintBox(painter, rect, radiusOf(look.kind, style), toColor(colors.fill), toColor(colors.border), look.corners);
    const QColor text = toColor(colors.text);
    if (look.kind == ButtonKind::tab) return paintTab(painter, rect, look, text, style);
    if (!look.label.isEmpty()) return paintLabelled(painter, rect, look, text, style);
    QRectF content(0, rect.top(), contentWidth(look, style), rect.height());
    content.moveLeft(rect.center().x() - content.width() / 2);
    if (!look.icon.empty()) {
        paintIcon(painter, style, look.icon, QRectF(content.left(), content.top(), iconSize, content.height()), text);
        content.setLeft(content.left() + iconSize + iconToText);
    }
    if (!look.text.isEmpty()) paintText(painter, content, Qt::AlignLeft, look, text, style);
}

int buttonWidth(const ButtonLook &look, const ViewStyle &style) {
    if (look.kind == ButtonKind::tab) return int(std::lround(tabWidth * style.textFactor()));
    if (!look.label.isEmpty()) {
        const double label = QFontMetricsF(style.font(13)).horizontalAdvance(look.label);
        return int(std::lround(label + textWidth(look, style))) + 2 * labelPadding + labelToText;
    }
    const int width = int(std::lround(contentWidth(look, style))) + 2 * (padding(look.kind) + 1);
    if (isSheet(look.kind) && !look.isSegment) return std::max(width, 84);
    return look.text.isEmpty() ? 32 : width;
}

int buttonHeight(ButtonKind kind, const ViewStyle &style) {
    return style.grown(kind == ButtonKind::tab ? tabHeight : isSheet(kind) ? 32 : 28);
}

}  // namespace kiv
