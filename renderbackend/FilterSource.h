#pragma once

#include <cstddef>

/// One input of a filter run.
struct FilterSource {
    size_t target = 0;         ///< id of the target whose texture is sampled
    size_t x = 0;              ///< column of that target, in logical pixels, at which the input area starts
    size_t y = 0;              ///< row of that target at which the input area starts
    bool wholeTexture = false; ///< true: sample the whole texture and ignore x and y
};
