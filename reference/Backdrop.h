#pragma once

#include "reference/Layouts.h"

#include <array>
#include <cstdint>

namespace reference {

/// A picture over a colour, rounded to the nearest byte; opaque.
Texels overBackdrop(Texels const& picture, std::array<std::uint8_t, 3> const& colour);

} // namespace reference
