#include "host/filter/SampleLayout.h"

namespace {

constexpr size_t kByteBits = 8;
constexpr size_t kSampleBits = 16;
constexpr size_t kTexelBytes = 4;

bool isOf8Bits(SampleLayout layout) {
    return layout == SampleLayout::kRgb8 || layout == SampleLayout::kRgba8;
}

} // namespace

size_t samplelayout::components(SampleLayout layout) {
    switch (layout) {
    case SampleLayout::kOneChannel16:
        return 1;
    case SampleLayout::kRgb8:
    case SampleLayout::kThreeChannel16:
        return 3;
    case SampleLayout::kRgba8:
    case SampleLayout::kFourChannel16:
        break;
    }
    return 4;
}

size_t samplelayout::bitsPerPixel(SampleLayout layout) {
    return components(layout) * (isOf8Bits(layout) ? kByteBits : kSampleBits);
}

size_t samplelayout::bytesPerPixel(SampleLayout layout) {
    return layout == SampleLayout::kThreeChannel16 ? 2 * kTexelBytes : bitsPerPixel(layout) / kByteBits;
}

bool samplelayout::isSigned(SampleLayout layout) {
    return !isOf8Bits(layout);
}

RenderBackend::ImageFormatType samplelayout::format(SampleLayout layout) {
    return layout == SampleLayout::kRgb8 ? RenderBackend::RGB24 : RenderBackend::RGBA32;
}

size_t samplelayout::texels(SampleLayout layout, size_t pixels) {
    if (isOf8Bits(layout)) return pixels;
    return layout == SampleLayout::kOneChannel16 ? pixels / 2 : 2 * pixels;
}

size_t samplelayout::pixels(SampleLayout layout, size_t texels) {
    if (isOf8Bits(layout)) return texels;
    return layout == SampleLayout::kOneChannel16 ? 2 * texels : texels / 2;
}
