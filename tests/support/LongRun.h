#pragma once

#include <cstdlib>

/// VELMORA_LONG in the environment: exhaustive sets instead of samples of them.
inline bool isLongRun() {
    return std::getenv("VELMORA_LONG") != nullptr;
}
