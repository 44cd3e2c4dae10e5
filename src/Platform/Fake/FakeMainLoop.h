#pragma once

#include <condition_variable>
#include <deque>
#include <list>
#include <memory>
#include <mutex>

#include "Platform/MainLoop.h"

namespace kiv {

// A main loop that runs when it is told to, with a clock that is turned by hand. post() may be called from any thread, all else
// belongs to the one thread that plays the main thread.
class FakeMainLoop : public MainLoop {
public:
    using Time = std::chrono::milliseconds;

    void post(std::function<void()> call) override;
    [[nodiscard]] Subscription after(Time delay, std::function<void()> call) override;
    [[nodiscard]] Subscription repeat(Time interval, std::function<void()> call) override;

    // Runs what has been posted, and what is posted meanwhile. Returns how many calls that were.
    int runPosts();
    // Lets time pass: timers fire each at its own time, in order, and posts run before, between and after them.
    void advance(Time time);
    // Waits, on the real clock, until something has been posted by another thread, then runs the posts. False: nothing came.
    bool waitForPosts(Time atMost = std::chrono::seconds(20));

    Time now() const { return now_; }
    int timers() const { return int(timers_->size()); }

private:
    struct Timer {
        Time due;
        Time interval;  // zero: fires once
        std::function<void()> call;
    };
    using Timers = std::list<std::shared_ptr<Timer>>;

    Subscription add(Time delay, Time interval, std::function<void()> call);
    std::shared_ptr<Timer> firstDue(Time until) const;
    void fire(const std::shared_ptr<Timer> &timer);

    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<std::function<void()>> posts_;
    Time now_{0};
    std::shared_ptr<Timers> timers_ = std::make_shared<Timers>();
};

}  // namespace kiv
