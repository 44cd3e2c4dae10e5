#pragma once

#include <functional>
#include <memory>

#include "Support/Progress.h"

namespace kiv {

// Work away from the main thread. Main thread only, but for the work itself.
class Jobs {
public:
    virtual ~Jobs() = default;

    // Runs `work` on another thread and then `done` on the main thread, with the exception that ended the work, or null. `work`
    // takes its input as values. Cancelling goes through the progress that both share.
    virtual void run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
                     std::function<void(std::exception_ptr)> done) = 0;
    // The same for work that only looks at a disk, which may never answer: nothing is lost where the end of the program does
    // not wait for it.
    virtual void read(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
                      std::function<void(std::exception_ptr)> done) {
        run(std::move(progress), std::move(work), std::move(done));
    }
};

// Runs everything at once on the calling thread: for the command line and for tests.
class InlineJobs : public Jobs {
public:
    void run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
             std::function<void(std::exception_ptr)> done) override {
        std::exception_ptr failure;
        try {
            work(*progress);
        } catch (...) {
            failure = std::current_exception();
        }
        done(failure);
    }
};

}  // namespace kiv
