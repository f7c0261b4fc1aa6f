#pragma once

#include "renderbackend/Filter.h"

#include <array>
#include <cstddef>

/// One axis of a filter run: the input's length, the scale, the borders that the filter cannot compute.
struct OutputAxis {
    size_t input;
    size_t num;
    size_t den;
    size_t invalidLow;
    size_t invalidHigh;

    /// The valid output in logical pixels: the scaled input less borders and clips. clipped: of both ends together.
    /// Unsigned, the quotient rounded down; differences below 0 wrap.
    size_t output(size_t clipped) const { return input * num / den - invalidHigh - invalidLow - clipped; }
};

/// {width, height} of a filter's valid output; clippedW and clippedH add up the clips of both sides.
inline std::array<size_t, 2> outputExtent(Filter const& filter, size_t inputW, size_t inputH, size_t clippedW,
                                          size_t clippedH) {
    OutputAxis const x{inputW, filter.scaleXNum(), filter.scaleXDen(), filter.invalidLeft(), filter.invalidRight()};
    OutputAxis const y{inputH, filter.scaleYNum(), filter.scaleYDen(), filter.invalidTop(), filter.invalidBottom()};
    return {x.output(clippedW), y.output(clippedH)};
}
