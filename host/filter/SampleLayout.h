#pragma once

#include "renderbackend/RenderBackend.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// How the samples of pixels lie in 8-bit RGBA texels. docs/SAMPLE_LAYOUTS.md draws them.
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
/// Bytes of a pixel as getPixels delivers it.
size_t bytesPerPixel(SampleLayout layout);
bool isSigned(SampleLayout layout);
/// The format of targets that hold such pixels.
RenderBackend::ImageFormatType format(SampleLayout layout);

/// Texels of a row of pixels; of one channel the pixels are even in number.
size_t texels(SampleLayout layout, size_t pixels);
/// Pixels of a row of texels; of three and four channels the texels are even in number.
size_t pixels(SampleLayout layout, size_t texels);

/// Where a sample of three channels of 16 bits lies among the bytes of its pixel:
///
///     byte      0   1   2   3   4   5   6   7
///     channel   0   0   1   -   1   2   2   -      each its low byte first
struct SampleBytes {
    size_t low;
    size_t high;
};
constexpr std::array<SampleBytes, 3> kThreeChannels = {{{0, 1}, {2, 4}, {5, 6}}};

inline std::int16_t threeChannelSample(unsigned char const* pixel, size_t channel) {
    return static_cast<std::int16_t>(pixel[kThreeChannels[channel].low] | pixel[kThreeChannels[channel].high] << 8U);
}

} // namespace samplelayout
