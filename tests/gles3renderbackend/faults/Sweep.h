#pragma once

#include "tests/gles3renderbackend/faults/Scenarios.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>

namespace faults {

/// How many GL objects of each kind live.
using Living = std::map<std::string, size_t>;

/// What the tests of a program look at beside the library.
struct Surroundings {
    std::function<Living()> living;
    /// Forgets errors that faults have left, such as GL's own about calls that followed.
    std::function<void()> tidyUp;
    /// Puts another context in place of the current one.
    std::function<void()> newContext;
};

/// What a sweep has done.
struct Tally {
    size_t calls = 0;    ///< of GL, or of `new`, that the scenarios make
    size_t faults = 0;   ///< that were played, each in a scenario of its own
    size_t thrown = 0;   ///< of them those that came out as an exception
    size_t repeated = 0; ///< scenarios played anew after a fault, on the same instance
    size_t cured = 0;    ///< of them those that needed an instance made anew, as the documents say

    Tally& operator+=(Tally const& other);
    /// Prints it, under a heading, and keeps it with the results of the test.
    void report(std::string const& heading) const;
};

/// Plays a scenario with each of its calls of GL failing in each way that it can, once and from then on for ever.
/// Whatever fails: only what is documented comes out, no GL object stays behind, what other targets hold is as it was,
/// and the same scenario reads the same bytes again; where the ring lost a buffer, on an instance made anew.
///
/// The expected bytes are those of the scenario before the faults. Without VELMORA_LONG every `step`-th call fails,
/// and each that is the only one of its function.
Tally sweepGl(Scenario const& scenario, Surroundings const& surroundings, size_t step);

/// Plays a scenario whose context is lost with one of its calls of GL, on a backend of its own each time. Only what is
/// documented comes out, nothing waits for ever, and destroying all deletes all. In a new context a new backend reads
/// the right bytes. Without VELMORA_LONG `sample` calls do.
Tally sweepLostContexts(Scenario const& scenario, Surroundings const& surroundings, size_t sample);

/// Plays a scenario whose context ends between two operations, by `end`; `goesOn`: the host does not know and goes on,
/// else it destroys what it has. The rest is as above.
Tally sweepEndedContexts(Scenario const& scenario, Surroundings const& surroundings, std::function<void()> const& end,
                         bool goesOn, size_t sample);

/// The same as sweepGl() with each `new` of the scenario failing; the n-th for all n, or without VELMORA_LONG, every
/// `step`-th.
struct Allocations {
    std::function<void(size_t n)> failAfter; ///< n of them succeed, the next fails
    std::function<bool()> stop;              ///< whether none had failed
};
Tally sweepAllocations(Scenario const& scenario, Surroundings const& surroundings, Allocations const& allocations,
                       size_t step);

} // namespace faults
