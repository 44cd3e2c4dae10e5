#include "Editor/Views/PainterTools.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QWidget>
#include <cmath>

#include "Editor/Views/ViewStyle.h"

namespace kiv {
namespace {

constexpr std::size_t textsKept = 256;

}  // namespace

ViewSize viewSize(const QWidget &view, const ViewStyle &style) {
    return {double(view.width()), double(view.height()), view.devicePixelRatioF(), style.textFactor()};
}

void updateDamaged(QWidget &view, const Damage &damage, int left) {
    if (damage.everything) view.update();
    for (const PixelSpan &strip : damage.strips)
        view.update(toLogical({strip.lo + left, strip.hi + left}, view.height(), view.devicePixelRatioF()));
}

void useDevicePixels(QPainter &painter) {
    painter.resetTransform();
    const QTransform device = painter.deviceTransform();
    const double ratio = device.m11();
    painter.setTransform(QTransform(1 / ratio, 0, 0, 1 / ratio, (std::round(device.dx()) - device.dx()) / ratio,
                                    (std::round(device.dy()) - device.dy()) / ratio));
}

QRect toDevice(const QRect &logical, double scale) {
    const int left = int(std::floor(logical.left() * scale)), top = int(std::floor(logical.top() * scale));
    const int right = int(std::ceil((logical.left() + logical.width()) * scale));
    const int bottom = int(std::ceil((logical.top() + logical.height()) * scale));
    return {left, top, right - left, bottom - top};
}

QRect toLogical(PixelSpan columns, int height, double scale) {
    const int left = int(std::floor(columns.lo / scale)), right = int(std::ceil(columns.hi / scale));
    return {left, 0, right - left, height};
}

QRect rectOf(PixelSpan columns, PixelSpan rows) { return {columns.lo, rows.lo, columns.count(), rows.count()}; }

void fill(QPainter &painter, const QRect &rect, Rgba color) { painter.fillRect(rect, toColor(color)); }

void drawPixels(QPainter &painter, const Pixel *pixels, int width, int rows, int fromColumn, const QRect &place) {
    const QImage image(reinterpret_cast<const uchar *>(pixels), width, rows, width * int(sizeof(Pixel)),
                       QImage::Format_ARGB32_Premultiplied);
    painter.drawImage(place.topLeft(), image, QRect(fromColumn, place.top(), place.width(), place.height()));
}

Pixel toPixel(Rgba color) { return qPremultiply(qRgba(color >> 24, color >> 16 & 255, color >> 8 & 255, color & 255)); }

const QStaticText &TextCache::layout(const QFont &font, const std::string &text) {
    if (texts_.size() > textsKept) texts_.clear();
    const auto [place, isNew] = texts_.try_emplace({font.key(), text});
    if (isNew) {
        place->second.setTextFormat(Qt::PlainText);
        place->second.setText(QString::fromStdString(text));
        place->second.prepare({}, font);
    }
    return place->second;
}

// `before` is the part of the text's width that stands left of x.
void TextCache::draw(QPainter &painter, const QFont &font, const std::string &text, double x, double baseline, double scale,
                     double before) {
    const QStaticText &layout = this->layout(font, text);
    const QTransform transform = painter.transform();
    painter.resetTransform();
    painter.setFont(font);
    const double ascent = QFontMetricsF(font).ascent();
    painter.drawStaticText(QPointF(x / scale - before * layout.size().width(), baseline / scale - ascent), layout);
    painter.setTransform(transform);
}

void TextCache::drawLeft(QPainter &painter, const QFont &font, const std::string &text, double x, double baseline,
                         double scale) {
    draw(painter, font, text, x, baseline, scale, 0);
}

void TextCache::drawRight(QPainter &painter, const QFont &font, const std::string &text, double x, double baseline,
                          double scale) {
    draw(painter, font, text, x, baseline, scale, 1);
}

void TextCache::drawCentred(QPainter &painter, const QFont &font, const std::string &text, double x, double baseline,
                            double scale) {
    draw(painter, font, text, x, baseline, scale, 0.5);
}

}  // namespace kiv
