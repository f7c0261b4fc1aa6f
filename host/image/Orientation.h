#pragma once

#include "host/Geometry.h"

#include <cstddef>
#include <cstdint>

/// Pictures whose rows and columns lie in a file in another order than they are looked at, by the values 1 to 8 that
/// TIFF and EXIF have for it. 1: as they lie. Rows and columns are counted from the upper left.
namespace orientation {

/// Whether the file's rows are columns.
bool swapsSides(int orientation);

/// The size of the upright picture of a file's, and the other way round.
Size turned(Size const& size, int orientation);

/// Where a region of the upright picture lies in the file, whose picture has that size.
Region inFile(Region const& upright, Size const& file, int orientation);

/// Turns a region that was read at inFile() upright: `size` of the upright region. Pixels are tightly packed.
void turn(std::uint8_t const* read, Size const& size, size_t pixelBytes, int orientation, std::uint8_t* upright);

} // namespace orientation
