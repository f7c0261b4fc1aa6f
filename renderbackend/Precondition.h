#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program if a documented precondition does not hold, in builds with VELMORA_CHECKED; costs nothing in
/// others. For conditions that an operation does not check itself; those that it checks throw.
inline void precondition([[maybe_unused]] bool holds, [[maybe_unused]] char const* text) {
#ifdef VELMORA_CHECKED
    if (holds) return;
    std::fprintf(stderr, "precondition violated: %s\n", text);
    std::abort();
#endif
}
