#include "Editor/Views/SheetHost.h"

#include <QEasingCurve>
#include <cmath>

namespace kiv {

namespace {

constexpr int slideMs = 120;
constexpr double sheetRadius = 10;
constexpr int beside = 16;  // kept free at both sides

}  // namespace

SheetHost::SheetHost(ViewStyle &style, QWidget *window)
    : style_(style), clip_(new QWidget(window)), shadow_(new FloatShadow(style, sheetRadius, Corners::bottom, window)) {
    clip_->hide();
    shadow_->hide();
    slide_.setDuration(slideMs);
    slide_.setStartValue(0.0);
    slide_.setEndValue(1.0);
    slide_.setEasingCurve(QEasingCurve::OutCubic);
    QObject::connect(&slide_, &QVariantAnimation::valueChanged, clip_,
                     [this](const QVariant &value) { place(value.toDouble()); });
}

SheetHost::~SheetHost() = default;

void SheetHost::show(std::unique_ptr<Sheet> sheet) {
    waiting_.push_back(std::move(sheet));
    if (sheet_) return;
    if (onFirst) onFirst();
    showNext();
}

void SheetHost::showNext() {
    sheet_ = waiting_.front().release();
    waiting_.pop_front();
    sheet_->setParent(clip_);
    sheet_->onWheel = onWheel;
    sheet_->onSizeChanged = [this] { place(shown_); };
    const bool slides = !style_.reducesMotion() && clip_->window()->isVisible();
    place(slides ? 0 : 1);  // before it is shown, lest the pointer touches controls that have no place yet
    sheet_->show();
    shadow_->show();
    shadow_->raise();
    clip_->show();
    clip_->raise();
    if (slides) slide_.start();
    sheet_->takeFocus();
    if (onShown) onShown(*sheet_);
}

void SheetHost::dismiss() {
    if (!sheet_) return;
    slide_.stop();
    sheet_->onSizeChanged = nullptr;  // it lives a little longer
    sheet_->hide();
    sheet_->deleteLater();
    sheet_ = nullptr;
    if (!waiting_.empty()) return showNext();
    clip_->hide();
    shadow_->hide();
    if (onGone) onGone();
}

void SheetHost::dismissAll() {
    waiting_.clear();
    dismiss();
}

void SheetHost::setRoom(const QRect &room) {
    room_ = room;
    if (sheet_) place(shown_);
}

void SheetHost::place(double progress) {
    shown_ = progress;
    const QSize size = sheet_->sizeFor(room_.size() - QSize(2 * beside, 0));
    const int visible = int(std::lround(size.height() * progress));
    const QRect box(room_.left() + (room_.width() - size.width()) / 2, room_.top(), size.width(), visible);
    clip_->setGeometry(box);
    sheet_->setGeometry(0, visible - size.height(), size.width(), size.height());
    shadow_->surround(box, room_.top() - 1);  // its edge lies on the bar's last row
}

}  // namespace kiv
