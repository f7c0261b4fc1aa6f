#include "apps/velmora/Interruption.h"

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
        // Writes go on after the signal; the handler is taken off by the first one.
        action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

void interruption::throwIfNoted() {
    if (noted != 0) throw Interrupted();
}
