#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Pixels of three 16-bit channels, as they lie in the bytes of two RGBA texels:
///
///     byte      0   1   2   3   4   5   6   7
///     channel   0   0   1   -   1   2   2   -      each its low byte first
namespace deeptexels {

constexpr std::size_t kPixelBytes = 8;

struct Place {
    std::size_t low;
    std::size_t high;
};

constexpr std::array<Place, 3> kPlaces = {{{0, 1}, {2, 4}, {5, 6}}};

inline std::int16_t sample(unsigned char const* pixel, std::size_t channel) {
    return static_cast<std::int16_t>(pixel[kPlaces[channel].low] | pixel[kPlaces[channel].high] << 8U);
}

} // namespace deeptexels
