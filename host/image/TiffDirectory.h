#pragma once

#include "host/image/SampleSource.h"

#include <cstdint>
#include <string>
#include <vector>

/// What a TIFF file says of the picture in one of its directories, as far as libvips does not tell.
struct TiffDirectory {
    size_t index = 0;              ///< in the file, from 0
    size_t pages = 1;              ///< directories that are no smaller copies of another
    std::uint16_t photometric = 0; ///< what its samples stand for
    std::uint16_t compression = 1;
    std::uint16_t colourBands = 0; ///< bands before the extra samples, as they are read: 3 of a palette
    std::uint16_t extraBands = 0;
    bool hasAlpha = false;      ///< whether the first extra band is said to be alpha
    bool isMultiplied = false;  ///< whether colours have been multiplied by it
    bool roundsPalette = false; ///< whether a palette has colours that 8 bits cannot hold
    std::string colourSpace;    ///< where it is neither grey nor RGB
    bool convertible = false;   ///< whether libvips converts it to sRGB
    bool tiled = false;
    std::uint64_t heldBytes = 0;     ///< of what is decoded at once, and of what libvips keeps of that
    double pixelsPerMillimetreX = 0; ///< 0 where it gives none
    double pixelsPerMillimetreY = 0;
    std::string description;
    std::vector<std::uint64_t> multipliedTags; ///< where in the file the bytes lie that say isMultiplied

    /// Throws HostError (unreadable image; usage, where there is no such page).
    static TiffDirectory read(InputFile& file, SampleRequest const& request);
};
