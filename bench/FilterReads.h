#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

/// Number of texels that a filter's fragment reads: from the first input, from each further one, from a table. The
/// plain pass reads as many. A filter that does not draw reads none, and has no baseline.
struct FilterReads {
    size_t first = 1;
    size_t further = 0;
    size_t table = 0;

    bool draws() const { return first != 0; }
};

struct NamedFilterReads {
    char const* filter = nullptr;
    FilterReads reads;
};

/// The filters whose fragments read anything but one texel of one input.
constexpr NamedFilterReads kFilterReads[] = {
    {"FilterFirIH53LeGall16", {2, 2}},   {"FilterFirIV53LeGall16", {2, 3}},     {"FilterInterleave16", {1, 1}},
    {"FilterYCoCg16ToRGBA8", {2}},       {"FilterYCoCg16ToRGB16", {2}},         {"Filter3x16To4x8", {2}},
    {"FilterSharpness8", {13}},          {"FilterSharpnessH16", {10}},          {"FilterSharpnessV16", {2, 10}},
    {"FilterLinear8ToSRGB8", {1, 0, 3}}, {"FilterLinear16ToSRGB8", {2, 0, 3}},  {"FilterLinear16TosRGB8", {2, 0, 3}},
    {"Filter3x3Matrix16", {2}},          {"FilterBlackWhiteGamma8", {1, 0, 3}}, {"FilterCLAHE", {0}},
};

/// One texel for a name without a row.
inline FilterReads filterReads(std::string const& name) {
    auto const* const found = std::find_if(std::begin(kFilterReads), std::end(kFilterReads),
                                           [&](NamedFilterReads const& row) { return row.filter == name; });
    return found == std::end(kFilterReads) ? FilterReads{} : found->reads;
}
