#pragma once

#include <atomic>
#include <cstdint>
#include <exception>

namespace kiv {

// Thrown by a job at its next convenient moment after it was cancelled.
struct Cancelled : std::exception {
    const char *what() const noexcept override { return "cancelled"; }
};

// How far a long job has come, and the wish to end it. Shared by the worker, which adds, and the main thread, which reads and
// may cancel. All members may be called from any thread.
class Progress {
public:
    void start(std::int64_t total) {
        done_ = 0;
        total_ = total;
    }

    // Counts work as done; throws Cancelled when the job is no longer wanted.
    void add(std::int64_t work) {
        done_ += work;
        throwIfCancelled();
    }

    void throwIfCancelled() const {
        if (cancelled_) throw Cancelled();
    }

    void cancel() { cancelled_ = true; }
    bool isCancelled() const { return cancelled_; }

    // 0 … 1.
    double fraction() const {
        const std::int64_t total = total_;
        const std::int64_t done = done_;
        return total <= 0 ? 0.0 : done >= total ? 1.0 : double(done) / double(total);
    }

private:
    std::atomic<std::int64_t> done_{0};
    std::atomic<std::int64_t> total_{0};
    std::atomic<bool> cancelled_{false};
};

}  // namespace kiv
