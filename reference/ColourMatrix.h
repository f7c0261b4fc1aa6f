#pragma once

#include "reference/Layouts.h"

#include <array>
#include <cstdint>

// 3 x 3 colour matrix in Q10 (1024 is 1.0), column-major: coefficients 0..2 are the weights of input red in output red,
// green and blue, 3..5 those of input green, 6..8 those of input blue.
namespace reference {

using Matrix3 = std::array<std::int32_t, 9>;

/// Each coefficient times strength, in Q10: f = round(strength * 1024), halves away from zero, then
/// (coefficient * f + 512) >> 10 in 32-bit arithmetic that wraps.
Matrix3 scaledMatrix(Matrix3 const& matrix, double strength);

/// 8-bit RGBA: floor(M * rgb + 0.5) clamped to 0..255, alpha 255. Equal to float shaders while the sum of a row's
/// |scaled coefficients| stays below 65536.
Texels matrix8(Texels const& image, Matrix3 const& matrix, double strength);

/// The sum over the inputs divided by 1024, rounded half away from zero. Equal to the filter while the sum of an
/// output's |scaled coefficients| stays below 65536.
std::array<std::int64_t, 3> matrixTimes(Matrix3 const& scaled, std::array<std::int32_t, 3> const& pixel);

/// Three-channel 16-bit in and out.
Texels matrix16(Texels const& image, Matrix3 const& matrix, double strength);

} // namespace reference
