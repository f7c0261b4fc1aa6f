#pragma once

#include "host/image/SampleSource.h"

#include <vips/vips8>

/// Our names of libvips' colour spaces, and conversions.
namespace vipscolours {

/// Unpacks samples that libvips keeps packed, such as Radiance's, into numbers.
vips::VImage unpacked(vips::VImage const& image);

/// Sets the layout, and the colour space if it is neither grey nor RGB. Alpha is left out: libvips takes any extra band
/// for alpha. Throws vips::VError (complex numbers).
void describe(vips::VImage const& image, ImageFacts& facts);

/// Converts to sRGB of 8 bits, or to grey if there is one colour band; plain colours are left unchanged.
vips::VImage toSrgb(vips::VImage const& image);

} // namespace vipscolours
