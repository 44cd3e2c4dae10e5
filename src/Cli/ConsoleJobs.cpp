#include "Cli/ConsoleJobs.h"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "Cli/Interrupt.h"

namespace kiv::Cli {

namespace {

constexpr auto delay = std::chrono::milliseconds(300);  // a job that is over by then shows nothing
constexpr auto interval = std::chrono::milliseconds(100);
constexpr int barWidth = 40;

class ProgressBar {
public:
    explicit ProgressBar(const Progress &progress)
        : thread_([this, &progress](std::stop_token stop) { show(stop, progress); }) {}

private:
    void show(std::stop_token stop, const Progress &progress) {
        std::unique_lock lock(mutex_);
        bool isShown = false;
        const auto never = [] { return false; };
        for (auto wait = delay; !stopped_.wait_for(lock, stop, wait, never) && !stop.stop_requested(); wait = interval) {
            draw(progress.fraction());
            isShown = true;
        }
        if (isShown) std::fputs("\r\033[K", stderr);
    }

    static void draw(double fraction) {
        const int filled = int(fraction * barWidth);
        const std::string bar = std::string(std::size_t(filled), '#') + std::string(std::size_t(barWidth - filled), ' ');
        std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), int(fraction * 100));
        std::fflush(stderr);
    }

    std::mutex mutex_;
    std::condition_variable_any stopped_;
    std::jthread thread_;
};

}  // namespace

void ConsoleJobs::run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
                      std::function<void(std::exception_ptr)> done) {
    std::optional<Interrupt::Watch> watch(std::in_place, *progress);
    std::optional<ProgressBar> bar;
    if (isatty(STDERR_FILENO)) bar.emplace(*progress);
    InlineJobs().run(progress, std::move(work), [&](std::exception_ptr failure) {
        bar.reset();
        watch.reset();
        done(failure);
    });
}

}  // namespace kiv::Cli
