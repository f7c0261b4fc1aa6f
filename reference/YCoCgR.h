#pragma once

#include "reference/Layouts.h"

#include <cstdint>

// The reversible YCoCg-R colour transform (Malvar and Sullivan 2003).
namespace reference {

struct Rgb {
    std::int32_t r = 0;
    std::int32_t g = 0;
    std::int32_t b = 0;
};

struct YCoCg {
    std::int32_t y = 0;
    std::int32_t co = 0;
    std::int32_t cg = 0;
};

/// co = r - b, tmp = b + floor(co/2), cg = g - tmp, y = tmp + floor(cg/2)
YCoCg yCoCgFromRgb(Rgb const& rgb);
/// tmp = y - floor(cg/2), g = cg + tmp, b = tmp - floor(co/2), r = b + co. Not clamped.
Rgb rgbFromYCoCg(YCoCg const& colour);

/// 8-bit RGBA to (Y, Co, Cg) in the three-channel 16-bit layout; alpha of the input is not read.
Texels rgba8ToYCoCg16(Texels const& rgba);
/// (Y, Co, Cg) to (R, G, B), both three-channel 16-bit; results are modulo 2^16.
Texels yCoCg16ToRgb16(Texels const& yCoCg);
/// (Y, Co, Cg) to 8-bit RGBA: results are clamped to 0..255, never wrapped; alpha is 255.
Texels yCoCg16ToRgba8(Texels const& yCoCg);

} // namespace reference
