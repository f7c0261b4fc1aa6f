#pragma once

#include "host/image/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Properties of files that libvips does not report.
namespace codecfacts {

/// Number of frames of an animated PNG; 1 for any other.
size_t framesOfPng(InputFile& file);

/// The orientation in an EXIF block, 1 to 8; 1 if it has none.
int exifOrientation(std::vector<std::uint8_t> const& exif);

struct Jpeg2000 {
    bool hasPalette = false;         ///< colours come from a lookup table
    bool lastIsAlpha = false;        ///< the last channel is the alpha of all others
    bool lastIsMultiplied = false;   ///< the other channels are premultiplied by it
    size_t bits = 0;                 ///< bits of a sample of the first component; 0: unknown
    double pixelsPerMillimetreX = 0; ///< capture resolution; 0: unknown
    double pixelsPerMillimetreY = 0;
};

Jpeg2000 jpeg2000(InputFile& file);

} // namespace codecfacts
