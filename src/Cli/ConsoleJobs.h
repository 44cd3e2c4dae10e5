#pragma once

#include "Platform/Jobs.h"

namespace kiv::Cli {

// Runs jobs at once on the calling thread, with a progress bar on standard error where that is a terminal, cancelled by Ctrl+C.
class ConsoleJobs : public Jobs {
public:
    void run(std::shared_ptr<Progress> progress, std::function<void(Progress &)> work,
             std::function<void(std::exception_ptr)> done) override;
};

}  // namespace kiv::Cli
