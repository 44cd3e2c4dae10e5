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
    const bool isAll = corners == Corners::all, isBottom = corners == Corners::bottom;
    const double topLeft = isAll || corners == Corners::left ? 2 * radius : 0;
    const double topRight = isAll || corners == Corners::right ? 2 * radius : 0;
    const double bottomRight = isBottom ? 2 * radius : topRight, bottomLeft = isBottom ? 2 * radius : topLeft;
    QPainterPath path(QPointF(rect.left(), rect.top() + topLeft / 2));
    if (topLeft > 0) path.arcTo(rect.left(), rect.top(), topLeft, topLeft, 180, -90);
    path.lineTo(rect.right() - topRight / 2, rect.top());
    if (topRight > 0) path.arcTo(rect.right() - topRight, rect.top(), topRight, topRight, 90, -90);
    path.lineTo(rect.right(), rect.bottom() - bottomRight / 2);
    if (bottomRight > 0) path.arcTo(rect.right() - bottomRight, rect.bottom() - bottomRight, bottomRight, bottomRight, 0, -90);
    path.lineTo(rect.left() + bottomLeft / 2, rect.bottom());
    if (bottomLeft > 0) path.arcTo(rect.left(), rect.bottom() - bottomLeft, bottomLeft, bottomLeft, 270, -90);
    path.closeSubpath();
    return path;
}

void paintBox(QPainter &painter, const QRectF &rect, double radius, const QColor &fill, const QColor &border, Corners corners,
              double borderWidth) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outer = snapped(painter, rect);
    const double line = lineWidth(painter, borderWidth);
    if (border.isValid()) painter.fillPath(roundedPath(outer, radius, corners), border);
    const QRectF inner = border.isValid() ? outer.adjusted(line, line, -line, -line) : outer;
    painter.fillPath(roundedPath(inner, border.isValid() ? std::max(0.0, radius - line) : radius, corners), fill);
    painter.restore();
}

void paintFramed(QPainter &painter, const QRectF &rect, double radius, const QColor &fill, const QColor &frame) {
    constexpr double width = 2;
    paintBox(painter, rect.adjusted(-width, -width, width, width), radius + width, frame);
    paintBox(painter, rect, radius, fill);
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
