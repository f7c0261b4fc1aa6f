#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program where a documented precondition does not hold, in builds with VELMORA_CHECKED; costs nothing in
/// others. For what an operation does not test; what it does test throws.
inline void precondition([[maybe_unused]] bool holds, [[maybe_unused]] char const* text) {
#ifdef VELMORA_CHECKED
    if (holds) return;
    std::fprintf(stderr, "precondition violated: %s\n", text);
    std::abort();
#endif
}
