#pragma once

#include "reference/Layouts.h"

#include <cstdint>

namespace reference {

/// The shader's gain, in units of 1/32: trunc(gain * 32), shifted right by shiftBits (0..31), arithmetically. |gain *
/// 32| < 2^31.
std::int32_t sharpness8GainIn32nds(double gain, int shiftBits);

/// Unsharp mask on all four channels of an 8-bit image. Weights of the blur, 128 in all:
///
///             1
///          5 15  5
///        1 15 44 15  1
///          5 15  5
///             1
///
/// out = floor(gain * (128 * centre - sum) / 128 + centre + 0.5), clamped to 0..255. Taps outside read the edge.
Texels sharpness8(Texels const& image, double gain, int shiftBits);

} // namespace reference
