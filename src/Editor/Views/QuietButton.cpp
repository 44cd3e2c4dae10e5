#include "Editor/Views/QuietButton.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <cmath>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double hoverTone = 0.08, pressedTone = 0.16, radius = 6;

}  // namespace

QuietButton::QuietButton(ViewStyle &style, const QString &text, QWidget *parent) : QPushButton(text, parent), style_(style) {
    setAttribute(Qt::WA_Hover);
    setAutoDefault(false);
    setFocusPolicy(Qt::TabFocus);
}

void QuietButton::setIconName(std::string_view name) { icon_ = name; }

QSize QuietButton::sizeHint() const {
    const int height = style_.grown(24);
    if (!icon_.empty()) return {height, height};
    return {int(std::ceil(QFontMetricsF(style_.font(13, QFont::Medium)).horizontalAdvance(text()))) + 2 * beside, height};
}

void QuietButton::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const ThemeColors &colors = style_.colors();
    const double tone = !isEnabled() ? 0 : isDown() ? pressedTone : underMouse() ? hoverTone : 0;
    if (tone > 0) paintBox(painter, rect(), radius, toColor(mix(colors[Role::dialogBg], colors[Role::dialogText], tone)));
    const Rgba text = isEnabled() ? colors[Role::dialogText] : mix(colors[Role::dialogBg], colors[Role::dialogText], 0.42);
    if (!icon_.empty()) return paintIcon(painter, style_, icon_, rect(), toColor(text));
    const QFont font = style_.font(13, QFont::Medium);
    painter.setFont(font);
    painter.setPen(toColor(text));
    const QRect inside = rect().adjusted(beside, 0, -beside, 0);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip,
                     QFontMetricsF(font).elidedText(QPushButton::text(), Qt::ElideMiddle, inside.width() + 1));
}

void QuietButton::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
    event->ignore();
}

}  // namespace kiv
