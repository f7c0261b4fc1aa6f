#pragma once

#include <cstddef>
#include <exception>

namespace backendtest {

/// The next `new` of exactly this many bytes throws std::bad_alloc; 0: none does.
void failNextAllocation(size_t bytes);

/// The `new` after the next `skip` ones throws std::bad_alloc. Those of the recording GL do not count: its memory is no
/// business of the library's.
void failAllocationAfter(size_t skip);
/// None fails any more. Whether one was still to fail.
bool letAllocationsSucceed();

/// Runs `attempt` with its first allocation failing, then its second, and so on until none is left to fail, and `check`
/// after each of them, whether the failure came out or was dealt with. Returns how many failed.
template <class Attempt, class Check>
size_t failEachAllocation(Attempt const& attempt, Check const& check) {
    for (size_t failed = 0;; ++failed) {
        failAllocationAfter(failed);
        try {
            attempt();
        } catch (std::exception const&) { // NOLINT(bugprone-empty-catch): check() states what must hold afterwards
        }
        if (letAllocationsSucceed()) return failed;
        check();
    }
}

} // namespace backendtest
