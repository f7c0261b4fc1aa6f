#pragma once

#include <cstdint>
#include <vector>

// Tone curves as tables of bytes. They are defined in double arithmetic; each formula is evaluated as written.
namespace reference {

using ByteTable = std::vector<std::uint8_t>;

/// The straight part at the dark end of a gamma curve: out = slope * in up to in = threshold. All 0 for gamma <= 1.
struct GammaToe {
    double a = 0.0;
    double slope = 0.0;
    double threshold = 0.0;
};

GammaToe gammaToe(double gamma);

/// 2^bitDepth bytes: 0 below the black point, 255 from the white point on, the gamma curve between. Black and white are
/// codes; white is capped at the largest code, then black at white. gamma > 0, bitDepth 1..16.
ByteTable gammaTable(unsigned bitDepth, double gamma, std::uint64_t blackPoint, std::uint64_t whitePoint);

/// 8-bit sRGB codes to linear light, full scale 3500.
std::vector<std::uint16_t> linearisationTable();

/// linearisationTable() followed by the 12-bit gamma table; black and white are 12-bit codes. 256 bytes.
ByteTable blackWhiteGamma8Table(double gamma, std::uint64_t blackPoint, std::uint64_t whitePoint);

/// Linear codes to 8-bit sRGB, 2^bitDepth bytes. bitDepth above 16: std::invalid_argument.
ByteTable srgbTable(unsigned bitDepth);

} // namespace reference
