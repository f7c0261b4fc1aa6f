#pragma once

#include "renderbackend/RenderBackend.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// The layout of pixels' samples in 8-bit RGBA texels. docs/SAMPLE_LAYOUTS.md draws them.
enum class SampleLayout {
    kRgb8,           ///< one pixel per texel, and no alpha
    kRgba8,          ///< one pixel per texel
    kOneChannel16,   ///< two pixels per texel: one band of a picture
    kThreeChannel16, ///< one pixel in two texels
    kFourChannel16   ///< one pixel in two texels, all of their bytes
};

namespace samplelayout {

size_t bitsPerPixel(SampleLayout layout);
size_t components(SampleLayout layout);
/// Bytes per pixel in the result of getPixels.
size_t bytesPerPixel(SampleLayout layout);
bool isSigned(SampleLayout layout);
/// The format of targets of this layout.
RenderBackend::ImageFormatType format(SampleLayout layout);

/// Texels in a row of pixels; with one channel `pixels` is even.
size_t texels(SampleLayout layout, size_t pixels);
/// Pixels in a row of texels; with three and four channels `texels` is even.
size_t pixels(SampleLayout layout, size_t texels);

/// Offset of a 16-bit sample in a pixel of three channels:
///
///     byte      0   1   2   3   4   5   6   7
///     channel   0   0   1   -   1   2   2   -      each little-endian
struct SampleBytes {
    size_t low;
    size_t high;
};
constexpr std::array<SampleBytes, 3> kThreeChannels = {{{0, 1}, {2, 4}, {5, 6}}};

inline std::int16_t threeChannelSample(unsigned char const* pixel, size_t channel) {
    return static_cast<std::int16_t>(pixel[kThreeChannels[channel].low] | pixel[kThreeChannels[channel].high] << 8U);
}

} // namespace samplelayout
