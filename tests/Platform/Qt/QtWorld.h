#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <functional>

namespace kiv {

// Lets Qt's events run until something has come true; false: it did not within the time.
inline bool waitUntil(const std::function<bool()> &isTrue, int atMostMs = 10'000) {
    QElapsedTimer time;
    for (time.start(); !isTrue() && time.elapsed() < atMostMs;) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return isTrue();
}

}  // namespace kiv
