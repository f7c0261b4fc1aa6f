#pragma once

#include "host/image/SampleSource.h"

#include <vips/vips8>

/// What libvips calls the colours of an image, in our words, and its conversions.
namespace vipscolours {

/// Samples as numbers, where libvips has them packed.
vips::VImage unpacked(vips::VImage const& image);

/// Sets the layout, and the colour space where it is neither grey nor RGB. Alpha is left out: libvips takes any band
/// for it. Throws vips::VError (complex numbers).
void describe(vips::VImage const& image, ImageFacts& facts);

/// To sRGB, or to grey where there is one colour band, of 8 bits; plain colours stay as they are.
vips::VImage toSrgb(vips::VImage const& image);

} // namespace vipscolours
