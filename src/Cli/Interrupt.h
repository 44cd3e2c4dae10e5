#pragma once

#include "Support/Progress.h"

// Ctrl+C, a terminal that is closed, and a program that is asked to end: the first cancels what is going on, so that nothing of
// it stays behind; a second one ends the program at once.
namespace kiv::Cli::Interrupt {

void install();  // from here on; before, they end the program
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
