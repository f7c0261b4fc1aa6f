#include "gles3renderbackend/resources/Gles3Target.h"

#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/GlErrors.h"
#include "tests/support/PixelMatchers.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

using Bytes = std::vector<std::uint8_t>;

char const* const kIncomplete = "#Name:Failed to setup render to texture"
                                "#Location:void Gles3Target::bindTextureToFrameBuffer() const";

Gles3Target target(size_t width, size_t height, RenderBackend::ImageFormatType format = RenderBackend::RGBA32) {
    return {width, height, {}, 1, 1, format, RenderBackend::NEAREST};
}

Bytes read(Gles3Target const& target, size_t x, size_t y, size_t width, size_t height) {
    Bytes pixels;
    target.getPixels(pixels, x, y, width, height);
    return pixels;
}

TEST(Gles3TargetGLTest, WhatWasUploadedIsReadBackInGlsOrder) {
    Picture const picture(7, 5, numberedBytes(7 * 5 * 4));
    Gles3Target made = target(7, 5);
    made.setPixels(picture.bytes, {7, 5, 4});
    EXPECT_TRUE(pixelsEqual(read(made, 0, 0, 7, 5), picture.bytes, 7));
    auto part = Picture::filled(4, 3, {0, 0, 0, 0});
    part.copy(picture, 2, 1, 4, 3, 0, 0);
    EXPECT_TRUE(pixelsEqual(read(made, 2, 1, 4, 3), part.bytes, 4));
}

TEST(Gles3TargetGLTest, RgbIsReadBackTightlyPacked) {
    for (size_t const width : {1U, 2U, 3U, 4U, 5U, 8U}) {
        Picture const picture(width, 3, numberedBytes(width * 3 * 3), 3);
        Gles3Target made = target(width, 3, RenderBackend::RGB24);
        made.setPixels(picture.bytes, {width, 3, 3});
        EXPECT_TRUE(pixelsEqual(read(made, 0, 0, width, 3), picture.bytes, width, 3));
    }
}

TEST(Gles3TargetGLTest, ReadingLeavesTheBytesBehindTheRectangleAlone) {
    Gles3Target made = target(3, 2, RenderBackend::RGB24);
    made.setPixels(numberedBytes(18), {3, 2, 3});
    Bytes buffer(20, 99);
    EXPECT_EQ(made.getPixels(buffer.data(), buffer.size(), 0, 0, 3, 2), 18U);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 18), numberedBytes(18));
    EXPECT_EQ(Bytes(buffer.begin() + 18, buffer.end()), (Bytes{99, 99}));
}

TEST(Gles3TargetGLTest, ClearFillsEveryTexel) {
    Gles3Target const made = target(7, 5);
    made.clear(1, 0.2F, 0, 0.6F);
    EXPECT_TRUE(pixelsEqual(read(made, 0, 0, 7, 5), Picture::filled(7, 5, {255, 51, 0, 153}).bytes, 7));
}

TEST(Gles3TargetGLTest, ClearClampsTheColour) {
    Gles3Target const made = target(2, 2);
    made.clear(7, -3, 2, 1);
    EXPECT_TRUE(pixelsEqual(read(made, 0, 0, 2, 2), Picture::filled(2, 2, {255, 0, 255, 255}).bytes, 2));
}

TEST(Gles3TargetGLTest, ClearRectFillsOddRectanglesAndNothingElse) {
    struct Row {
        size_t x, y, width, height;
    };
    for (auto const& row :
         {Row{0, 0, 1, 1}, Row{1, 2, 3, 1}, Row{5, 0, 2, 5}, Row{6, 4, 1, 1}, Row{3, 1, 0, 3}, Row{0, 0, 7, 5}}) {
        Gles3Target const made = target(7, 5);
        made.clear(0, 0, 0, 0);
        made.clearRect(1, 1, 0, 1, row.x, row.y, row.width, row.height);
        auto expected = Picture::filled(7, 5, {0, 0, 0, 0});
        expected.copy(Picture::filled(7, 5, {255, 255, 0, 255}), 0, 0, row.width, row.height, row.x, row.y);
        EXPECT_TRUE(pixelsEqual(read(made, 0, 0, 7, 5), expected.bytes, 7));
        EXPECT_EQ(glIsEnabled(GL_SCISSOR_TEST), GL_FALSE);
    }
}

