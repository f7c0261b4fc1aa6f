#pragma once

#include <cstdlib>
#include <string>

/// Whether VELMORA_LONG is in the environment: the long run, with what takes too long for every day.
inline bool isLongRun() {
    return std::getenv("VELMORA_LONG") != nullptr;
}

/// Whether the test programs run on this GL implementation, as tests/GlImplementations.cmake names it: "llvmpipe".
inline bool runsOn(std::string const& implementation) {
    char const* const renderer = std::getenv("VELMORA_EXPECT_RENDERER");
    return renderer != nullptr && std::string(renderer).rfind(implementation, 0) == 0;
}

/// Whether the environment names another implementation than llvmpipe. By hand, without a name, it is false.
inline bool runsOffLlvmpipe() {
    return std::getenv("VELMORA_EXPECT_RENDERER") != nullptr && !runsOn("llvmpipe");
}

/// Whether a large set is tried in full: in the long run, on llvmpipe. Others have the whole short set there.
inline bool isExhaustiveRun() {
    return isLongRun() && !runsOffLlvmpipe();
}

/// Whether a part of a set will do: the short run has the whole of it on llvmpipe only, the fastest implementation.
inline bool isSampleRun() {
    return !isLongRun() && runsOffLlvmpipe();
}
