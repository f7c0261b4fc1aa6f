#include "apps/velmora/shared/Interruption.h"

#include <array>
#include <csignal>

namespace {

volatile std::sig_atomic_t noted = 0;

void note(int) {
    noted = 1;
}

} // namespace

void interruption::listen() {
    // A limit on file sizes is to be a failed write, which is reported like a full disk, not a sudden end.
    std::signal(SIGXFSZ, SIG_IGN);
    for (int const signal : std::array<int, 3>{SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction previous {};
        sigaction(signal, nullptr, &previous);
        if (previous.sa_handler == SIG_IGN) continue; // the user's nohup
        struct sigaction action {};
        action.sa_handler = note;
        sigemptyset(&action.sa_mask);
        // What waits, as for a pipe that nobody writes to, is not to wait on: it fails, and isNoted() says why. The
        // handler is taken off by the first signal.
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

bool interruption::isNoted() {
    return noted != 0;
}

void interruption::throwIfNoted() {
    if (isNoted()) throw Interrupted();
}
