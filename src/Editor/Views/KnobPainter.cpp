#include "Editor/Views/KnobPainter.h"

#include <QPainter>

#include "Editor/Surfaces/KnobGeometry.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/DigitText.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double pointerOffTone = 0.56, offTextTone = 0.72, disabledTone = 0.42;
constexpr double pointerWidth = 2;

// Angles of the painter are in sixteenths of a degree, 0 at three o'clock, counter-clockwise.
void strokeArc(QPainter &painter, const QPointF &centre, KnobGeometry::Arc arc, const QColor &color) {
    constexpr double radius = KnobGeometry::trackRadius;
    painter.setPen(QPen(color, KnobGeometry::track, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(QRectF(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius), int((90 - arc.from) * 16),
                    int(-arc.sweep * 16));
}

// Between what the knob stands on and the text's colour.
QColor tone(double t, const KnobLook &look, const ThemeColors &colors) {
    return toColor(mix(look.ground.value_or(colors[Role::dialogBg]), colors[Role::dialogText], t));
}

}  // namespace

void paintKnob(QPainter &painter, const QRectF &box, const KnobScene &scene, const KnobLook &look, const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    const auto toneOf = [&](double t) { return tone(t, look, colors); };
    const bool isLive = scene.isOn && look.isEnabled;
    const QPointF corner(box.left() + (box.width() - KnobGeometry::width) / 2, box.top());
    const auto place = [&](KnobGeometry::Point point) { return corner + QPointF(point.x, point.y); };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF centre = place(KnobGeometry::centre());
    strokeArc(painter, centre, KnobGeometry::arc(0, 1), toneOf(colors.isDark ? 0.19 : 0.21));
    if (scene.fraction != scene.origin)
        strokeArc(painter, centre, KnobGeometry::arc(scene.origin, scene.fraction),
                  isLive ? style.color(Role::accentBg) : toneOf(colors.isDark ? 0.42 : 0.50));
    painter.setPen(Qt::NoPen);
    const double lift = look.isDragged ? 0.16 : look.isHovered && look.isEnabled ? 0.06 : 0;
    painter.setBrush(toneOf((colors.isDark ? 0.09 : 0.12) + lift));
    painter.drawEllipse(centre, KnobGeometry::faceRadius, KnobGeometry::faceRadius);
    painter.setPen(
        QPen(isLive ? style.color(Role::dialogText) : toneOf(pointerOffTone), pointerWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(place(KnobGeometry::at(scene.fraction, KnobGeometry::pointerFrom)),
                     place(KnobGeometry::at(scene.fraction, KnobGeometry::pointerTo)));
    painter.restore();
}

void paintKnobText(QPainter &painter, const QRectF &line, const KnobScene &scene, const KnobLook &look,
                   const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    const double t = !look.isEnabled ? disabledTone : scene.isOn ? 1 : offTextTone;
    paintDigitText(painter, line, Qt::AlignHCenter, style.font(11), tone(t, look, colors), onScreen(scene.text));
}

}  // namespace kiv
