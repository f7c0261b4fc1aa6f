#pragma once

#include "reference/Layouts.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// Runs of the filters compared with plain integer models: for `velmora verify` and for the tests.
namespace conformance {

// Input pictures of the filters. Random numbers have fixed seeds: every run uses the same images.

/// Values at which bytes, signs and clamps change over.
constexpr std::array<std::int32_t, 18> kBoundaries = {-32768, -32767, -1024, -257, -256, -255, -3,   -1,   0,
                                                      1,      3,      127,   128,  255,  256,  1023, 1024, 32767};

reference::Texels randomTexels(int width, int height, std::uint32_t randomStart);
/// Random samples from first to last.
reference::Plane randomPlane(int width, int height, std::uint32_t randomStart, std::int32_t first = -32768,
                             std::int32_t last = 32767);
reference::Planes3 randomPlanes(int width, int height, std::uint32_t randomStart, std::int32_t first = -32768,
                                std::int32_t last = 32767);
/// Random elements of kBoundaries.
reference::Plane boundaryPlane(int width, int height, std::uint32_t randomStart);

/// All 65536 values, 256 x 256.
reference::Plane everySample();
/// Every value in channel `channel`, random ones in the others.
reference::Planes3 everySampleOfChannel(size_t channel, std::uint32_t randomStart);
/// All 65536 values in each channel, in three orders.
reference::Planes3 everySampleThrice();
/// Every triple of kBoundaries.
reference::Planes3 boundaryTriples();

/// 2^16 of the 2^24 colours, from colour 2^16 * index on, 256 x 256 RGBA texels with noise for alpha.
reference::Texels colours(std::uint32_t index);
constexpr std::uint32_t kColourParts = 256;
/// 2^16 random colours.
reference::Texels randomColours(std::uint32_t randomStart);

/// Four 16-bit components per pixel: the first from -100 to 400 with a horizontal slope, the others random.
reference::Texels greySlope(int widthPixels, int height, std::uint32_t randomStart);

/// A rectangle of one channel.
reference::Plane cropped(reference::Plane const& plane, int x, int y, int width, int height);

} // namespace conformance
