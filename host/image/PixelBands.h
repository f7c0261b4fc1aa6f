#pragma once

#include <cstddef>
#include <cstdint>

/// Converts between the bands of a picture (1 grey, 2 grey and alpha, 3 RGB, 4 RGBA) and the backend's components.
namespace pixelbands {

constexpr size_t kTexelBytes = 4;

/// Whether the last band is alpha.
constexpr bool hasAlpha(size_t bands) {
    return bands == 2 || bands == 4;
}

constexpr bool isGrey(size_t bands) {
    return bands <= 2;
}

/// "grey", "grey and alpha", "RGB" or "RGBA".
char const* toText(size_t bands);

/// Components of the tiles that hold pixels of `bands` bands: RGB for grey, RGBA for grey and alpha.
constexpr size_t components(size_t bands) {
    return hasAlpha(bands) ? 4 : 3;
}

/// Widens `count` pixels of 8-bit bands to components(bands) bytes each.
void widen(std::uint8_t const* from, size_t bands, std::uint8_t* to, size_t count);

/// Narrows `count` RGBA texels to 8-bit bands; red is the grey.
void narrow(std::uint8_t const* from, std::uint8_t* to, size_t bands, size_t count);

} // namespace pixelbands
