#include "Editor/Views/CrispPainting.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

namespace kiv {

namespace {

double ratioOf(const QPainter &painter) { return painter.device()->devicePixelRatioF(); }

// How much of a blurred edge pair covers each pixel centre of a row: the difference of two error functions.
std::vector<double> blurredSpan(int pixels, double lo, double hi, double sigma) {
    std::vector<double> cover(static_cast<std::size_t>(pixels));
    const auto edge = [&](double distance) { return 0.5 * (1 + std::erf(distance / (sigma * std::sqrt(2.0)))); };
    for (int i = 0; i < pixels; ++i) cover[std::size_t(i)] = edge(i + 0.5 - lo) - edge(i + 0.5 - hi);
    return cover;
}

}  // namespace

QRectF snapped(const QPainter &painter, const QRectF &rect) {
    const QTransform toDevice = painter.deviceTransform();
    const QRectF device = toDevice.mapRect(rect);
    const QPointF topLeft(std::round(device.left()), std::round(device.top()));
    const QPointF bottomRight(std::round(device.right()), std::round(device.bottom()));
    return toDevice.inverted().mapRect(QRectF(topLeft, bottomRight));
}

double lineWidth(const QPainter &painter, double width) {
    const double ratio = ratioOf(painter);
    return std::max(1.0, std::floor(width * ratio)) / ratio;
}

void fillCrisp(QPainter &painter, const QRectF &rect, const QColor &color) { painter.fillRect(snapped(painter, rect), color); }

QPainterPath roundedPath(const QRectF &rect, double radius, Corners corners) {
    QPainterPath path;
    if (corners == Corners::all) {
        path.addRoundedRect(rect, radius, radius);
        return path;
    }
    path.addRect(rect);
    if (corners == Corners::none) return path;
    // The rounded box, with its square side or sides filled up.
    QPainterPath rounded;
    rounded.addRoundedRect(rect, radius, radius);
    QRectF square = rect;
    if (corners == Corners::left) square.setLeft(rect.left() + radius);
    if (corners == Corners::right) square.setRight(rect.right() - radius);
    if (corners == Corners::bottom) square.setBottom(rect.bottom() - radius);
    QPainterPath rest;
    rest.addRect(square);
    return rounded.united(rest);
}

void paintBox(QPainter &painter, const QRectF &rect, double radius, const QColor &fill, const QColor &border,
              Corners corners) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outer = snapped(painter, rect);
    const double line = lineWidth(painter);
    if (border.isValid()) painter.fillPath(roundedPath(outer, radius, corners), border);
    const QRectF inner = border.isValid() ? outer.adjusted(line, line, -line, -line) : outer;
    painter.fillPath(roundedPath(inner, border.isValid() ? std::max(0.0, radius - line) : radius, corners), fill);
    painter.restore();
}

void paintIcon(QPainter &painter, const ViewStyle &style, std::string_view name, const QRectF &rect, const QColor &color,
               int size) {
    const QPixmap icon = style.icon(name, color, ratioOf(painter), size);
    const QRectF place(rect.center() - QPointF(size / 2.0, size / 2.0), QSizeF(size, size));
    painter.drawPixmap(snapped(painter, place).topLeft(), icon);
}

void paintShadow(QPainter &painter, const QRectF &box, const ViewStyle &style) {
    const double ratio = ratioOf(painter);
    const QRectF area = box.adjusted(-shadowExtent, -shadowExtent, shadowExtent, shadowExtent + shadowDrop);
    const int width = int(std::ceil(area.width() * ratio)), height = int(std::ceil(area.height() * ratio));
    const double sigma = shadowExtent / 2.0 * ratio;
    const auto across = blurredSpan(width, shadowExtent * ratio, (shadowExtent + box.width()) * ratio, sigma);
    const double top = (shadowExtent + shadowDrop) * ratio;
    const auto down = blurredSpan(height, top, top + box.height() * ratio, sigma);
    const QColor color = toColor(style.colors().shadow);
    QImage shadow(width, height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < height; ++y) {
        auto *row = reinterpret_cast<QRgb *>(shadow.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const double alpha = color.alphaF() * across[std::size_t(x)] * down[std::size_t(y)];
            row[x] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), int(std::lround(alpha * 255))));
        }
    }
    shadow.setDevicePixelRatio(ratio);
    painter.drawImage(area.topLeft(), shadow);
}

}  // namespace kiv
