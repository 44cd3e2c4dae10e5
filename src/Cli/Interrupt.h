#pragma once

#include "Support/Progress.h"

// Ctrl+C: the first cancels what is going on, a second one ends the program at once.
namespace kiv::Cli::Interrupt {

void install();  // from here on; before, Ctrl+C ends the program
bool wasRequested();
void throwIfRequested();  // Cancelled

// While it lives, an interrupt cancels this job too. One at a time.
class Watch {
public:
    explicit Watch(Progress &progress);
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;
    ~Watch();
};

}  // namespace kiv::Cli::Interrupt
