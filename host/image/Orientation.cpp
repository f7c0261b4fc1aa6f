#include "host/image/Orientation.h"

#include <cstring>

namespace {

// TIFF 6.0, tag 274; EXIF has the same.
bool mirrorsColumns(int orientation) {
    return orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
}

bool mirrorsRows(int orientation) {
    return orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
}

size_t start(size_t start, size_t length, size_t all, bool isMirrored) {
    return isMirrored ? all - start - length : start;
}

} // namespace

bool orientation::swapsSides(int orientation) {
    return orientation >= 5;
}

Size orientation::turned(Size const& size, int orientation) {
    return swapsSides(orientation) ? Size{size.height, size.width} : size;
}

Region orientation::inFile(Region const& upright, Size const& file, int orientation) {
    Region region = upright;
    if (swapsSides(orientation)) region = {upright.y, upright.x, upright.height, upright.width};
    region.x = start(region.x, region.width, file.width, mirrorsColumns(orientation));
    region.y = start(region.y, region.height, file.height, mirrorsRows(orientation));
    return region;
}

void orientation::turn(std::uint8_t const* read, Size const& size, size_t pixelBytes, int orientation,
                       std::uint8_t* upright) {
    Size const file = turned(size, orientation);
    bool const swaps = swapsSides(orientation);
    for (size_t y = 0; y < size.height; ++y)
        for (size_t x = 0; x < size.width; ++x, upright += pixelBytes) {
            size_t const column = start(swaps ? y : x, 1, file.width, mirrorsColumns(orientation));
            size_t const row = start(swaps ? x : y, 1, file.height, mirrorsRows(orientation));
            std::memcpy(upright, read + (row * file.width + column) * pixelBytes, pixelBytes);
        }
}
