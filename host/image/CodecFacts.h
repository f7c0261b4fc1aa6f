#pragma once

#include "host/image/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// What files of some formats say and libvips does not tell.
namespace codecfacts {

/// Frames of an animated PNG; 1 of any other.
size_t framesOfPng(InputFile& file);

/// The orientation that an EXIF block says, 1 to 8; 1 where it says none.
int exifOrientation(std::vector<std::uint8_t> const& exif);

struct Jpeg2000 {
    bool hasPalette = false;         ///< its colours lie in a table
    bool lastIsAlpha = false;        ///< its last channel is the alpha of all others
    bool lastIsMultiplied = false;   ///< and has been multiplied into them
    size_t bits = 0;                 ///< of a sample of the first component; 0 where it does not say
    double pixelsPerMillimetreX = 0; ///< as captured; 0 where it does not say
    double pixelsPerMillimetreY = 0;
};

Jpeg2000 jpeg2000(InputFile& file);

} // namespace codecfacts
