#include "Editor/Views/RulerPainter.h"

#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <algorithm>

#include "Editor/Views/ViewStyle.h"

namespace kiv {
namespace {

using Role = AudioEditorThemeColor;

constexpr double tickStrength = 0.55;
// Logical pixels.
constexpr double labelledTick = 8, middleTick = 6, minorTick = 4;
constexpr double labelAfterTick = 5, baselineAboveFoot = 8, unitLeft = 10;
constexpr int textSize = 11;
constexpr double playheadWidth = 2, playheadHeadWidth = 12, playheadHeadHeight = 8;
constexpr double cursorHeadWidth = 10, cursorHeadHeight = 7;
constexpr double flagTop = 1, flagWidth = 11, flagShoulder = 8, flagHeight = 9;
constexpr double loopBarFoot = 1, loopBarHeight = 4, tabWidth = 9, tabHeight = 13, tabRadius = 5;

class Painting {
public:
    Painting(QPainter &painter, const RulerScene &scene, const ViewStyle &style, TextCache &texts, const QRect &part)
        : painter_(painter),
          scene_(scene),
          geometry_(scene.geometry),
          style_(style),
          colors_(style.colors()),
          texts_(texts),
          part_(part),
          scale_(geometry_.size.scale),
          left_(geometry_.left),
          hair_(hairline(scale_)),
          strip_{left_, left_ + geometry_.wholeColumns()},
          loopColor_(scene.editsLoop ? colors_[Role::accentBg] : colors_.loopMark) {
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setPen(Qt::NoPen);
    }

    void background() {
        const PixelSpan all{0, strip_.hi}, foot{geometry_.lane.hi - hair_, geometry_.lane.hi};
        fillPart(all, {0, geometry_.lane.hi}, colors_[Role::rulerBg]);
        fillPart(all, {0, hair_}, colors_.hairline);
        fillPart(strip_, geometry_.lane, colors_.lane);
        fillPart({left_ - hair_, left_}, geometry_.lane, colors_.edge);
        fillPart({0, left_}, foot, colors_.hairline);
        // In the middle where the corner is narrow for it.
        const double spare = left_ - texts_.width(style_.font(textSize), scene_.unit, scale_);
        text(scene_.unit, std::min(unitLeft * scale_, spare / 2));
    }

    void ticks() {
        const Rgba color = mix(colors_[Role::rulerBg], colors_[Role::rulerText], tickStrength);
        for (const TimeTick &tick : scene_.ticks) {
            const int x = left_ + tick.x, foot = geometry_.ruler.hi;
            fillPart(intersected({x, x + hair_}, strip_), {foot - tickHeight(tick.kind), foot}, color);
            if (!tick.label.empty()) label(tick.label, x + labelAfterTick * scale_);
        }
    }

    void loop() {
        if (!scene_.marks.loop) return;
        painter_.save();
        painter_.setClipRect(rectOf(strip_, geometry_.lane), Qt::IntersectClip);
        const int lo = left_ + scene_.marks.loop->lo, hi = left_ + scene_.marks.loop->hi + hair_;
        const int foot = geometry_.lane.hi - devicePixels(loopBarFoot, scale_), width = devicePixels(tabWidth, scale_);
        const int top = foot - devicePixels(tabHeight, scale_), radius = devicePixels(tabRadius, scale_);
        fillPart({lo, hi}, {foot - devicePixels(loopBarHeight, scale_), foot}, loopColor_);
        tab(QRectF(lo, top, width, foot - top), QRectF(lo, top, width - radius, radius), radius);
        tab(QRectF(hi - width, top, width, foot - top), QRectF(hi - width + radius, top, width - radius, radius), radius);
        painter_.restore();
    }

