#pragma once

#include "tests/apps/velmora/Process.h"

#include <string>
#include <vector>

/// Failing calls on files in a child process. tests/support/FaultyFiles.cpp, loaded before the C library, makes them
/// fail.
struct Fault {
    static constexpr size_t kUntilTheEnd = 1000 * 1000;

    std::string calls;     ///< names of the counted calls, "link unlink"; empty: all that write files or name them
    std::string missing;   ///< calls that always fail, as on a file system that lacks them
    std::string folder;    ///< counts only calls on files in it; empty: on all
    size_t first = 0;      ///< first failing call, from 1
    size_t last = 0;       ///< last failing call: first, or a later one
    int reason = 0;        ///< errno; ENOSPC: only calls that need room count. 0: the process is killed there
    bool shortens = false; ///< instead, the call reads or writes half of its bytes
    std::string wait; ///< instead, the call is held up until this file is there; FILE.reached is made when it begins to

    Process::Environment environment() const;
};

/// The counted calls of a whole run, with " room" after those that a full disk fails, and " short" after those that may
/// read or write fewer bytes. The run must succeed.
std::vector<std::string> callsOf(std::vector<std::string> const& arguments, Fault fault,
                                 Process::Environment environment = {});
/// Their number.
size_t countCalls(std::vector<std::string> const& arguments, Fault const& fault,
                  Process::Environment const& environment = {});

/// Runs velmora with a fault.
Process::Result runFaulty(std::vector<std::string> const& arguments, Fault const& fault,
                          Process::Environment environment = {});
