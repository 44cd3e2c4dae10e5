#include "Editor/Views/FloatShadow.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

namespace kiv {

FloatShadow::FloatShadow(ViewStyle &style, double radius, Corners corners, QWidget *parent)
    : QWidget(parent), style_(style), radius_(radius), corners_(corners) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    styleChanges_ = style.changed.add([this](const ViewStyle &) {
        cache_ = {};
        update();
    });
}

void FloatShadow::surround(const QRect &box, int top) {
    QRect area = box.adjusted(-shadowExtent, -shadowExtent, shadowExtent, shadowExtent + shadowDrop);
    if (area.top() < top) area.setTop(top);
    const QRect inside = box.translated(-area.topLeft());
    if (inside.size() != box_.size() || inside.topLeft() != box_.topLeft()) cache_ = {};
    box_ = inside;
    setGeometry(area);
}

QPixmap FloatShadow::drawn(double ratio) const {
    QPixmap pixmap(size() * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paintShadow(painter, box_, style_);
    const double radius = std::min(radius_, box_.height() / 2.0) + 1;
    paintBox(painter, QRectF(box_).adjusted(-1, -1, 1, 1), radius, toColor(style_.colors().panelEdge), {}, corners_);
    return pixmap;
}

void FloatShadow::paintEvent(QPaintEvent *event) {
    const double ratio = devicePixelRatioF();
    if (cache_.isNull() || cache_.devicePixelRatio() != ratio) cache_ = drawn(ratio);
    QPainter painter(this);
    const QRectF part = event->rect();
    painter.drawPixmap(part, cache_, QRectF(part.topLeft() * ratio, part.size() * ratio));
}

}  // namespace kiv
