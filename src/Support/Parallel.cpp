#include "Support/Parallel.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace kiv {
namespace {

using Body = std::function<void(std::int64_t lo, std::int64_t hi)>;

// One call of parallelFor. Lives on its caller's stack: helpers may touch it only while they are counted in `helpers`.
struct Job {
    const Body &body;
    const std::int64_t count;
    const std::int64_t grain;
    const std::int64_t parts;
    std::atomic<std::int64_t> next{0};
    int helpers = 0;  // guarded by the pool's mutex, as is failure
    std::exception_ptr failure{};

    bool hasParts() const { return next.load(std::memory_order_relaxed) < parts; }
};

// Threads that wait for jobs. They are never joined and the pool is never destroyed, so that work that is still running while
// the program ends does not meet a pool that is gone.
class Pool {
public:
    explicit Pool(int threads) {
        try {
            for (int i = 0; i < threads; ++i) std::thread([this] { help(); }).detach();
        } catch (const std::system_error &) {
            // The callers do what the missing threads would have done.
        }
    }

    void run(Job &job) {
        const std::int64_t wanted = job.parts - 1;
        {
            const std::lock_guard lock(mutex_);
            jobs_.push_back(&job);
        }
        wanted == 1 ? work_.notify_one() : work_.notify_all();
        work(job);
        std::unique_lock lock(mutex_);
        std::erase(jobs_, &job);
        finished_.wait(lock, [&] { return job.helpers == 0; });
    }

private:
    void work(Job &job) {
        try {
            for (std::int64_t part; (part = job.next++) < job.parts;)
                job.body(part * job.grain, std::min((part + 1) * job.grain, job.count));
        } catch (...) {
            job.next = job.parts;
            const std::lock_guard lock(mutex_);
            if (!job.failure) job.failure = std::current_exception();
        }
    }

    void help() {
        std::unique_lock lock(mutex_);
        for (;;) {
            Job *job = nullptr;
            work_.wait(lock, [&] { return (job = openJob()) != nullptr; });
            ++job->helpers;
            lock.unlock();
            work(*job);
            lock.lock();
            if (--job->helpers == 0) finished_.notify_all();
        }
    }

    // The newest first: a nested call is what an older job waits for.
    Job *openJob() const {
        const auto found = std::find_if(jobs_.rbegin(), jobs_.rend(), [](const Job *job) { return job->hasParts(); });
        return found == jobs_.rend() ? nullptr : *found;
    }

    std::mutex mutex_;
    std::condition_variable work_, finished_;
    std::vector<Job *> jobs_;
};

Pool &pool() {
    static Pool &shared = *new Pool(parallelThreads() - 1);
    return shared;
}

}  // namespace

int parallelThreads() {
    static const int threads = std::max(1, int(std::thread::hardware_concurrency()));
    return threads;
}

void parallelFor(std::int64_t count, std::int64_t grain, const Body &body) {
    if (count <= 0) return;
    grain = std::clamp<std::int64_t>(grain, 1, count);
    const std::int64_t parts = count / grain + (count % grain != 0);
    if (parts == 1) return body(0, count);
    Job job{body, count, grain, parts};
    pool().run(job);
    if (job.failure) std::rethrow_exception(job.failure);
}

}  // namespace kiv
