#include "host/filter/FilterRunner.h"

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/gl/SurfacelessContext.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Bytes = std::vector<unsigned char>;

class FilterRunnerGLTest : public testing::Test {
protected:
    // All rows and pixels differ. The last byte of a texel of three channels is 255.
    static Bytes picture(SampleLayout layout, Size const& size) {
        Bytes bytes(size.width * size.height * samplelayout::bytesPerPixel(layout));
        for (size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(
                layout == SampleLayout::kThreeChannel16 && i % 4 == 3 ? 255 : 7 * i + i / 256);
        return bytes;
    }

    // The picture with its edge pixels repeated, byte by byte.
    static Bytes padded(Bytes const& bytes, size_t pixelBytes, Size const& size, Insets const& sides) {
        Bytes result;
        for (size_t y = 0; y < sides.top + size.height + sides.bottom; ++y) {
            size_t const row = y < sides.top ? 0 : std::min(y - sides.top, size.height - 1);
            for (size_t x = 0; x < sides.left + size.width + sides.right; ++x) {
                size_t const column = x < sides.left ? 0 : std::min(x - sides.left, size.width - 1);
                auto const pixel =
                    bytes.begin() + static_cast<std::ptrdiff_t>((row * size.width + column) * pixelBytes);
                result.insert(result.end(), pixel, pixel + static_cast<std::ptrdiff_t>(pixelBytes));
            }
        }
        return result;
    }

    SurfacelessContext context_;
    Gles3RenderBackend backend_{RenderBackend::RGBA32, 1000 * 1000};
    std::shared_ptr<RenderBackendInstance> instance_ = backend_.createInstance(context_);
    FilterRunner runner_{instance_};
};

TEST_F(FilterRunnerGLTest, WhatGoesInComesOutInEveryLayout) {
    Size const size = {22, 13};
    for (SampleLayout const layout : {SampleLayout::kRgb8, SampleLayout::kRgba8, SampleLayout::kOneChannel16,
                                      SampleLayout::kThreeChannel16, SampleLayout::kFourChannel16}) {
        SCOPED_TRACE(samplelayout::bitsPerPixel(layout));
        Bytes const bytes = picture(layout, size);
        OwnedTarget const target = runner_.upload(layout, size, bytes);
        EXPECT_EQ(runner_.read(target, layout, wholeOf(size)), bytes);
    }
}

TEST_F(FilterRunnerGLTest, ARegionIsReadByPixelsOfItsLayout) {
    Size const size = {22, 13};
    Region const part = {6, 4, 8, 3};
    for (SampleLayout const layout :
         {SampleLayout::kRgba8, SampleLayout::kOneChannel16, SampleLayout::kThreeChannel16}) {
        size_t const pixelBytes = samplelayout::bytesPerPixel(layout);
        SCOPED_TRACE(pixelBytes);
        Bytes const bytes = picture(layout, size);
        Bytes expected;
        for (size_t y = part.y; y < part.y + part.height; ++y) {
            auto const row = bytes.begin() + static_cast<std::ptrdiff_t>((y * size.width + part.x) * pixelBytes);
            expected.insert(expected.end(), row, row + static_cast<std::ptrdiff_t>(part.width * pixelBytes));
        }
        EXPECT_EQ(runner_.read(runner_.upload(layout, size, bytes), layout, part), expected);
    }
}

TEST_F(FilterRunnerGLTest, EdgePixelsGoOnBeyondTheSides) {
    Size const size = {5, 3};
    Insets const sides = {2, 1, 0, 3};
    Size const all = {8, 6};
    for (SampleLayout const layout : {SampleLayout::kRgba8, SampleLayout::kThreeChannel16}) {
        Bytes const bytes = picture(layout, size);
        OwnedTarget const target = runner_.padEdges(runner_.upload(layout, size, bytes), layout, size, sides);
        EXPECT_EQ(runner_.read(target, layout, wholeOf(all)),
                  padded(bytes, samplelayout::bytesPerPixel(layout), size, sides));
    }
}

TEST_F(FilterRunnerGLTest, ATileWithoutPixelsIsDrawnAsZerosAndASmallOneIsStretched) {
    Size const size = {6, 4};
    OwnedTarget const target = runner_.upload(SampleLayout::kRgba8, size, Bytes(6 * 4 * 4, 200));
    runner_.draw(target, SampleLayout::kRgba8, {1, 1}, {}, {1, 1, 2, 2});
    runner_.draw(target, SampleLayout::kRgba8, {1, 1}, {1, 2, 3, 4}, {3, 1, 2, 2});
    Bytes expected(6 * 4 * 4, 200);
    for (size_t y = 1; y < 3; ++y) {
        for (size_t i = 0; i < 8; ++i) {
            expected[(y * 6 + 1) * 4 + i] = 0;
            expected[(y * 6 + 3) * 4 + i] = static_cast<unsigned char>(1 + i % 4);
        }
    }
    EXPECT_EQ(runner_.read(target, SampleLayout::kRgba8, wholeOf(size)), expected);
}

} // namespace
