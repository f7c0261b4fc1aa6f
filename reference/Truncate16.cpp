#include "reference/Truncate16.h"

namespace reference {

std::int32_t truncate16(std::int32_t value, std::uint64_t bits, bool rounding) {
    std::uint64_t const shift = bits % 64;
    std::int64_t const magnitude = value < 0 ? -std::int64_t{value} : value;
    // A 16-bit magnitude has at most 16 bits.
    if (shift > 16) return 0;
    std::int64_t const divisor = std::int64_t{1} << shift;
    std::int64_t kept = magnitude / divisor * divisor;
    // (2^bits - 1) / 2 in integer division: 0 for 0 bits and for 1 bit.
    if (rounding && kept != 0) kept += (divisor - 1) / 2;
    return static_cast<std::int32_t>(value < 0 ? -kept : kept);
}

Texels truncate16(Texels const& samples, std::uint64_t bits, bool rounding) {
    Plane plane = unpackOneChannel16(samples);
    for (std::int32_t& sample : plane.samples)
        sample = truncate16(sample, bits, rounding);
    return packOneChannel16(plane);
}

} // namespace reference
