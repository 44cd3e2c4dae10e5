#include "Editor/Views/Notice.h"

#include <QAccessible>
#include <QPainter>
#include <chrono>

#include "Editor/Views/FloatPainter.h"

namespace kiv {

namespace {

using namespace std::chrono_literals;

constexpr auto shownFor = 4s;
constexpr int above = 24;  // over the foot of the area
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

void Notice::tell(NoticeKind kind, const QString &text) {
    kind_ = kind;
    text_ = text;
    setAccessibleName(text);
    placeOver(area_);
    hide();  // assistive tools are told when it appears, also in the place of another
    show();
    timer_.start(shownFor);
    QAccessibleEvent announced(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&announced);
}

void Notice::placeOver(const QRect &area) {
    area_ = area;
    shown_ = noticeText(text_, area.width() - 2 * above, style_);
    QRect pill(QPoint(), noticeSize(shown_, style_));
    pill.moveCenter(area.center());
    pill.moveBottom(area.bottom() - above);
    setGeometry(pill);
    shadow_->surround(pill, area.top());
    update();
}

void Notice::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    paintNotice(painter, rect(), kind_, shown_, style_);
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
