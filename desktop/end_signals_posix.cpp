#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "desktop/end_signals.h"

namespace melvane {

namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

volatile std::sig_atomic_t pipeEnd = -1;

// A handler may do little more than write.
void pass(int) {
    const int before = errno;
    [[maybe_unused]] const ssize_t written = write(pipeEnd, "", 1);
    errno = before;
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    if (signal == SIGHUP && action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    sigaction(signal, &action, nullptr);
}

}  // namespace

EndSignals::EndSignals(const std::function<void()>& act) {
    if (pipe2(ends_, O_CLOEXEC | O_NONBLOCK) != 0) return;
    arrived_ = std::make_unique<QSocketNotifier>(ends_[0], QSocketNotifier::Read);
    QObject::connect(arrived_.get(), &QSocketNotifier::activated, arrived_.get(), [this, act] {
        char byte = 0;
        if (read(ends_[0], &byte, 1) == 1) act();
    });
    pipeEnd = ends_[1];
    for (const int signal : kSignals) handle(signal, pass);
}

EndSignals::~EndSignals() {
    if (!arrived_) return;
    for (const int signal : kSignals) handle(signal, SIG_DFL);
    for (const int end : ends_) close(end);
}

}  // namespace melvane
