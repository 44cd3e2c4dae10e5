#pragma once

#include <string>

namespace kiv {

// One line to the system's log. Any thread but the audio thread; failures are silent.
class SystemLog {
public:
    virtual ~SystemLog() = default;
    virtual void write(const std::string &line) = 0;
};

}  // namespace kiv
