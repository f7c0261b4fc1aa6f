#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Tone curves as tables of output bytes, one entry per input code. Computed in double; no GL.
namespace toneTable {

/// The largest depth of a table: samples have at most 16 bits.
constexpr size_t kMaxBitDepth = 16;

/// A gamma curve from black to white, with a straight toe like sRGB's if gamma is above 1:
///
///     255 |            .-----      entries below `black` are 0, from `white` on 255;
///         |         .-'            in between the power segment
///         |       .'                   (1 + a) * ((i - black) / (white - black))^(1 / gamma) - a
///         |      /                 with a = 0.055, or a = 0 where gamma is at most 1
///       0 |____./
///          black toe   white
///
/// white is cut to the largest code, black to white. Throws std::length_error for depths above kMaxBitDepth.
std::vector<std::uint8_t> gamma(size_t bitDepth, double gamma, std::uint64_t black, std::uint64_t white);

/// The gamma curve for 8-bit sRGB input: codes are linearised to 3500 steps, which index a gamma table of 12 bits.
std::vector<std::uint8_t> blackWhiteGamma8(double gamma, std::uint64_t black, std::uint64_t white);

/// The sRGB encoding curve (IEC 61966-2-1) for 8-bit linear codes, rounded down: code 255 gives 254.
std::vector<std::uint8_t> srgbFromLinear8();

} // namespace toneTable