    void markers() {
        painter_.save();
        painter_.setClipRect(rectOf(strip_, geometry_.lane), Qt::IntersectClip);
        const int top = geometry_.lane.lo + devicePixels(flagTop, scale_);
        for (const int marker : scene_.marks.markers) {
            const int line = left_ + lineAt(marker, hair_, strip_.count()).lo;
            const double x = line;
            if (x + flagWidth * scale_ < part_.left() || x > part_.right()) continue;
            fillPart({line, line + hair_}, {top, geometry_.lane.hi}, colors_[Role::waveMarker]);
            const int height = devicePixels(flagHeight, scale_);
            const double shoulder = x + devicePixels(flagShoulder, scale_), tip = x + devicePixels(flagWidth, scale_);
            polygon({{x, double(top)},
                     {shoulder, double(top)},
                     {tip, top + height / 2.0},
                     {shoulder, double(top + height)},
                     {x, double(top + height)}},
                    colors_[Role::waveMarker]);
        }
        painter_.restore();
    }

    void cursor() {
        const int column = scene_.marks.cursor, foot = geometry_.ruler.hi;
        if (column < 0 || column >= strip_.count()) return;
        const int x = left_ + lineAt(column, hair_, strip_.count()).lo;
        const int top = foot - devicePixels(cursorHeadHeight + 1, scale_);
        triangle(x + hair_ / 2.0, top, cursorHeadWidth, cursorHeadHeight, colors_[Role::waveCursor]);
        fillPart({x, x + hair_}, {top, geometry_.lane.hi}, colors_[Role::waveCursor]);
    }

    void playheads() {
        const int width = devicePixels(playheadWidth, scale_);
        for (const int head : scene_.marks.playheads) {
            if (head < 0 || head > strip_.count()) continue;
            const int x = left_ + lineAt(head, width, strip_.count(), width / 2).lo;
            triangle(x + width / 2.0, hair_, playheadHeadWidth, playheadHeadHeight, colors_[Role::wavePlayhead]);
            fillPart({x, x + width}, {hair_, geometry_.lane.hi}, colors_[Role::wavePlayhead]);
        }
    }

private:
    int tickHeight(TimeTick::Kind kind) const {
        const double height = kind == TimeTick::Kind::labelled ? labelledTick
                              : kind == TimeTick::Kind::middle ? middleTick
                                                               : minorTick;
        return devicePixels(height, scale_);
    }

    void fillPart(PixelSpan columns, PixelSpan rows, Rgba color) {
        const QRect rect = rectOf(columns, rows).intersected(part_);
        if (!rect.isEmpty()) fill(painter_, rect, color);
    }

    // A long one that the view's side would cut off is left out.
    void label(const std::string &label, double x) {
        if (x + texts_.width(style_.font(textSize), label, scale_) <= strip_.hi) text(label, x);
    }

    void text(const std::string &text, double x) {
        painter_.setPen(style_.color(Role::rulerText));
        texts_.drawLeft(painter_, style_.font(textSize), text, x, geometry_.ruler.hi - baselineAboveFoot * scale_, scale_);
        painter_.setPen(Qt::NoPen);
    }

    void polygon(const QPolygonF &points, Rgba color) {
        painter_.setBrush(toColor(color));
        painter_.drawPolygon(points);
    }

    // Pointing down.
    void triangle(double x, double top, double width, double height, Rgba color) {
        const double half = width * scale_ / 2;
        polygon({{x - half, top}, {x + half, top}, {x, top + height * scale_}}, color);
    }

    // A box with one round upper corner: the other one is filled up.
    void tab(const QRectF &box, const QRectF &squareCorner, int radius) {
        QPainterPath path;
        path.setFillRule(Qt::WindingFill);
        path.addRoundedRect(box, radius, radius);
        path.addRect(squareCorner);
        path.addRect(box.adjusted(0, radius, 0, 0));
        painter_.fillPath(path, toColor(loopColor_));
    }

    QPainter &painter_;
    const RulerScene &scene_;
    const RulerGeometry &geometry_;
    const ViewStyle &style_;
    const ThemeColors &colors_;
    TextCache &texts_;
    QRect part_;
    double scale_;
    int left_, hair_;
    PixelSpan strip_;
    Rgba loopColor_;
};

}  // namespace

void paintRuler(QPainter &painter, const RulerScene &scene, const ViewStyle &style, TextCache &texts, const QRect &part) {
    painter.setClipRect(part);  // what is not opaque must not be painted over itself where there are several parts
    Painting painting(painter, scene, style, texts, part);
    painting.background();
    painting.ticks();
    painting.loop();
    painting.markers();
    painting.cursor();
    painting.playheads();
}

}  // namespace kiv
