#pragma once

#include "reference/Layouts.h"

namespace reference {

/// Copies width x height texels from (sourceX, sourceY) to (x, y) of the destination, byte for byte.
void blit(Texels const& source, int sourceX, int sourceY, int width, int height, Texels& destination, int x, int y);

/// The texels of a rectangle.
Texels cropped(Texels const& source, int x, int y, int width, int height);

} // namespace reference
