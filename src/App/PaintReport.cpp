#include "App/PaintReport.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace kiv {

namespace {

qint64 monotonicNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

double millisecondsSinceStart() { return double(std::clock()) * 1000 / CLOCKS_PER_SEC; }

PaintReport::PaintReport(double millisecondsAtMain) : atMain_(millisecondsAtMain), mainNs_(monotonicNs()) {}

void PaintReport::watch(QWidget *waveform, std::function<bool()> isComplete) {
    isComplete_ = std::move(isComplete);
    waveform->installEventFilter(this);
}

double PaintReport::now() const { return atMain_ + double(monotonicNs() - mainNs_) / 1e6; }

void PaintReport::say(const char *what) const { std::fprintf(stderr, "%s %.1f\n", what, now()); }

bool PaintReport::eventFilter(QObject *, QEvent *event) {
    if (event->type() != QEvent::Paint || saidComplete_) return false;
    const bool isComplete = isComplete_();
    // The event comes before the painting; what is queued now runs after it.
    QTimer::singleShot(0, this, [this, isComplete] {
        if (!std::exchange(saidFirst_, true)) say("first-paint");
        if (!isComplete || std::exchange(saidComplete_, true)) return;
        say("complete");
        QCoreApplication::quit();
    });
    return false;
}

}  // namespace kiv
