#pragma once

#include "tests/apps/velmora/Process.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// Every kind of call on files x every way in which it fails x the first such call, the second, and so on to the last,
/// for one command of the program.
namespace faultsweep {

/// A command whose calls on files of one folder fail.
struct Command {
    std::string name;
    std::vector<std::string> arguments;
    Process::Environment environment;
    std::string folder; ///< all of its files, and no others
    std::string cache;  ///< a folder in it for whole stores of pictures, which may stay after a failure; empty: none
    std::function<void()> prepare;     ///< makes the files as they are before each run
    std::function<std::string()> flaw; ///< of what a run that succeeds has written; empty: none
};

struct Tally {
    size_t calls = 0;    ///< of a run without a fault
    size_t runs = 0;     ///< with one
    size_t survived = 0; ///< runs that succeed all the same
    size_t told = 0;     ///< runs that end with one line on stderr

    Tally& operator+=(Tally const& other);
};

std::ostream& operator<<(std::ostream& stream, Tally const& tally);

/// How much of the table a run without VELMORA_LONG plays: of each kind of call one, in each way or in one way, others
/// from kind to kind.
enum class Sample { EachWay, OneWay };

/// Expects of each run that it succeeds with the right output, or ends with an exit code that the documents have for a
/// file that cannot be read or written, one line on stderr that names a file and the reason, and all files as they
/// were. A call that gives fewer bytes than it was asked for must not fail the run. Prints and records what was played.
Tally sweep(Command const& command, Sample sample);

} // namespace faultsweep
