#pragma once

#include <cstdint>

/// Plain integer models of every filter: slow, obvious, and independent of the product's code.
namespace reference {

/// floor(numerator / denominator), denominator > 0. The integer meaning of every floor in the shaders.
std::int64_t floorDiv(std::int64_t numerator, std::int64_t denominator);

/// numerator / denominator rounded to the nearest whole number, halves away from zero, denominator > 0.
std::int64_t roundDivAwayFromZero(std::int64_t numerator, std::int64_t denominator);

/// A whole value clamped to 0..255, as an 8-bit target does.
std::uint8_t clampToByte(std::int64_t value);

} // namespace reference
