#include "Editor/Views/Icons.h"

#include <QPainter>
#include <QSvgRenderer>
#include <cmath>
#include <string>

#include "Editor/Views/Resources.h"

namespace kiv {

namespace {

// The outlines of one symbol as a picture of its own, its colour written in.
QByteArray documentOf(std::string_view name, const QColor &color) {
    const std::string_view all = Resources::interfaceIcons();
    const auto at = all.find("<symbol id=\"" + std::string(name) + "\"");
    if (at == all.npos) return {};
    const auto from = all.find('>', at) + 1;
    const std::string_view body = all.substr(from, all.find("</symbol>", from) - from);
    QByteArray svg =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 16 16\"><g fill=\"none\" stroke=\"currentColor\" "
        "stroke-width=\"1.5\" stroke-linecap=\"round\" stroke-linejoin=\"round\">";
    svg += QByteArray(body.data(), qsizetype(body.size())) + "</g></svg>";
    return svg.replace("currentColor", color.name(QColor::HexRgb).toUtf8());
}

QPixmap rendered(const QByteArray &svg, int size, double ratio) {
    const int pixels = int(std::lround(size * ratio));
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(svg).render(&painter, QRectF(0, 0, pixels, pixels));
    painter.end();
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

}  // namespace

QPixmap Icons::pixmap(std::string_view name, int size, double ratio, const QColor &color) {
    const QString key = QString::fromUtf8(name.data(), qsizetype(name.size())) + ' ' + QString::number(size) + ' ' +
                        QString::number(ratio) + ' ' + QString::number(color.rgb(), 16);
    const auto found = drawn_.constFind(key);
    if (found != drawn_.constEnd()) return *found;
    const QByteArray svg = documentOf(name, color);
    return *drawn_.insert(key, svg.isEmpty() ? QPixmap() : rendered(svg, size, ratio));
}

QPixmap applicationIcon(int size, double ratio) {
    const std::string_view svg = Resources::applicationIcon();
    return rendered(QByteArray(svg.data(), qsizetype(svg.size())), size, ratio);
}

}  // namespace kiv
