#include "gles3renderbackend/resources/Gles3Texture.h"

#include "gles3renderbackend/filters/Gles3BlitFilter8.h"
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/ShaderFixture.h"
#include "tests/support/GlErrors.h"
#include "tests/support/PixelMatchers.h"

#include <gmock/gmock.h>

#include <cstring>

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Textures are looked at as a shader sees them, because not every format can be rendered to or read back.
class Gles3TextureGLTest : public ::testing::Test {
protected:
    Gles3Texture& source() { return backend_->target(source_); }

    void useSource(RenderBackend::ImageFiltering filtering) { source_ = backend_.makeTarget(1, 1, 32, filtering); }

    /// The whole source drawn over width x height texels.
    Bytes drawn(size_t width, size_t height) {
        Filter filter = plainFilter();
        Gles3BlitFilter8 blit(filter);
        auto const destination = backend_.makeTarget(width, height);
        backend_->clear(destination, {1, 2, 3, 4});
        blit.draw({{source_, 0, 0, true}}, width, height, destination, 0, 0, 0, 0, SingleFilterParameters(), {0, 0},
                  *backend_, filter);
        Bytes pixels;
        backend_->target(destination).getPixels(pixels, 0, 0, width, height);
        return pixels;
    }

    TestInstance backend_;
    size_t source_ = backend_.makeTarget(1, 1);
};

Bytes opaque(Bytes const& rgb) {
    Bytes rgba;
    for (size_t i = 0; i < rgb.size(); i += 3)
        rgba.insert(rgba.end(), {rgb[i], rgb[i + 1], rgb[i + 2], 255});
    return rgba;
}

TEST_F(Gles3TextureGLTest, EveryByteOfAnRgbaTextureArrives) {
    auto const pixels = numberedBytes(16 * 16 * 4);
    source().setPixels(pixels, {16, 16, 4});
    EXPECT_TRUE(pixelsEqual(drawn(16, 16), pixels, 16));
}

// 3 and 1 bytes per texel and odd widths: rows follow each other without padding.
TEST_F(Gles3TextureGLTest, AnRgbTextureIsOpaque) {
    auto const pixels = numberedBytes(7 * 5 * 3);
    source().setPixels(pixels, {7, 5, 3});
    EXPECT_TRUE(pixelsEqual(drawn(7, 5), opaque(pixels), 7));
}

TEST_F(Gles3TextureGLTest, AGrayTextureHasTheSameByteInEveryColour) {
    auto const pixels = numberedBytes(5 * 3);
    source().setPixels(pixels, {5, 3, 1});
    Bytes expected;
    for (auto const gray : pixels)
        expected.insert(expected.end(), {gray, gray, gray, 255});
    EXPECT_TRUE(pixelsEqual(drawn(5, 3), expected, 5));
}

TEST_F(Gles3TextureGLTest, ThePixelsStartAtTheOffset) {
    auto const pixels = numberedBytes(13 + 4 * 4 * 4);
    source().setPixels(pixels, {4, 4, 4}, 13);
    EXPECT_TRUE(pixelsEqual(drawn(4, 4), Bytes(pixels.begin() + 13, pixels.end()), 4));
}

TEST_F(Gles3TextureGLTest, ARowLengthSkipsTheRestOfEachRowAndIsResetAfterwards) {
    Picture const wide(7, 4, numberedBytes(7 * 4 * 3), 3);
    source().setPixels(wide.bytes, {5, 4, 3}, 0, 7);
    auto expected = Picture::filled(5, 4, {0, 0, 0});
    expected.copy(wide, 0, 0, 5, 4, 0, 0);
    EXPECT_TRUE(pixelsEqual(drawn(5, 4), opaque(expected.bytes), 5));

    auto const next = numberedBytes(6 * 5 * 4, 90);
    source().setPixels(next, {6, 5, 4});
    EXPECT_TRUE(pixelsEqual(drawn(6, 5), next, 6));
}

