#pragma once

#include "Platform/SystemLog.h"

namespace kiv {

// The system's log, by syslog(3).
class LinuxSystemLog : public SystemLog {
public:
    void write(const std::string &line) override;
};

}  // namespace kiv
