#pragma once

#include <chrono>
#include <cstdint>
#include <future>
#include <map>
#include <thread>

#include "Platform/Jobs.h"
#include "Platform/MainLoop.h"

namespace kiv {

// A thread a job. The loop must outlive it. What `work` holds is let go on the job's thread before the report; `done` lives and
// dies on the main thread. Destroying it cancels what still runs and waits for all of that.
class ThreadJobs : public Jobs {
public:
    explicit ThreadJobs(MainLoop &loop) : loop_(loop) {}
    ~ThreadJobs() override;

    void run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
             std::function<void(std::exception_ptr)> done) override;
    void read(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
              std::function<void(std::exception_ptr)> done) override;

    // Cancels what still runs and waits for it to end, but for what only reads no longer than that in all. Nothing is reported
    // any more. False: a read still runs, and everything it refers to has to stay as long as the program does.
    bool end(std::chrono::milliseconds patience);

private:
    enum class AtEnd { waitedFor, left };
    struct Job {
        std::shared_ptr<Progress> progress;
        std::function<void(std::exception_ptr)> done;
        AtEnd atEnd = AtEnd::waitedFor;
        std::future<void> ended;
        std::jthread thread;
    };
    void start(Job job, std::function<void(Progress &)> work);
    using Running = std::map<std::uint64_t, Job>;

    MainLoop &loop_;
    std::uint64_t lastId_ = 0;
    // Looked at on the main thread only; what is posted holds it weakly, since it may arrive when this object has gone.
    std::shared_ptr<Running> running_ = std::make_shared<Running>();
};

}  // namespace kiv
