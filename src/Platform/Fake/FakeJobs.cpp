#include "Platform/Fake/FakeJobs.h"

namespace kiv {

void FakeJobs::run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
                   std::function<void(std::exception_ptr)> done) {
    waiting_.push_back({std::move(progress), std::move(work), std::move(done), nullptr});
}

bool FakeJobs::work(std::size_t behind) {
    if (behind >= waiting_.size()) return false;
    const auto which = waiting_.begin() + std::ptrdiff_t(behind);
    Job job = std::move(*which);
    waiting_.erase(which);
    try {
        job.work(*job.progress);
    } catch (...) {
        job.failure = std::current_exception();
    }
    job.work = nullptr;  // what it held is gone before the report, as with real jobs
    finished_.push_back(std::move(job));
    return true;
}

bool FakeJobs::report() {
    if (finished_.empty()) return false;
    const Job job = std::move(finished_.front());
    finished_.pop_front();
    job.done(job.failure);
    return true;
}

void FakeJobs::runAll() {
    while (work() || report()) {
    }
}

}  // namespace kiv
