#pragma once

#include "host/Geometry.h"
#include "host/filter/SampleLayout.h"
#include "renderbackend/Filter.h"

#include <cstddef>
#include <string>
#include <vector>

/// The canonical description of every built-in filter, by byName(), and by a function for filters that our own code
/// uses: `filterTruncate16` describes "FilterTruncate16". Ready for Filter::bind() or createFilterInstance(). For a
/// filter with parameters, getParametersObject() makes the record. docs/FILTERS.md has the formulas,
/// docs/SAMPLE_LAYOUTS.md the layouts.
///
/// In the drawings # is an output pixel, . a border that the output lacks. Borders count output pixels. Filters without
/// a drawing are pointwise: output pixel (x, y) depends on input pixel (x, y) alone.
namespace description {

/// Horizontal step of the inverse 5/3 wavelet: inputs low band L and high band H, M samples per row each, M even along
/// x where the bands are textures of their own. H is cut one column earlier than L:
///
///     L[a]  L[a+1]  ...  L[a+M-1]          x[2a] x[2a+1] ...  x[2a+2M-5]
///     H[a-1] H[a]   ...  H[a+M-2]    ->    #     #     #  #   #          . . . .
///
/// Destination offset and source column are of the same parity; clips are even.
Filter filterFirIH53LeGall16();

/// Vertical step of the inverse 5/3 wavelet: inputs low band L and high band H, M rows each, H cut one row earlier:
///
///     L[a]     H[a-1]          # x[2a]
///     L[a+1]   H[a]            # x[2a+1]
///     ...      ...       ->    # ...
///     L[a+M-1] H[a+M-2]        # x[2a+2M-5]
///                              .
///                              .
///                              .
///                              .
///
/// Two columns share a texel: source column and clips along x are even. The destination row is even.
Filter filterFirIV53LeGall16();

/// Copies, byte for byte: one 16-bit channel (even columns, widths and clips), three 16-bit channels, RGB, RGBA.
Filter blitFilter1x16();
Filter blitFilter3x16();
Filter blitFilter3x8();
Filter blitFilter4x8();
/// The filter that copies pixels of a layout; kFourChannel16 is copied as whole texels.
Filter blitFilter(SampleLayout layout);

/// One 16-bit channel as grey pixels, unscaled and clamped to 0..255. Source column and destination offset are of the
/// same parity.
Filter filter1x16ToRGB8();

/// Three planes of one 16-bit channel (c0, c1, c2) to pixels of three channels:
///
///     c0 [ 0 | 1 ] [ 2 | 3 ]              two pixels per texel
///     c1 [ 0 | 1 ] [ 2 | 3 ]      ->      [0 even][0 odd][1 even][1 odd][2 even] ...
///     c2 [ 0 | 1 ] [ 2 | 3 ]              two texels per pixel
///
/// Twice the source column equals the destination offset (texels) modulo 4.
Filter filterInterleave16();

/// The reversible YCoCg-R transform back to RGB, clamped to 8 bits, and the same in 16 bits.
Filter filterYCoCg16ToRGBA8();
Filter filterYCoCg16ToRGB16();

/// Three 16-bit channels as 8-bit pixels, unscaled and clamped to 0..255.
Filter filter3x16To4x8();

/// Unsharp mask on 8-bit pixels, all four channels:
///
///     taps          borders
///         o         . . . . . .
///       o o o       . . . . . .
///     o o c o o     . . # # . .
///       o o o       . . . . . .
///         o         . . . . . .
Filter filterSharpness8();

/// First pass of the 16-bit unsharp mask, the blur along x, scaled by 64:
///
///     o o c o o     . . # # # . .
Filter filterSharpnessH16();

/// Second pass: input 00 is the source, input 01 the output of the first pass. Borders are two rows at the top and the
/// bottom; those of the first pass are missing in its output, which starts two columns to the right in the source:
///
///     sources {source, x + 2, y}, {blur, 0, y}          o     . . . .
///                                                       o     . . . .
///                                                       c     # # # #
///                                                       o     . . . .
///                                                       o     . . . .
Filter filterSharpnessV16();

/// Linear 8-bit RGB to sRGB codes.
Filter filterLinear8ToSRGB8();
/// Linear codes of 9 to 16 bits to 8-bit sRGB. The name differs from the next one in the case of one letter.
Filter filterLinear16ToSRGB8(size_t bitDepth = 16);
/// Codes of 9 to 16 bits to 8 bits through a black point, a white point and a gamma.
Filter filterLinear16TosRGB8(size_t bitDepth = 16);
/// A black point, a white point and a gamma on 8-bit sRGB pixels.
Filter filterBlackWhiteGamma8();

/// Masks: run by RenderBackendInstance::maskRange, which draws a shape filled with the source's pixels.
Filter maskFilter3x8();
Filter maskFilter4x8();
Filter maskFilter3x16();

/// Cuts 16-bit samples to multiples of a power of two, magnitudes toward zero. Source column and clips are even.
Filter filterTruncate16();

/// Colour matrices.
Filter filter3x3Matrix8();
Filter filter3x3Matrix16();

/// RGBA copied to a target without alpha.
Filter filterRemoveAlpha8();

/// The reversible YCoCg-R transform, 8-bit RGB to three 16-bit channels.
Filter filterRGBA8ToYCoCg16();

/// Contrast-limited adaptive histogram equalisation of the first of four 16-bit channels. Regions of 40 x 40 pixels
/// start at the input's first pixel. Borders are the output pixels that a run leaves out. With borders of 40, tiles
/// that are cut at multiples of 40 and have an apron of 40 pixels agree with the whole picture:
///
///     +--------------+
///     | 40 . . . . . |   read and counted
///     | .  # # # # . |   written
///     | .  . . . . . |
///     +--------------+
///
/// With a left border of 40 or more the first 40 columns are not equalised, with such a top border the first 40 rows;
/// smaller borders are equalised and left out.
Filter filterCLAHE(Insets const& borders = {});

/// All names, in the order in which hosts list them.
std::vector<std::string> const& names();

/// The description of a name, with default depths and borders. Throws std::out_of_range for an unknown name.
Filter byName(std::string const& name);

} // namespace description
