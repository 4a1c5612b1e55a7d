#include "cli/Signals.h"

#include <csignal>

namespace Signals {

namespace {

volatile std::sig_atomic_t s_iSignal = 0;

void Remember(int iSignal) {
    s_iSignal = iSignal;
}

/** What is ignored stays so: a shell lets background jobs ignore SIGINT, and nohup SIGHUP. */
void WatchUnlessIgnored(int iSignal, const struct sigaction& action) {
    struct sigaction former {};
    sigaction(iSignal, nullptr, &former);
    if (former.sa_handler != SIG_IGN) {
        sigaction(iSignal, &action, nullptr);
    }
}

}  // namespace

void Watch() {
    struct sigaction action {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = Remember;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    WatchUnlessIgnored(SIGINT, action);
    WatchUnlessIgnored(SIGTERM, action);
    // The shell and the system may each tell of a terminal that goes: no second one ends the work that is being undone.
    action.sa_flags = 0;
    WatchUnlessIgnored(SIGHUP, action);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
    sigaction(SIGXFSZ, &action, nullptr);  // a limit on the size of files fails a write, as a full disk does
}

bool IsCaught() noexcept {
    return s_iSignal != 0;
}

void ThrowIfCaught() {
    if (IsCaught()) {
        throw SInterrupted();
    }
}

int GetExitCode() noexcept {
    return 128 + (IsCaught() ? s_iSignal : SIGINT);
}

}  // namespace Signals
