#include "Platform/Qt/QtMainLoop.h"

#include <QPointer>
#include <QTimer>

namespace kiv {

void QtMainLoop::post(std::function<void()> call) {
    QMetaObject::invokeMethod(&context_, std::move(call), Qt::QueuedConnection);
}

Subscription QtMainLoop::after(std::chrono::milliseconds delay, std::function<void()> call) {
    return start(delay, Times::once, std::move(call));
}

Subscription QtMainLoop::repeat(std::chrono::milliseconds interval, std::function<void()> call) {
    return start(std::max(interval, std::chrono::milliseconds(1)), Times::again, std::move(call));
}

Subscription QtMainLoop::start(std::chrono::milliseconds time, Times times, std::function<void()> call) {
    auto *timer = new QTimer(&context_);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(times == Times::once);
    QObject::connect(timer, &QTimer::timeout, timer, std::move(call));
    timer->start(time);
    return Subscription([alive = QPointer<QTimer>(timer)] {
        if (!alive) return;
        alive->stop();
        alive->deleteLater();  // it may be in the middle of its call
    });
}

}  // namespace kiv
