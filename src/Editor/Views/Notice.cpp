#include "Editor/Views/Notice.h"

#include <QAccessible>
#include <QPainter>
#include <algorithm>
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
    connect(&timer_, &QTimer::timeout, this, [this] { showNext(); });
    styleChanges_ = style.changed.add([this](const ViewStyle &) { placeOver(area_); });
}

void Notice::tell(NoticeKind kind, const QString &text) {
    if (std::ranges::find(told_, text, &Told::text) != told_.end()) return;
    told_.push_back({kind, text});
    if (told_.size() == 1) showFirst();
}

void Notice::showFirst() {
    setAccessibleName(told_.front().text);
    placeOver(area_);
    show();
    QAccessibleEvent announced(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&announced);
}

// It is hidden in between, for assistive tools are told of what appears.
void Notice::showNext() {
    hide();
    told_.pop_front();
    if (!told_.empty()) showFirst();
}

void Notice::placeOver(const QRect &area) {
    area_ = area;
    if (told_.empty()) return;
    shown_ = noticeText(told_.front().text, area.width() - 2 * above, style_);
    QRect pill(QPoint(), noticeSize(shown_, style_));
    pill.moveCenter(area.center());
    pill.moveBottom(area.bottom() - above);
    setGeometry(pill);
    shadow_->surround(pill, area.top());
    update();
}

void Notice::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    paintNotice(painter, rect(), told_.front().kind, shown_, style_);
}

void Notice::mousePressEvent(QMouseEvent *) { showNext(); }

void Notice::enterEvent(QEnterEvent *) { timer_.stop(); }

void Notice::leaveEvent(QEvent *) {
    if (isVisible()) timer_.start(shownFor);
}

void Notice::showEvent(QShowEvent *) {
    shadow_->show();
    shadow_->raise();
    raise();
    timer_.start(shownFor);
}

void Notice::hideEvent(QHideEvent *) {
    timer_.stop();
    shadow_->hide();
}

}  // namespace kiv
