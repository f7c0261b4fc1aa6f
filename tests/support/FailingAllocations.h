#pragma once

#include <cstddef>

/// `new` that fails on demand, in programs that link FailingAllocations.cpp.
namespace failing_allocations {

enum class Threads {
    This,  ///< the one that asks for it
    Others ///< all but that
};

/// The n-th `new` from now on of these threads throws std::bad_alloc, once; 0: none does.
void failAt(size_t n, Threads threads = Threads::This);

/// No `new` fails any more. Those of these threads since failAt().
size_t stop();

/// Within it this thread's `new` neither counts nor fails: that of libraries for which it would be the end.
class Pause {
public:
    Pause();
    ~Pause();
    Pause(Pause const&) = delete;
    Pause& operator=(Pause const&) = delete;
};

} // namespace failing_allocations
