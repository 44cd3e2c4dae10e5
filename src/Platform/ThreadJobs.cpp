#include "Platform/ThreadJobs.h"

#include <system_error>

namespace kiv {
namespace {

std::exception_ptr outcome(const std::function<void(Progress &)> &work, Progress &progress) {
    try {
        work(progress);
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

}  // namespace

ThreadJobs::~ThreadJobs() {
    const auto running = std::move(running_);
    for (auto &[id, job] : *running) job.progress->cancel();
    for (auto &[id, job] : *running)
        if (job.thread.joinable()) job.thread.join();
}

void ThreadJobs::run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
                     std::function<void(std::exception_ptr)> done) {
    const std::uint64_t id = ++lastId_;
    const auto report = [id, jobs = std::weak_ptr(running_)](std::exception_ptr failure) {
        const auto alive = jobs.lock();
        if (!alive) return;
        const Job job = std::move(alive->extract(id).mapped());  // its thread is joined when `job` goes
        job.done(failure);
    };
    Job &job = (*running_)[id];
    job.progress = progress;
    job.done = std::move(done);
    try {
        job.thread = std::jthread([&loop = loop_, progress, work = std::move(work), report]() mutable {
            auto failure = outcome(work, *progress);
            work = nullptr;
            loop.post([report, failure = std::move(failure)] { report(failure); });
        });
    } catch (const std::system_error &) {  // the machine gives no more threads
        loop_.post([report, failure = std::current_exception()] { report(failure); });
    }
}

}  // namespace kiv
