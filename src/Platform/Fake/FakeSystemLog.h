#pragma once

#include <mutex>
#include <vector>

#include "Platform/SystemLog.h"

namespace kiv {

// Collects the lines written. All members may be called from any thread.
class FakeSystemLog : public SystemLog {
public:
    void write(const std::string &line) override {
        const std::lock_guard lock(mutex_);
        lines_.push_back(line);
    }
    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace kiv
