#include "Editor/Views/ScrollBar.h"

#include <QPainter>
#include <QStyleOptionSlider>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

constexpr int thumbWidth = 6;
constexpr double restTone = 0.35, touchedTone = 0.5;

}  // namespace

ScrollBar::ScrollBar(ViewStyle &style, QWidget *parent) : QScrollBar(Qt::Vertical, parent), style_(style) {
    setAttribute(Qt::WA_Hover);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    styleChanges_ = style.changed.add([this](const ViewStyle &) { update(); });
}

void ScrollBar::paintEvent(QPaintEvent *) {
    if (minimum() == maximum()) return;
    QPainter painter(this);
    QStyleOptionSlider option;
    initStyleOption(&option);
    QRectF thumb = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    thumb.setWidth(thumbWidth);
    thumb.moveLeft(0);
    const ThemeColors &colors = style_.colors();
    const double tone = isSliderDown() || underMouse() ? touchedTone : restTone;
    const Rgba fill = mix(colors[AudioEditorThemeColor::dialogBg], colors[AudioEditorThemeColor::dialogText], tone);
    paintBox(painter, thumb, thumbWidth / 2.0, toColor(fill));
}

}  // namespace kiv