TEST(Gles3TargetGLTest, ClearRectReachingOutsideIsCutOff) {
    Gles3Target const made = target(4, 3);
    made.clear(0, 0, 0, 0);
    made.clearRect(1, 1, 1, 1, 2, 1, 100, 100);
    auto expected = Picture::filled(4, 3, {0, 0, 0, 0});
    expected.copy(Picture::filled(4, 3, {255, 255, 255, 255}), 0, 0, 2, 2, 2, 1);
    EXPECT_TRUE(pixelsEqual(read(made, 0, 0, 4, 3), expected.bytes, 4));
}

TEST(Gles3TargetGLTest, ClearRectOfAPackedTargetFillsTheTexelsThatItTouchesFirst) {
    Gles3Target made(6, 2, {12, 2}, 2, 1, RenderBackend::RGBA32, RenderBackend::NEAREST);
    auto expected = Picture::filled(6, 2, {9, 9, 9, 9});
    made.setPixels(expected.bytes, {6, 2, 4});
    made.clearRect(0, 0, 0, 0, 3, 0, 5, 1); // column 1, 3 texels
    expected.copy(Picture::filled(3, 1, {0, 0, 0, 0}), 0, 0, 3, 1, 1, 0);
    EXPECT_TRUE(pixelsEqual(read(made, 0, 0, 12, 2), expected.bytes, 6));
}

TEST(Gles3TargetGLTest, APackedTargetReadsTexelsRoundedUp) {
    Gles3Target made(51, 2, {102, 2}, 2, 1, RenderBackend::RGBA32, RenderBackend::NEAREST);
    auto const pixels = numberedBytes(51 * 2 * 4);
    made.setPixels(pixels, {51, 2, 4});
    EXPECT_TRUE(pixelsEqual(read(made, 0, 0, 101, 2), pixels, 51));
}

TEST(Gles3TargetGLTest, GrayCannotBeRenderedTo) {
    EXPECT_EQ(thrownBy<VelmoraException>([] { target(4, 4, RenderBackend::GRAY8); }), kIncomplete);
}

// A texture without an image was never bound, so GL does not know its name as a texture yet.
TEST(Gles3TargetGLTest, AnEmptyTargetCannotBeRenderedTo) {
    expectGlError(GL_INVALID_OPERATION);
    EXPECT_EQ(thrownBy<VelmoraException>([] { target(0, 4); }), kIncomplete);
}

TEST(Gles3TargetGLTest, AttachingATextureThatBecameGrayThrows) {
    Gles3Target made = target(2, 2);
    made.setPixels(Bytes(9), {3, 3, 1});
    glBindFramebuffer(GL_FRAMEBUFFER, made.framebuffer());
    EXPECT_EQ(thrownBy<VelmoraException>([&] { made.bindTextureToFrameBuffer(); }), kIncomplete);
}

TEST(Gles3TargetGLTest, AResizedTargetIsAttachedAgainAndTakesItsNewSize) {
    Gles3Target made = target(2, 2);
    made.resize(5, 4);
    glBindFramebuffer(GL_FRAMEBUFFER, made.framebuffer());
    made.bindTextureToFrameBuffer();
    made.clear(1, 0, 1, 1);
    EXPECT_TRUE(pixelsEqual(read(made, 0, 0, 5, 4), Picture::filled(5, 4, {255, 0, 255, 255}).bytes, 5));
}

TEST(Gles3TargetGLTest, TheHostsOwnSurfaceIsClearedAndRead) {
    Gles3Target const surface;
    surface.clear(0, 0, 0, 1);
    surface.clearRect(1, 0, 0, 1, 3, 2, 4, 5);
    auto expected = Picture::filled(16, 16, {0, 0, 0, 255});
    expected.copy(Picture::filled(4, 5, {255, 0, 0, 255}), 0, 0, 4, 5, 3, 2);
    EXPECT_TRUE(pixelsEqual(read(surface, 0, 0, 16, 16), expected.bytes, 16));
}

TEST(Gles3TargetGLTest, CopiesShareThePixels) {
    auto made = std::make_unique<Gles3Target>(target(2, 2));
    Gles3Target const copy = *made;
    copy.clear(0, 1, 0, 1);
    EXPECT_EQ(read(*made, 0, 0, 1, 1), (Bytes{0, 255, 0, 255}));
    made.reset();
    EXPECT_EQ(read(copy, 1, 1, 1, 1), (Bytes{0, 255, 0, 255}));
    EXPECT_EQ(glIsFramebuffer(copy.framebuffer()), GL_TRUE);
}

} // namespace
