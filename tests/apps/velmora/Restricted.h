#pragma once

#include "tests/apps/velmora/Process.h"
#include "tests/support/Sanitizers.h"

#include <chrono>
#include <csignal>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <vector>

/// Runs velmora with limited address space and time; a run that takes longer is killed, with exit code -1. Under
/// sanitizers, which address terabytes, only the time is limited.
inline Process::Result runRestricted(std::vector<std::string> const& arguments, Process::Environment const& changes,
                                     [[maybe_unused]] rlim_t addressBytes, std::chrono::seconds time) {
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
#if !VELMORA_ADDRESS_SANITIZER && !VELMORA_THREAD_SANITIZER
    // The child inherits it from this process.
    rlimit const limit{addressBytes, before.rlim_max};
    setrlimit(RLIMIT_AS, &limit);
#endif
    Process process(arguments, changes);
    setrlimit(RLIMIT_AS, &before);
    auto const end = std::chrono::steady_clock::now() + time;
    while (process.running() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (process.running()) process.signal(SIGKILL);
    return process.wait();
}
