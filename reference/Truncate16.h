#pragma once

#include "reference/Layouts.h"

#include <cstdint>

namespace reference {

/// Clears the low bits of the magnitude, so negative values go towards zero like positive ones. `rounding` adds
/// 2^(bits-1) - 1 away from zero to every result that is not zero. The bit count is taken modulo 64.
std::int32_t truncate16(std::int32_t value, std::uint64_t bits, bool rounding);

/// One-channel 16-bit in and out; results are modulo 2^16 (-32768 with 15 bits and rounding is -49151).
Texels truncate16(Texels const& samples, std::uint64_t bits, bool rounding);

} // namespace reference
