#pragma once

#include <exception>

/// Ctrl-C and a request to terminate as an exception, so that unfinished files are removed on the way out.
class Interrupted : public std::exception {
public:
    char const* what() const noexcept override { return "interrupted"; }
};

namespace interruption {

/// From now on SIGINT, SIGTERM and SIGHUP are noted, each once: a second one ends the program at once. Blocking system
/// calls fail then.
void listen();

/// Whether a signal has been noted.
bool isNoted();

/// Throws Interrupted if a signal has been noted. Call it between the steps of long work.
void throwIfNoted();

} // namespace interruption
