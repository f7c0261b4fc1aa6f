#pragma once

#include <cstdint>

/// Plain integer models of every filter: slow, obvious, and without a line of the product in them.
namespace reference {

/// floor(numerator / denominator), denominator > 0. The integer meaning of every floor in the shaders.
std::int64_t floorDiv(std::int64_t numerator, std::int64_t denominator);

/// numerator / denominator rounded to the nearest whole number, halves away from zero, denominator > 0.
std::int64_t roundDivAwayFromZero(std::int64_t numerator, std::int64_t denominator);

/// What an 8-bit target makes of a whole value: 0..255.
std::uint8_t clampToByte(std::int64_t value);

} // namespace reference
