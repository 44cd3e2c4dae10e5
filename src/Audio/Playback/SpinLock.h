#pragma once

#include <atomic>
#include <thread>

namespace kiv {

// A lock for a few copies between the main thread and the audio thread. The audio thread only tries it, so holding it never
// costs more than a moment's silence; the main thread waits by spinning. Not recursive, not fair.
class SpinLock {
public:
    bool try_lock() { return !taken_.test_and_set(std::memory_order_acquire); }
    void lock() {
        while (!try_lock()) std::this_thread::yield();
    }
    void unlock() { taken_.clear(std::memory_order_release); }

private:
    std::atomic_flag taken_;
};

}  // namespace kiv
