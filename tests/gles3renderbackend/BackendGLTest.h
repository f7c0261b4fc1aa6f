#pragma once

#include "gles3renderbackend/resources/Gles3Target.h"
#include "tests/gles3renderbackend/BackendFixture.h"
#include "tests/support/NoiseBytes.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace backendtest {

/// A rectangle of texels, row by row. Nothing of it comes from the library.
struct Picture {
    size_t width = 0;
    size_t height = 0;
    size_t bytesPerTexel = 4;
    Bytes bytes;

    Picture(size_t widthTexels, size_t heightTexels, size_t texelBytes, unsigned char fill = 0)
        : width(widthTexels),
          height(heightTexels),
          bytesPerTexel(texelBytes),
          bytes(widthTexels * heightTexels * texelBytes, fill) {}

    unsigned char* texel(size_t x, size_t y) { return &bytes[(y * width + x) * bytesPerTexel]; }
    unsigned char const* texel(size_t x, size_t y) const { return &bytes[(y * width + x) * bytesPerTexel]; }
};

/// A picture of noiseBytes().
inline Picture noise(size_t widthTexels, size_t heightTexels, size_t texelBytes, std::uint32_t start) {
    Picture picture(widthTexels, heightTexels, texelBytes);
    picture.bytes = noiseBytes(picture.bytes.size(), start);
    return picture;
}

/// How pixels lie in the texels of a target.
struct TargetLayout {
    RenderBackend::ImageFormatType format{};
    size_t bits = 0;           // of a logical pixel
    size_t pixelsPerTexel = 1; // one of these two is 1
    size_t texelsPerPixel = 1;

    size_t texels(size_t pixels) const { return pixels * texelsPerPixel / pixelsPerTexel; }
    size_t pixels(size_t texels) const { return texels * pixelsPerTexel / texelsPerPixel; }
};

constexpr TargetLayout kRgba8 = {RenderBackend::RGBA32, 32};
constexpr TargetLayout kRgb8 = {RenderBackend::RGB24, 24};
constexpr TargetLayout kOneChannel16 = {RenderBackend::RGBA32, 16, 2, 1};
constexpr TargetLayout kThreeChannels16 = {RenderBackend::RGBA32, 48, 1, 2};
constexpr TargetLayout kThreeChannels16InRgb = {RenderBackend::RGB24, 48, 1, 2};
constexpr TargetLayout kThreePixelsInRgb = {RenderBackend::RGB24, 8, 3, 1};
constexpr TargetLayout kFourPixelsInRgba = {RenderBackend::RGBA32, 8, 4, 1};

/// A texel of one picture into another: a missing alpha is 255, an alpha too many is dropped.
inline void copyTexel(Picture const& from, size_t fromX, size_t fromY, Picture& to, size_t toX, size_t toY) {
    for (size_t i = 0; i < to.bytesPerTexel; ++i)
        to.texel(toX, toY)[i] = i < from.bytesPerTexel ? from.texel(fromX, fromY)[i] : 255;
}

inline Picture upsideDown(Picture const& picture) {
    Picture result = picture;
    for (size_t y = 0; y < picture.height; ++y)
        for (size_t x = 0; x < picture.width; ++x)
            copyTexel(picture, x, y, result, x, picture.height - 1 - y);
    return result;
}

/// A surface in one colour, 10, 20, 30, 40, as colourSurface() leaves it.
inline Picture colouredPicture(size_t widthTexels, size_t heightTexels) {
    Picture picture(widthTexels, heightTexels, 4);
    for (size_t i = 0; i < picture.bytes.size(); ++i)
        picture.bytes[i] = static_cast<unsigned char>(10 * (i % 4 + 1));
    return picture;
}

} // namespace backendtest

/// An RGBA32 instance on the pbuffer of the test program.
class BackendGLTest : public ::testing::Test {
protected:
    static constexpr size_t kSurfaceTexels = 16; // the pbuffer is square

    Gles3RenderBackendInstance& gles() const { return backendtest::gles3(instance); }

    static size_t bytesPerTexel(RenderBackend::ImageFormatType format) {
        return format == RenderBackend::RGB24 ? 3 : 4;
    }

    Filter instantiated(std::string const& name) const {
        Filter filter = backendtest::namedFilter(name);
        instance->createFilterInstance(filter);
        return filter;
    }

    /// All texels of a target. Its logical width must fill them.
    backendtest::Picture read(size_t target) const {
        auto const size = instance->targetSize(target);
        auto const logicalWidth = target == 0 ? size[0] : gles().target(target).logicalSize()[0];
        backendtest::Picture picture(size[0], size[1], bytesPerTexel(gles().target(target).format()));
        picture.bytes = instance->getPixels(target, {0, logicalWidth, 0, size[1]});
        return picture;
    }

    /// The contents of colouredPicture() on the host's surface.
    backendtest::Picture colourSurface() const {
        instance->clear(0, {10, 20, 30, 40});
        return backendtest::colouredPicture(kSurfaceTexels, kSurfaceTexels);
    }

    size_t createTarget(backendtest::TargetLayout const& layout, backendtest::Sizes const& size) const {
        return instance->createTarget(size, layout.bits, false, RenderBackend::NEAREST, layout.format);
    }

    /// A target of 8-bit RGBA pixels that holds a picture.
    size_t targetOf(backendtest::Picture const& picture) const {
        size_t const target = instance->createTarget({picture.width, picture.height}, 32, false, RenderBackend::NEAREST,
                                                     RenderBackend::RGBA32);
        fill(target, picture, picture.width);
        return target;
    }

    /// Puts a picture into a target, which it fills, by drawing it as a single tile; pictures have the target's texels.
    void fill(size_t target, backendtest::Picture const& picture, size_t logicalWidth) const {
        Filter blit = instantiated("BlitFilter4x8");
        instance->setTile(kFillTile, picture.bytes, {picture.width, picture.height, picture.bytesPerTexel}, 0);
        instance->drawTiles(target, blit, {0, logicalWidth - 1, 0, picture.height - 1}, {0, 0, 0, 0},
                            {logicalWidth, picture.height}, {{0, 0}}, {kFillTile}, {});
        instance->eraseTile(kFillTile);
        instance->destroyFilterInstance(blit);
    }

    backendtest::Surface surface{kSurfaceTexels, kSurfaceTexels};
    Gles3RenderBackend backend{RenderBackend::RGBA32, backendtest::kDefaultBudget};
    std::shared_ptr<RenderBackendInstance> instance = backend.createInstance(surface);

private:
    static constexpr size_t kFillTile = 999999;
};
