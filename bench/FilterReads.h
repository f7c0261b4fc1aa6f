#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <string>

/// Texels that a filter's fragment reads: of the first input, of each further one, of a table. The pass that it is
/// measured beside reads as many. A filter that does not draw reads none, and nothing stands beside it.
struct FilterReads {
    char const* filter = nullptr;
    std::size_t first = 0;
    std::size_t further = 0;
    std::size_t table = 0;

    bool draws() const { return first != 0; }
};

constexpr FilterReads kFilterReads[] = {
    {"FilterFirIH53LeGall16", 2, 2},
    {"FilterFirIV53LeGall16", 2, 3},
    {"BlitFilter1x16", 1},
    {"BlitFilter3x16", 1},
    {"BlitFilter3x8", 1},
    {"BlitFilter4x8", 1},
    {"Filter1x16ToRGB8", 1},
    {"FilterInterleave16", 1, 1},
    {"FilterYCoCg16ToRGBA8", 2},
    {"FilterYCoCg16ToRGB16", 2},
    {"Filter3x16To4x8", 2},
    {"FilterSharpness8", 13},
    {"FilterSharpnessH16", 10},
    {"FilterSharpnessV16", 2, 10},
    {"FilterLinear8ToSRGB8", 1, 0, 3},
    {"FilterLinear16ToSRGB8", 2, 0, 3},
    {"MaskFilter3x8", 1},
    {"MaskFilter4x8", 1},
    {"MaskFilter3x16", 1},
    {"FilterLinear16TosRGB8", 2, 0, 3},
    {"FilterTruncate16", 1},
    {"Filter3x3Matrix8", 1},
    {"Filter3x3Matrix16", 2},
    {"FilterRemoveAlpha8", 1},
    {"FilterBlackWhiteGamma8", 1, 0, 3},
    {"FilterRGBA8ToYCoCg16", 1},
    {"FilterCLAHE", 0},
};

/// Throws std::out_of_range for a name without a row.
inline FilterReads const& filterReads(std::string const& name) {
    auto const* const found = std::find_if(std::begin(kFilterReads), std::end(kFilterReads),
                                           [&](FilterReads const& row) { return row.filter == name; });
    if (found != std::end(kFilterReads)) return *found;
    throw std::out_of_range(name + " has no row in the benchmarks: add one to kFilterReads of bench/FilterReads.h");
}
