#include "Editor/Views/LevelSliderView.h"

#include <QKeyEvent>
#include <QPainter>
#include <cmath>

#include "Editor/Surfaces/DecibelText.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/FocusRing.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double trackY = 15;  // the middle of the track, from the top
constexpr double trackHalf = 2;
constexpr int thumbRadius = 8;
constexpr double thumbHole = 2.75;
constexpr double tickTop = 23, tickHeight = 4;
constexpr int labelLine = 14, labelTop = 27, belowLabel = 3;

void paintTrack(QPainter &painter, const QRectF &rect, const LevelSlider &slider, double value, const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    const double y = rect.top() + trackY - trackHalf;
    const QColor track = toColor(mix(colors[Role::dialogBg], colors[Role::dialogText], 0.224));
    const double from = rect.left() + slider.left - trackHalf;
    paintBox(painter, QRectF(from, y, slider.width + 2 * trackHalf, 2 * trackHalf), trackHalf, track);
    const double origin = rect.left() + (slider.origin == slider.lo ? slider.left - trackHalf : slider.x(slider.origin));
    const double at = rect.left() + slider.x(value);
    if (at != origin)
        paintBox(painter, QRectF(QPointF(std::min(at, origin), y), QPointF(std::max(at, origin), y + 2 * trackHalf)),
                 slider.origin == slider.lo ? trackHalf : 0, toColor(colors[Role::accentBg]));
    painter.setFont(style.font(11));
    for (int tick = 0; tick < slider.ticks; ++tick) {
        const double x = rect.left() + slider.x(slider.tickValue(tick));
        fillCrisp(painter, QRectF(x - 1, rect.top() + tickTop, 2, tickHeight), track);
        painter.setPen(toColor(colors.dialogDim));
        painter.drawText(QRectF(x - 30, rect.top() + labelTop, 60, style.grown(labelLine)), Qt::AlignCenter | Qt::TextDontClip,
                         onScreen(slider.tickLabel(tick)));
    }
}

}  // namespace

void paintLevelSlider(QPainter &painter, const QRectF &rect, const LevelSlider &slider, double value, const ViewStyle &style) {
    paintTrack(painter, rect, slider, value, style);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QPointF thumb(rect.left() + slider.x(value), rect.top() + trackY);
    painter.setBrush(style.color(Role::dialogText));
    painter.drawEllipse(thumb, thumbRadius, thumbRadius);
    painter.setBrush(style.color(Role::dialogBg));
    painter.drawEllipse(thumb, thumbHole, thumbHole);
}

LevelSliderView::LevelSliderView(ViewStyle &style, const LevelSlider &slider, QWidget *parent)
    : ValueControl(style, parent), slider_(slider), facts_{0, slider.lo, slider.hi, levelStepDb} {
    input().onOpen = nullptr;  // there is a field beside it
    input().onFollow = [this](const PointerEvent &at) { setFromOutside(slider_.value(at.x)); };
}

int LevelSliderView::heightFor(const ViewStyle &style) { return labelTop + style.grown(labelLine) + belowLabel; }

void LevelSliderView::setLevel(double db) {
    if (db == facts_.value) return;
    facts_.value = db;
    placeThumb();
    tellValueChanged();
}

// The thumb alone wears the focus ring.
void LevelSliderView::placeThumb() {
    const QPoint thumb(int(std::lround(slider_.x(facts_.value))), int(trackY));
    FocusRing::setPlace(*this, QRect(thumb - QPoint(thumbRadius, thumbRadius), QSize(2 * thumbRadius, 2 * thumbRadius)));
}

QString LevelSliderView::valueText() const { return onScreen(decibelText(facts_.value)); }

void LevelSliderView::resizeEvent(QResizeEvent *) {
    slider_.left = beside;
    slider_.width = std::max(1, width() - 2 * beside);
    placeThumb();
}

void LevelSliderView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    paintLevelSlider(painter, rect(), slider_, facts_.value, style());
}

// To the right is up.
void LevelSliderView::keyPressEvent(QKeyEvent *event) {
    const bool isSmall = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
        case Qt::Key_Left:
        case Qt::Key_Right:
            input().key(event->key() == Qt::Key_Left ? ValueKey::down : ValueKey::up, isSmall);
            return;
        case Qt::Key_Home:
            return setFromOutside(slider_.lo);
        case Qt::Key_End:
            return setFromOutside(slider_.hi);
        default:
            event->ignore();
    }
}

}  // namespace kiv
