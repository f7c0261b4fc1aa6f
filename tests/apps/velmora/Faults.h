#pragma once

#include "tests/apps/velmora/Process.h"

#include <string>
#include <vector>

/// Calls of the system, of those that write files or name them, that go wrong in a child process:
/// tests/support/FaultyFiles.cpp, loaded before the C library, does it.
struct Fault {
    static constexpr size_t kUntilTheEnd = 1000 * 1000;

    std::string calls;   ///< only these count, "link unlink"; empty: all
    std::string missing; ///< these fail always, as on a file system that does not know them
    std::string folder;  ///< only on files in it; empty: on all
    size_t first = 0;    ///< counted from 1
    size_t last = 0;     ///< the same, or a later one: all of them fail
    int reason = 0;      ///< a value of errno; ENOSPC: only calls that need room count. 0: the process is killed there
    std::string wait; ///< instead, the call is held up until this file is there; FILE.reached is made when it begins to

    Process::Environment environment() const;
};

/// How many calls that count a run makes to its end. The run must succeed.
size_t countCalls(std::vector<std::string> const& arguments, Fault fault, Process::Environment environment = {});

/// Runs velmora with a fault.
Process::Result runFaulty(std::vector<std::string> const& arguments, Fault const& fault,
                          Process::Environment environment = {});