TEST_F(Gles3TextureGLTest, ASmallerImageIsWrittenIntoTheCorner) {
    auto expected = Picture(16, 16, numberedBytes(16 * 16 * 4));
    source().setPixels(expected.bytes, {16, 16, 4});
    Picture const corner(5, 3, numberedBytes(5 * 3 * 4, 100));
    source().setPixels(corner.bytes, {5, 3, 4});
    expected.copy(corner, 0, 0, 5, 3, 0, 0);
    EXPECT_EQ(source().width(), 16U);
    EXPECT_TRUE(pixelsEqual(drawn(16, 16), expected.bytes, 16));
}

TEST_F(Gles3TextureGLTest, AnImageOfTheSameWidthReplacesTheOldOne) {
    source().setPixels(numberedBytes(16 * 16 * 4), {16, 16, 4});
    auto const pixels = numberedBytes(16 * 3 * 4, 50);
    source().setPixels(pixels, {16, 3, 4});
    EXPECT_EQ(source().height(), 3U);
    EXPECT_TRUE(pixelsEqual(drawn(16, 3), pixels, 16));
}

// Required: the in-place path passes RGBA; GL refuses it here and the old pixels stay.
TEST_F(Gles3TextureGLTest, ASmallerImageLeavesAnRgbTextureAsItWas) {
    expectGlError(GL_INVALID_OPERATION);
    auto const rgb = numberedBytes(4 * 4 * 3);
    source().setPixels(rgb, {4, 4, 3});
    source().setPixels(numberedBytes(2 * 2 * 4, 77), {2, 2, 3});
    EXPECT_TRUE(pixelsEqual(drawn(4, 4), opaque(rgb), 4));
}

TEST_F(Gles3TextureGLTest, ASmallerImageLeavesAGrayTextureAsItWas) {
    expectGlError(GL_INVALID_OPERATION);
    source().setPixels(Bytes(16, 9), {4, 4, 1});
    source().setPixels(numberedBytes(2 * 2 * 4, 77), {2, 2, 1});
    EXPECT_TRUE(pixelsEqual(drawn(4, 4), Picture::filled(4, 4, {9, 9, 9, 255}).bytes, 4));
}

TEST_F(Gles3TextureGLTest, APixelBufferIsUploadedFromTheOffset) {
    Gles3Pbo buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, Gles3Pbo::kMappedBytes);
    auto const pixels = numberedBytes(5 * 4 * 4);
    void* const mapped = buffer.mapRange(0, Gles3Pbo::kMappedBytes);
    ASSERT_NE(mapped, nullptr);
    std::memcpy(static_cast<std::uint8_t*>(mapped) + 1001, pixels.data(), pixels.size());
    buffer.unmap();
    source().setPixels({5, 4, 4}, buffer, 1001);
    EXPECT_TRUE(pixelsEqual(drawn(5, 4), pixels, 5));
}

TEST_F(Gles3TextureGLTest, APixelBufferOfRgbOrGrayRowsHasNoPadding) {
    auto const pixels = numberedBytes(7 * 3 * 3);
    Gles3Pbo buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, 100);
    buffer.setSubData(pixels.data(), pixels.size(), 10);
    source().setPixels({7, 3, 3}, buffer, 10);
    EXPECT_TRUE(pixelsEqual(drawn(7, 3), opaque(pixels), 7));
}

TEST_F(Gles3TextureGLTest, AMappedPixelBufferIsRefusedByGl) {
    source().setPixels({1, 2, 3, 4}, {1, 1, 4});
    Gles3Pbo buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, Gles3Pbo::kMappedBytes);
    buffer.mapRange(0, Gles3Pbo::kMappedBytes);
    expectGlError(GL_INVALID_OPERATION);
    source().setPixels({1, 1, 4}, buffer, 0);
    buffer.unmap();
    EXPECT_EQ(drawn(1, 1), (Bytes{1, 2, 3, 4}));
}

// Filtering. Two texels, 0 and 200, over eight: linear weights in steps of 1/8 of the distance.

