#include "Editor/Views/OverviewPainter.h"

#include <QPainter>

#include "Editor/Views/PainterTools.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {
namespace {

using Role = AudioEditorThemeColor;

constexpr double outsideStrength = 0.42, insideOuterStrength = 0.72, boxStrength = 0.85;
// Logical pixels.
constexpr double boxRadius = 4, narrowBox = 16, gripWidth = 3, gripHeight = 14, markerHeight = 7, loopHeight = 3;

class Painting {
public:
    Painting(QPainter &painter, const OverviewScene &scene, const ThemeColors &colors, const QRect &part)
        : painter_(painter),
          scene_(scene),
          geometry_(scene.geometry),
          colors_(colors),
          part_(part),
          scale_(geometry_.size.scale),
          hair_(hairline(scale_)),
          strip_{0, geometry_.wholeColumns()} {}

    void background() {
        fill(painter_, part_, colors_.well);
        fillPart({-geometry_.left, strip_.hi}, {0, geometry_.rows.lo}, colors_.hairline);
    }

    void sound(const OverviewImage &image) {
        const PixelSpan inside = geometry_.box.value_or(strip_);
        pixels(image.outside(), image, {0, inside.lo});
        fillPart(inside, geometry_.rows, colors_[Role::waveBg]);
        pixels(image.inside(), image, inside);
        pixels(image.outside(), image, {inside.hi, strip_.hi});
    }

    void marks() {
        const ViewMarks &marks = scene_.marks;
        if (marks.selection) fillPart(*marks.selection, geometry_.rows, colors_[Role::waveSelection]);
        const int loop = devicePixels(loopHeight, scale_), tick = devicePixels(markerHeight, scale_);
        if (marks.loop)
            fillPart({marks.loop->lo, std::max(marks.loop->hi, marks.loop->lo + hair_)},
                     {geometry_.rows.hi - loop, geometry_.rows.hi}, colors_[Role::accentBg]);
        if (geometry_.box) box(*geometry_.box);
        for (const int marker : marks.markers)
            line(marker, {geometry_.rows.lo, geometry_.rows.lo + tick}, colors_[Role::waveMarker]);
        for (const int head : marks.playheads) line(head, geometry_.rows, colors_[Role::wavePlayhead]);
        if (scene_.showsCursor()) line(marks.cursor, geometry_.rows, colors_[Role::waveCursor]);
    }

private:
    QRect placed(PixelSpan columns, PixelSpan rows) const {
        return rectOf({columns.lo + geometry_.left, columns.hi + geometry_.left}, rows);
    }

    void fillPart(PixelSpan columns, PixelSpan rows, Rgba color) {
        const QRect rect = placed(columns, rows).intersected(part_);
        if (!rect.isEmpty()) fill(painter_, rect, color);
    }

    void line(int column, PixelSpan rows, Rgba color) { fillPart(lineAt(column, hair_, strip_.count()), rows, color); }

    void pixels(const Pixel *from, const OverviewImage &image, PixelSpan columns) {
        const QRect rect = placed(intersected(columns, strip_), geometry_.rows).intersected(part_);
        if (!rect.isEmpty()) drawPixels(painter_, from, image.width(), image.rows(), rect.left() - geometry_.left, rect);
    }

    void box(PixelSpan columns) {
        const double line = hair_, half = line / 2, radius = boxRadius * scale_;
        const QRectF rect = QRectF(placed(columns, {geometry_.rows.lo, geometry_.rows.hi - hair_}));
        painter_.save();
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setPen(QPen(toColor(withAlpha(colors_[Role::topbarButtonText], boxStrength)), line));
        painter_.setBrush(Qt::NoBrush);
        painter_.drawRoundedRect(rect.adjusted(half, half, -half, -half), radius, radius);
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(toColor(colors_[Role::topbarButtonText]));
        // Astride the box's sides, but outside of a box so narrow that they would fill it.
        const int width = devicePixels(gripWidth, scale_);
        const int outward = columns.count() < devicePixels(narrowBox, scale_) ? width - hair_ - (width - hair_) / 2 : 0;
        grip(columns.lo + hair_ / 2 - outward);
        grip(columns.hi - hair_ + hair_ / 2 + outward);
        painter_.restore();
    }

    void grip(int column) {
        const int width = devicePixels(gripWidth, scale_), height = devicePixels(gripHeight, scale_);
        const int left = column - width / 2, top = geometry_.lane.centreRow() - height / 2;
        painter_.drawRoundedRect(QRectF(placed({left, left + width}, {top, top + height})), width / 2.0, width / 2.0);
    }

    QPainter &painter_;
    const OverviewScene &scene_;
    const OverviewGeometry &geometry_;
    const ThemeColors &colors_;
    QRect part_;
    double scale_;
    int hair_;
    PixelSpan strip_;
};

}  // namespace

OverviewImage::Look overviewLook(const ThemeColors &colors) {
    const Pixel dimmed = toPixel(mix(colors.well, colors[Role::waveFg], outsideStrength));
    const Pixel outer = toPixel(mix(colors[Role::waveBg], colors[Role::waveFg], insideOuterStrength));
    const Pixel full = toPixel(colors[Role::waveFg]);
    return {{dimmed, dimmed, dimmed, dimmed, 0, 0}, {outer, full, outer, full, 0, 0}};
}

void paintOverview(QPainter &painter, const OverviewScene &scene, const OverviewImage &image, const ThemeColors &colors,
                   const QRect &part) {
    painter.setClipRect(part);  // what is not opaque must not be painted over itself where there are several parts
    Painting painting(painter, scene, colors, part);
    painting.background();
    painting.sound(image);
    painting.marks();
}

}  // namespace kiv
