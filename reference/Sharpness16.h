#pragma once

#include "reference/Layouts.h"

#include <cstdint>

// Separable unsharp mask on 10-bit data in 16-bit samples. Weights along each axis: 1, 13, 36, 13, 1, together 64.
namespace reference {

/// The source as both passes read it: clamped to 0..1023.
std::int32_t clampTo10Bits(std::int32_t value);

/// The shader's gain, 32 times the gain. Deliberate: the fraction of the gain is dropped before the scaling by 32, so
/// only whole gains count. Then shifted right by shiftBits (0..31), arithmetically.
std::int32_t sharpness16Gain(double gain, int shiftBits);

/// One value of the second pass: source + floor((a_gain * (4096 * source - blur) + 2^16) / 2^17), not clamped.
/// `source` is already clamped to 10 bits. Domain of the filter: |a_gain * (4096 * source - blur)| < 2^31.
std::int64_t sharpened16(std::int32_t source, std::int64_t blur, std::int32_t aGain);

/// First pass: the blur along x at scale 64 (at most 65472, unsigned), three-channel 16-bit in and out. Taps read the
/// texture with GL_CLAMP_TO_EDGE, texel by texel: a tap outside reads the edge texel for both halves of its pixel, so
/// the two pixels at each end of a row are no blur of the image.
Texels sharpnessH16(Texels const& source);

/// Second pass: the blur of `blurred` along y and the combination with `source`, three-channel 16-bit. Rows outside
/// read the edge row.
Texels sharpnessV16(Texels const& source, Texels const& blurred, double gain, int shiftBits);

/// Both passes on one channel with the edge pixel repeated outside: the textbook definition, equal to the two filters
/// from two pixels inside the left and right edge on.
Plane sharpness16(Plane const& source, double gain, int shiftBits);

} // namespace reference
