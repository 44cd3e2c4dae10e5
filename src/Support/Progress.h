#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

namespace kiv {

// Thrown by a job at its next convenient moment after it was cancelled.
struct Cancelled : std::exception {
    const char *what() const noexcept override { return "cancelled"; }
};

// How far a long job has come, and the wish to end it. Shared by the worker, which adds, and the main thread, which reads and
// may cancel. All members may be called from any thread.
class Progress {
public:
    // The job is done in stages, each of which calls start: the share of the whole, 0 … 1, that each is expected to take.
    // Before the work begins. Without it each start begins the whole anew.
    void expectStages(std::vector<double> shares) { stages_ = std::move(shares); }

    void start(std::int64_t total) {
        done_ = 0;
        total_ = total;
        if (stage_ >= stages_.size()) return;
        before_ = stage_ == 0 ? 0 : before_ + share_;
        share_ = stages_[stage_++];
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
        const double part = total <= 0 ? 0.0 : done >= total ? 1.0 : double(done) / double(total);
        return std::min(before_ + share_ * part, 1.0);
    }

private:
    std::atomic<std::int64_t> done_{0};
    std::atomic<std::int64_t> total_{0};
    std::atomic<bool> cancelled_{false};
    std::vector<double> stages_;  // the worker's alone, as is stage_
    std::size_t stage_ = 0;
    std::atomic<double> before_{0};  // the shares of the stages that are over
    std::atomic<double> share_{1};   // of the present one
};

}  // namespace kiv
