#pragma once

#include <chrono>
#include <functional>

#include "Support/Observers.h"

namespace kiv {

// The main thread's queue and clock.
class MainLoop {
public:
    virtual ~MainLoop() = default;

    // Runs a call on the main thread, soon and in order. Any thread; never blocks.
    virtual void post(std::function<void()> call) = 0;
    // Main thread only. The call is made once (again and again) after the given time, unless the subscription is gone by then.
    [[nodiscard]] virtual Subscription after(std::chrono::milliseconds delay, std::function<void()> call) = 0;
    [[nodiscard]] virtual Subscription repeat(std::chrono::milliseconds interval, std::function<void()> call) = 0;
};

}  // namespace kiv
