#pragma once

#include <QObject>

#include "Platform/MainLoop.h"

namespace kiv {

// The loop of the thread it is made on, which runs Qt's events. Timers are as fine as the system's.
class QtMainLoop : public MainLoop {
public:
    void post(std::function<void()> call) override;
    [[nodiscard]] Subscription after(std::chrono::milliseconds delay, std::function<void()> call) override;
    [[nodiscard]] Subscription repeat(std::chrono::milliseconds interval, std::function<void()> call) override;

private:
    enum class Times { once, again };
    Subscription start(std::chrono::milliseconds time, Times times, std::function<void()> call);

    QObject context_;  // what is posted goes with it
};

}  // namespace kiv
