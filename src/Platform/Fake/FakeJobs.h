#pragma once

#include <deque>

#include "Platform/Jobs.h"

namespace kiv {

// Jobs that run when they are told to, on the calling thread, work and report apart: so that a test can put anything between.
class FakeJobs : public Jobs {
public:
    void run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
             std::function<void(std::exception_ptr)> done) override;

    int waiting() const { return int(waiting_.size()); }    // whose work has not run
    int finished() const { return int(finished_.size()); }  // whose work has run, but not the report
    bool work(std::size_t behind = 0);  // runs the work of the one with so many before it; false: there is none
    bool report();                      // reports the one that was first to finish; false: there is none
    void runAll();                      // until there is nothing left to run or to report

private:
    struct Job {
        std::shared_ptr<Progress> progress;
        std::function<void(Progress &)> work;
        std::function<void(std::exception_ptr)> done;
        std::exception_ptr failure;
    };

    std::deque<Job> waiting_;
    std::deque<Job> finished_;
};

}  // namespace kiv
