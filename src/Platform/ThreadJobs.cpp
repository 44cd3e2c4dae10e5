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

bool ThreadJobs::end(std::chrono::milliseconds patience) {
    const auto last = std::chrono::steady_clock::now() + patience;
    for (auto &[id, job] : *running_) job.progress->cancel(), job.done = nullptr;
    for (auto at = running_->begin(); at != running_->end();) {
        const Job &job = at->second;
        const bool isOver = job.atEnd == AtEnd::waitedFor || job.ended.wait_until(last) == std::future_status::ready;
        at = isOver ? running_->erase(at) : std::next(at);  // which joins its thread
    }
    return running_->empty();
}

void ThreadJobs::run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
                     std::function<void(std::exception_ptr)> done) {
    start({std::move(progress), std::move(done), AtEnd::waitedFor, {}, {}}, std::move(work));
}

void ThreadJobs::read(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
                      std::function<void(std::exception_ptr)> done) {
    start({std::move(progress), std::move(done), AtEnd::left, {}, {}}, std::move(work));
}

void ThreadJobs::start(Job newJob, std::function<void(Progress &)> work) {
    const std::uint64_t id = ++lastId_;
    const auto report = [id, jobs = std::weak_ptr(running_)](std::exception_ptr failure) {
        const auto alive = jobs.lock();
        auto found = alive ? alive->extract(id) : Running::node_type();
        if (found.empty()) return;
        const Job job = std::move(found.mapped());  // its thread is joined when `job` goes
        if (job.done) job.done(failure);
    };
    Job &job = (*running_)[id] = std::move(newJob);
    std::promise<void> ended;
    job.ended = ended.get_future();
    try {
        job.thread = std::jthread(
            [&loop = loop_, progress = job.progress, work = std::move(work), report, ended = std::move(ended)]() mutable {
                auto failure = outcome(work, *progress);
                work = nullptr;
                loop.post([report, failure = std::move(failure)] { report(failure); });
                ended.set_value();
            });
    } catch (const std::system_error &) {  // the machine gives no more threads
        loop_.post([report, failure = std::current_exception()] { report(failure); });
    }
}

}  // namespace kiv
