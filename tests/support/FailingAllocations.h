#pragma once

#include <cstddef>

/// A `new` that fails on demand, in programs that link FailingAllocations.cpp. Only those of our own code count: of the
/// program, into which host/ is linked, and of the two libraries, also where they call the C++ library, whose strings
/// and streams ask for memory in its name. Drivers, libvips and SQLite have all the memory that they want.
namespace failing_allocations {

enum class Threads {
    This,  ///< the calling thread
    Others ///< all but the calling thread
};

/// The n-th `new` of these threads from now on throws std::bad_alloc, once; 0: none does.
void failAt(size_t n, Threads threads = Threads::This);

/// Ends the failing. Returns the number of `new` of these threads since failAt().
size_t stop();

/// During its life this thread's `new` neither counts nor fails: for libraries that would crash.
class Pause {
public:
    Pause();
    ~Pause();
    Pause(Pause const&) = delete;
    Pause& operator=(Pause const&) = delete;
};

} // namespace failing_allocations
