#pragma once

#include "reference/Layouts.h"

namespace reference {

/// Three one-channel 16-bit textures of one size in the three-channel 16-bit layout, four times as wide. The bytes are
/// copied; alpha is 255.
Texels interleave16(Texels const& c0, Texels const& c1, Texels const& c2);

} // namespace reference