TEST_F(Gles3TextureGLTest, NearestTakesTheTexelItself) {
    source().setPixels({0, 0, 0, 255, 200, 200, 200, 255}, {2, 1, 4});
    auto const pixels = drawn(8, 1);
    for (size_t x = 0; x < 8; ++x)
        EXPECT_EQ(pixels[x * 4], x < 4 ? 0 : 200) << x;
}

// At most 2 off: drivers round the weights to as few as 8 bits.
TEST_F(Gles3TextureGLTest, LinearBlendsNeighboursAndClampsAtTheEdge) {
    useSource(RenderBackend::LINEAR);
    source().setPixels({0, 0, 0, 255, 200, 200, 200, 255}, {2, 1, 4});
    auto const pixels = drawn(8, 1);
    Bytes const expected{0, 0, 25, 75, 125, 175, 200, 200};
    for (size_t x = 0; x < 8; ++x)
        EXPECT_NEAR(pixels[x * 4], expected[x], 2) << x;
    EXPECT_EQ(pixels[0], 0);
    EXPECT_EQ(pixels[7 * 4], 200);
}

Bytes chequered(size_t side) {
    Bytes pixels;
    for (size_t i = 0; i < side * side; ++i) {
        auto const value = static_cast<std::uint8_t>((i % side + i / side) % 2 == 0 ? 0 : 255);
        pixels.insert(pixels.end(), {value, value, value, 255});
    }
    return pixels;
}

// The mean of black and white is 127.5; mipmaps and blend may each round it up or down.
TEST_F(Gles3TextureGLTest, TrilinearShowsTheMeanOnceMipmapsAreMade) {
    useSource(RenderBackend::TRILINEAR);
    source().setPixels(chequered(64), {64, 64, 4});
    source().generateMipmaps();
    auto const pixels = drawn(4, 4);
    for (size_t i = 0; i < pixels.size(); i += 4)
        EXPECT_NEAR(pixels[i], 127.5, 2.5) << i;
}

// A texture that lacks its mipmaps is sampled as opaque black.
TEST_F(Gles3TextureGLTest, AnUploadMakesNoMipmapsByItself) {
    useSource(RenderBackend::TRILINEAR);
    source().setPixels(Bytes(8 * 8 * 4, 255), {8, 8, 4});
    EXPECT_TRUE(pixelsEqual(drawn(1, 1), {0, 0, 0, 255}, 1));
}

// Size and maximum.

TEST_F(Gles3TextureGLTest, TheMaximumIsTheDriversOwn) {
    GLint maximum = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maximum);
    ASSERT_GE(maximum, 2048);
    auto const limit = static_cast<size_t>(maximum);
    Gles3Texture texture;
    texture.resize(limit, 1);
    try {
        texture.resize(limit + 1, 1);
        ADD_FAILURE() << "no exception";
    } catch (VelmoraRangeException const& exception) {
        EXPECT_EQ(exception.limit(), limit);
    }
    EXPECT_EQ(texture.width(), limit + 1);
}

TEST_F(Gles3TextureGLTest, ResizedTexturesTakePixelsAgain) {
    source().resize(300, 200);
    auto const pixels = numberedBytes(9 * 8 * 4);
    source().setPixels(pixels, {9, 8, 4});
    EXPECT_EQ(source().width(), 300U);
    source().resize(2, 2);
    source().setPixels(pixels, {9, 8, 4});
    EXPECT_TRUE(pixelsEqual(drawn(9, 8), pixels, 9));
}

TEST_F(Gles3TextureGLTest, GlDeletesTheTextureWithItsLastCopy) {
    auto first = std::make_unique<Gles3Texture>(Bytes(16), std::vector<size_t>{2, 2}, RenderBackend::RGBA32,
                                                RenderBackend::NEAREST);
    auto const name = first->texture();
    auto copy = std::make_unique<Gles3Texture>(*first);
    first.reset();
    EXPECT_EQ(glIsTexture(name), GL_TRUE);
    copy.reset();
    EXPECT_EQ(glIsTexture(name), GL_FALSE);
}

} // namespace
