#include "Editor/Views/BusyLine.h"

#include <QPainter>
#include <chrono>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 300ms;
constexpr auto between = 50ms;

}  // namespace

BusyLine::BusyLine(const ViewStyle &style, QWidget *parent) : QWidget(parent), style_(style) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(onScreen("Progress"));
    hide();
    connect(&timer_, &QTimer::timeout, this, [this] { tick(); });
}

void BusyLine::setBusy(bool isBusy, std::function<double()> fraction) {
    fraction_ = std::move(fraction);
    if (isBusy && !timer_.isActive()) timer_.start(patience);
    if (isBusy) return;
    timer_.stop();
    if (isHidden()) return;
    hide();
    if (onShown) onShown(std::nullopt);
}

void BusyLine::tick() {
    timer_.setInterval(between);
    show();
    raise();
    update();
    if (onShown) onShown(fraction_ ? fraction_() : 0);
}

void BusyLine::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const double fraction = fraction_ ? fraction_() : 0;
    fillCrisp(painter, QRectF(0, 0, width() * fraction, height()), style_.color(AudioEditorThemeColor::accentBg));
}

}  // namespace kiv
