#include "Editor/Views/Notice.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QPainter>
#include <chrono>
#include <cmath>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;
using namespace std::chrono_literals;

constexpr auto shownFor = 4s;
constexpr int padding = 16;
constexpr int textStart = 43;  // after the check mark
constexpr int above = 24;      // over the foot of the area
constexpr double roundEnds = 1000;

}  // namespace

Notice::Notice(ViewStyle &style, QWidget *parent)
    : QWidget(parent), style_(style), shadow_(new FloatShadow(style, roundEnds, Corners::all, parent)) {
    hide();
    shadow_->hide();
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] { hide(); });
    styleChanges_ = style.changed.add([this](const ViewStyle &) { placeOver(area_); });
}

QSize Notice::pillSize() const {
    const double text = QFontMetricsF(style_.font(13)).horizontalAdvance(text_);
    return {textStart + int(std::ceil(text)) + padding, style_.grown(36)};
}

void Notice::tell(const QString &text) {
    text_ = text;
    setAccessibleName(text);
    placeOver(area_);
    show();
    timer_.start(shownFor);
    QAccessibleEvent announced(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&announced);
}

void Notice::placeOver(const QRect &area) {
    area_ = area;
    QRect pill(QPoint(), pillSize());
    pill.moveCenter(area.center());
    pill.moveBottom(area.bottom() - above);
    setGeometry(pill);
    shadow_->surround(pill, area.top());
    update();
}

void Notice::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    paintBox(painter, rect(), height() / 2.0, style_.color(Role::dialogBg));
    const QColor text = style_.color(Role::dialogText);
    paintIcon(painter, style_, "check", QRectF(padding, 0, 16, height()), text);
    painter.setFont(style_.font(13));
    painter.setPen(text);
    painter.drawText(rect().adjusted(textStart, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, text_);
}

void Notice::mousePressEvent(QMouseEvent *) { hide(); }

void Notice::enterEvent(QEnterEvent *) { timer_.stop(); }

void Notice::leaveEvent(QEvent *) {
    if (isVisible()) timer_.start(shownFor);
}

void Notice::showEvent(QShowEvent *) {
    shadow_->show();
    shadow_->raise();
    raise();
}

void Notice::hideEvent(QHideEvent *) {
    timer_.stop();
    shadow_->hide();
}

}  // namespace kiv
