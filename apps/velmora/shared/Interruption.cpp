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
    // A write beyond the limit of file sizes then fails and is reported like a full disk, instead of ending the
    // program.
    std::signal(SIGXFSZ, SIG_IGN);
    for (int const signal : std::array<int, 3>{SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction previous {};
        sigaction(signal, nullptr, &previous);
        if (previous.sa_handler == SIG_IGN) continue; // as under nohup
        struct sigaction action {};
        action.sa_handler = note;
        sigemptyset(&action.sa_mask);
        // Blocking calls, such as opening a pipe without a writer, are not restarted: they fail, and isNoted() says
        // why. The first signal removes the handler.
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
