#pragma once

#include "host/image/SampleSource.h"

#include <string>

/// Which densities of picture files say how large a pixel of the thing shown is. Most say how large it is to be
/// printed.
namespace pixeldensity {

enum class Origin {
    Instrument, ///< what a slide scanner or a microscope says of its own pixels: always
    Tag,        ///< TIFF's resolution: where it is finer than 72 dots per inch and none that is customary for printing
    Hint        ///< of photographs and pictures on screens: where it is finer than anything is printed
};

/// Sets the physical size of the facts, or leaves it unknown. A size that cannot be is set too: who keeps it says so.
void set(ImageFacts& facts, Origin origin, double pixelsPerMillimetreX, double pixelsPerMillimetreY);

/// The size of pixels in an OME-TIFF's description; sets nothing where it holds none. Whether it did.
bool setFromOme(ImageFacts& facts, std::string const& description);

} // namespace pixeldensity
