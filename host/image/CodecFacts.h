#pragma once

#include "host/image/InputFile.h"
#include "host/image/PictureMetadata.h"

#include <cstddef>
#include <cstdint>
#include <string>
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

/// The boxes of a JPEG 2000 or JPEG XL file that are not of its pixels: EXIF and XMP, others as they are. None of a
/// file that has no boxes.
std::vector<MetadataItem> boxesBeside(InputFile& file);

/// The comments of a JPEG, in their order.
std::vector<std::string> commentsOfJpeg(InputFile& file);

} // namespace codecfacts
