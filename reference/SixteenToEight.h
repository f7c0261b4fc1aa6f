#pragma once

#include "reference/Layouts.h"

// Signed 16-bit samples on an 8-bit target: unscaled, clamped to 0..255.
namespace reference {

/// One-channel 16-bit to a grey pixel per sample; alpha is 255. Twice as wide as the input texture.
Texels oneChannel16ToRgb8(Texels const& samples);
/// Three-channel 16-bit to RGB; alpha is 255. Half as wide as the input texture.
Texels threeChannel16ToRgba8(Texels const& pixels);

} // namespace reference
