#pragma once

#include "host/image/SampleSource.h"

#include <string>

/// Decides which densities in picture files state the physical size of a pixel. Most state the size of a print.
namespace pixeldensity {

enum class Origin {
    Instrument, ///< from a slide scanner or a microscope: always believed
    Tag,        ///< TIFF's resolution: believed above 72 dots per inch, unless it is customary for printing
    Hint        ///< from photographs and pictures on screens: believed above any density of print
};

/// Sets the physical size of the facts, or leaves it unknown. An impossible size is set too: the writer of a store
/// reports it.
void set(ImageFacts& facts, Origin origin, double pixelsPerMillimetreX, double pixelsPerMillimetreY);

/// Sets the pixel size from an OME-TIFF's description, if it has one. Returns whether it did.
bool setFromOme(ImageFacts& facts, std::string const& description);

} // namespace pixeldensity
