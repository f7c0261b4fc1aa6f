#pragma once

#include "renderbackend/Filter.h"

#include <array>
#include <cstddef>

/// {width, height} of a filter's valid output in logical pixels: the scaled input less borders and clips, which
/// clippedW and clippedH add up for both sides. Unsigned, each quotient rounded down; differences below 0 wrap.
inline std::array<size_t, 2> outputExtent(Filter const& filter, size_t inputW, size_t inputH, size_t clippedW,
                                          size_t clippedH) {
    size_t const scaledW = inputW * filter.scaleXNum() / filter.scaleXDen();
    size_t const scaledH = inputH * filter.scaleYNum() / filter.scaleYDen();
    return {scaledW - filter.invalidRight() - filter.invalidLeft() - clippedW,
            scaledH - filter.invalidBottom() - filter.invalidTop() - clippedH};
}
