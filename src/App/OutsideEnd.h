#pragma once

#include <QObject>
#include <QSessionManager>
#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace kiv {

// What ends the program from outside: a signal; the desktop, which ends its session in two steps: first it lets every program
// save what it has or ask about it, and may call the end off; then it lets them die; or the loss of the screen, at which Qt
// ends the program on the spot. Main thread only; one of them may be there, beside the application.
class OutsideEnd : public QObject {
public:
    OutsideEnd();
    ~OutsideEnd() override;

    std::function<void()> onSignal;
    std::function<void(QSessionManager &)> onSessionEnds;  // the desktop waits for the return
    std::function<void()> onDie;
    std::function<void()> onExit;  // the last call: no event comes any more

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void catchSignals();

    std::unique_ptr<QSocketNotifier> signals_;
};

}  // namespace kiv
