#include "Cli/Interrupt.h"

#include <signal.h>

#include <atomic>

namespace kiv::Cli::Interrupt {

namespace {

// A signal handler can reach nothing but what is global, and of that only atomics without locks.
std::atomic<bool> requested{false};
std::atomic<Progress *> watched{nullptr};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<Progress *>::is_always_lock_free);

extern "C" void interrupted(int signal) {
    if (requested.exchange(true)) raise(signal);  // which is not ours any more
    if (Progress *progress = watched) progress->cancel();
}

void installFor(int signal) {
    // Whoever started us with the signal ignored, as shells do in the background, means it.
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = interrupted;
    action.sa_flags = int(SA_RESETHAND) | SA_RESTART;
    sigaction(signal, &action, nullptr);
}

}  // namespace

void install() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) installFor(signal);
}

bool wasRequested() { return requested; }

void throwIfRequested() {
    if (requested) throw Cancelled();
}

Watch::Watch(Progress &progress) {
    watched = &progress;
    if (requested) progress.cancel();
}

Watch::~Watch() { watched = nullptr; }

}  // namespace kiv::Cli::Interrupt
