#include "Editor/Views/Sheet.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

constexpr double sheetRadius = 10;
constexpr int betweenButtons = 8;

// As much of a key press as sheets care for.
KeyPress pressOf(const QKeyEvent &event) {
    KeyPress press;
    switch (event.key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            press.namedKey = "return";
            break;
        case Qt::Key_Escape:
            press.namedKey = "escape";
            break;
        case Qt::Key_Left:
            press.namedKey = "left";
            break;
        case Qt::Key_Right:
            press.namedKey = "right";
            break;
        default:
            break;
    }
    press.plain = event.text().toLower().toStdString();
    press.unmodified = event.text().toStdString();
    if (event.modifiers() & Qt::ControlModifier) press.modifiers |= Shortcut::command;
    if (event.modifiers() & Qt::AltModifier) press.modifiers |= Shortcut::option;
    if (event.modifiers() & Qt::ShiftModifier) press.modifiers |= Shortcut::shift;
    return press;
}

}  // namespace

Sheet::Sheet(ViewStyle &style, QWidget *parent) : QWidget(parent), style_(style) {
    styleChanges_ = style.changed.add([this](const ViewStyle &) { update(); });
}

bool Sheet::takeKey(const KeyPress &press) {
    if (press.namedKey == "return") return confirm(), true;
    if (press.namedKey == "escape") return cancel(), true;
    return false;
}

bool Sheet::focusNextPrevChild(bool next) {
    if (ring_.isEmpty()) return true;
    const qsizetype count = ring_.size(), at = ring_.indexOf(focusWidget());
    for (qsizetype step = 1; step <= count; ++step) {
        QWidget *candidate = ring_[(at + (next ? step : 2 * count - step)) % count];
        if (!candidate->isEnabled() || !candidate->isVisible()) continue;
        candidate->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    return true;
}

void Sheet::readInOrder(const QList<QWidget *> &children) {
    for (QWidget *child : children) child->raise();
}

void Sheet::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    paintBox(painter, rect(), sheetRadius, style_.color(AudioEditorThemeColor::dialogBg), {}, Corners::bottom);
}

void Sheet::keyPressEvent(QKeyEvent *event) { event->setAccepted(takeKey(pressOf(*event))); }

void Sheet::mousePressEvent(QMouseEvent *event) { event->accept(); }

void Sheet::wheelEvent(QWheelEvent *event) {
    if (onWheel) onWheel(event);
    event->accept();
}

namespace {

// Calls place(button, rectangle) for each; returns the lower end of the last row.
template <class Place>
int layOutRows(const QList<Button *> &buttons, int left, int right, int y, Place place) {
    int x = right, bottom = y;
    for (Button *button : buttons) {
        const QSize size = button->sizeHint();
        if (x < right && x - size.width() < left) {
            x = right;
            y = bottom + betweenButtons;
        }
        place(button, QRect(QPoint(x - size.width(), y), size));
        x -= size.width() + betweenButtons;
        bottom = y + size.height();
    }
    return bottom;
}

}  // namespace

int buttonRowsHeight(const QList<Button *> &buttons, int width) {
    return layOutRows(buttons, 0, width, 0, [](Button *, const QRect &) {});
}

void placeButtons(const QList<Button *> &buttons, int left, int right, int y) {
    layOutRows(buttons, left, right, y, [](Button *button, const QRect &place) { button->setGeometry(place); });
}

}  // namespace kiv
