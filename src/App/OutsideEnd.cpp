#include "App/OutsideEnd.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QEvent>
#include <QGuiApplication>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace kiv {
namespace {

int signalPipe[2] = {-1, -1};
OutsideEnd *watching = nullptr;

// Only what a signal handler may do: the rest happens when the loop reads the byte.
extern "C" void writeSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[0], &byte, 1);
}

}  // namespace

OutsideEnd::OutsideEnd() {
    watching = this;
    std::atexit([] {
        if (const auto last = std::exchange(watching, nullptr)) last->onExit();
    });
    catchSignals();
    QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, this,
                     [this](QSessionManager &session) { onSessionEnds(session); });
    qGuiApp->installEventFilter(this);
}

OutsideEnd::~OutsideEnd() { watching = nullptr; }

void OutsideEnd::catchSignals() {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0) return;
    signals_ = std::make_unique<QSocketNotifier>(signalPipe[1], QSocketNotifier::Read);
    QObject::connect(signals_.get(), &QSocketNotifier::activated, this, [this] {
        char byte;
        if (::read(signalPipe[1], &byte, 1) == 1) onSignal();
    });
    for (int number : {SIGTERM, SIGINT, SIGHUP}) std::signal(number, writeSignal);
}

// Qt would have every window ask its user, who has been asked already or cannot be.
bool OutsideEnd::eventFilter(QObject *object, QEvent *event) {
    if (object != qGuiApp || event->type() != QEvent::Quit) return false;
    onDie();
    return true;
}

}  // namespace kiv
