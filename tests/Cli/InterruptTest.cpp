#include "Cli/Interrupt.h"

#include <gtest/gtest.h>
#include <signal.h>

#include "Cli/ConsoleJobs.h"

namespace kiv::Cli {
namespace {

// What has been interrupted stays so; each of these is a process of its own.
void endCancelledJob(int signal) {
    Interrupt::install();
    std::exception_ptr ended;
    ConsoleJobs jobs;
    const auto work = [=](Progress &progress) {
        raise(signal);
        progress.add(1);
        std::_Exit(1);
    };
    jobs.run(std::make_shared<Progress>(), work, [&](std::exception_ptr failure) { ended = failure; });
    try {
        std::rethrow_exception(ended);
    } catch (const Cancelled &) {
        std::_Exit(Interrupt::wasRequested() ? 0 : 2);
    }
}

void beginJobAfterInterrupt() {
    Interrupt::install();
    raise(SIGINT);
    Progress progress;
    const Interrupt::Watch watch(progress);
    std::_Exit(progress.isCancelled() ? 0 : 1);
}

void interruptTwice() {
    Interrupt::install();
    raise(SIGINT);
    raise(SIGTERM);
}

TEST(InterruptDeathTest, CancelsTheJobAtFirstAndEndsTheProgramThen) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) EXPECT_EXIT(endCancelledJob(signal), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(beginJobAfterInterrupt(), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(interruptTwice(), testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
}  // namespace kiv::Cli
