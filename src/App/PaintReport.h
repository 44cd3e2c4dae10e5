#pragma once

#include <QObject>

class QWidget;

namespace kiv {

// Milliseconds of processor time used since the process began: at its start-up, which is loading and linking, about the time
// that has passed. To be called first in main.
double millisecondsSinceStart();

// For measuring: says on standard error when a window was first painted and when its sound was first painted whole, in
// milliseconds since the process began, and then quits.
class PaintReport : public QObject {
public:
    explicit PaintReport(double millisecondsAtMain);

    void watch(QWidget *waveform, std::function<bool()> isComplete);
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    double now() const;
    void say(const char *what) const;

    double atMain_;
    qint64 mainNs_;
    std::function<bool()> isComplete_;
    bool saidFirst_ = false, saidComplete_ = false;
};

}  // namespace kiv
