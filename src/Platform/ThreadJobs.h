#pragma once

#include <cstdint>
#include <map>
#include <thread>

#include "Platform/Jobs.h"
#include "Platform/MainLoop.h"

namespace kiv {

// A thread a job. The loop must outlive it. Destroying it cancels what still runs and waits for it to end; nothing is reported
// after that. What `work` holds is let go on the job's thread before the report; `done` lives and dies on the main thread.
class ThreadJobs : public Jobs {
public:
    explicit ThreadJobs(MainLoop &loop) : loop_(loop) {}
    ~ThreadJobs() override;

    void run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
             std::function<void(std::exception_ptr)> done) override;

private:
    struct Job {
        std::shared_ptr<Progress> progress;
        std::function<void(std::exception_ptr)> done;
        std::jthread thread;
    };
    using Running = std::map<std::uint64_t, Job>;

    MainLoop &loop_;
    std::uint64_t lastId_ = 0;
    // Looked at on the main thread only; what is posted holds it weakly, since it may arrive when this object has gone.
    std::shared_ptr<Running> running_ = std::make_shared<Running>();
};

}  // namespace kiv
