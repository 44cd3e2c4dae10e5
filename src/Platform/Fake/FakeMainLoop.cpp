#include "Platform/Fake/FakeMainLoop.h"

#include <algorithm>

namespace kiv {

void FakeMainLoop::post(std::function<void()> call) {
    // Told under the lock: whoever runs the call may end the loop as soon as the lock is free.
    const std::lock_guard lock(mutex_);
    posts_.push_back(std::move(call));
    posted_.notify_all();
}

int FakeMainLoop::runPosts() {
    for (int count = 0;; ++count) {
        std::function<void()> call;
        {
            const std::lock_guard lock(mutex_);
            if (posts_.empty()) return count;
            call = std::move(posts_.front());
            posts_.pop_front();
        }
        call();
    }
}

bool FakeMainLoop::waitForPosts(Time atMost) {
    {
        std::unique_lock lock(mutex_);
        if (!posted_.wait_for(lock, atMost, [this] { return !posts_.empty(); })) return false;
    }
    runPosts();
    return true;
}

Subscription FakeMainLoop::after(Time delay, std::function<void()> call) { return add(delay, Time(0), std::move(call)); }

Subscription FakeMainLoop::repeat(Time interval, std::function<void()> call) {
    const Time atLeast = std::max(interval, Time(1));  // or time would never pass
    return add(atLeast, atLeast, std::move(call));
}

Subscription FakeMainLoop::add(Time delay, Time interval, std::function<void()> call) {
    auto timer = std::make_shared<Timer>(Timer{now_ + delay, interval, std::move(call)});
    timers_->push_back(timer);
    return Subscription([timer, list = std::weak_ptr(timers_)] {
        if (const auto alive = list.lock()) alive->remove(timer);
    });
}

void FakeMainLoop::advance(Time time) {
    const Time end = now_ + time;
    runPosts();
    while (const auto timer = firstDue(end)) {
        now_ = std::max(now_, timer->due);
        fire(timer);
        runPosts();
    }
    now_ = end;
}

std::shared_ptr<FakeMainLoop::Timer> FakeMainLoop::firstDue(Time until) const {
    const auto first = std::min_element(timers_->begin(), timers_->end(), [](auto &a, auto &b) { return a->due < b->due; });
    return first != timers_->end() && (*first)->due <= until ? *first : nullptr;
}

void FakeMainLoop::fire(const std::shared_ptr<Timer> &timer) {
    if (timer->interval == Time(0))
        timers_->remove(timer);
    else
        timer->due += timer->interval;
    timer->call();
}

}  // namespace kiv
