#include "gles3renderbackend/filters/Gles3BlitFilter16.h"
#include "gles3renderbackend/filters/Gles3BlitFilter8.h"
#include "gles3renderbackend/filters/Gles3FilterMask.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/ShaderFixture.h"
#include "tests/support/PixelMatchers.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kUntouched = 3;

class Gles3BlitFilterGLTest : public ::testing::Test {
protected:
    /// A target of logical pixels, filled with texels. Unspecified: all bytes kUntouched.
    size_t target(size_t width, size_t height, size_t bits, Bytes pixels = {}) {
        auto const id = backend_.makeTarget(width, height, bits);
        auto& made = backend_->target(id);
        if (pixels.empty()) pixels.assign(made.width() * made.height() * 4, kUntouched);
        made.setPixels(pixels, {made.width(), made.height(), 4});
        return id;
    }

    Picture read(size_t id) {
        auto const& made = backend_->target(id);
        Bytes pixels;
        made.getPixels(pixels, 0, 0, made.logicalSize()[0], made.height());
        return {made.width(), made.height(), pixels};
    }

    template <class Shader>
    void draw(DrawCall const& call) {
        Filter filter = plainFilter();
        Shader shader(filter);
        shader.draw(call.sources, call.inputW, call.inputH, call.destination, call.clip[0], call.clip[1], call.clip[2],
                    call.clip[3], SingleFilterParameters(), call.offset, *backend_, filter);
    }

    TestInstance backend_;
};

TEST_F(Gles3BlitFilterGLTest, WhatReachesOutOfTheDestinationIsCutOff) {
    Picture const picture(8, 8, numberedBytes(8 * 8 * 4));
    auto const destination = target(10, 10, 32);
    draw<Gles3BlitFilter8>({{{target(8, 8, 32, picture.bytes), 0, 0, false}}, 8, 8, destination, {0, 0, 0, 0}, {5, 7}});
    auto expected = Picture::filled(10, 10, Bytes(4, kUntouched));
    expected.copy(picture, 0, 0, 5, 3, 5, 7);
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, expected.bytes, 10));
}

TEST_F(Gles3BlitFilterGLTest, WholeTextureStretchesTheWholeTexture) {
    Picture const picture(3, 2, numberedBytes(3 * 2 * 4));
    auto const destination = target(12, 10, 32);
    draw<Gles3BlitFilter8>({{{target(3, 2, 32, picture.bytes), 2, 1, true}}, 12, 10, destination});
    auto expected = Picture::filled(12, 10, Bytes(4, 0));
    for (size_t y = 0; y < 10; ++y)
        for (size_t x = 0; x < 12; ++x)
            expected.setTexel(x, y, picture.texel(x / 4, y / 5));
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, expected.bytes, 12));
}

// The surface of the test program is 16 x 16; GL's rows count from its bottom.
TEST_F(Gles3BlitFilterGLTest, TheHostsOwnSurfaceShowsTheFirstRowAtTheTop) {
    Picture const picture(9, 7, numberedBytes(9 * 7 * 4));
    backend_->clear(0, {0, 0, 0, 0});
    draw<Gles3BlitFilter8>({{{target(9, 7, 32, picture.bytes), 1, 2, false}}, 6, 4, 0, {0, 0, 0, 0}, {3, 5}});
    auto expected = Picture::filled(16, 16, {0, 0, 0, 0});
    for (size_t row = 0; row < 4; ++row)
        expected.copy(picture, 1, 2 + row, 6, 1, 3, 15 - (5 + row));
    Bytes pixels(16 * 16 * 4);
    backend_->target(0).getPixels(pixels, 0, 0, 16, 16);
    EXPECT_TRUE(pixelsEqual(pixels, expected.bytes, 16));
}

TEST_F(Gles3BlitFilterGLTest, TheStateOfTheHostDoesNotShowThrough) {
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 1, 1);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_FRONT_AND_BACK);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_STENCIL_TEST);
    auto const pixels = numberedBytes(4 * 4 * 4);
    auto const destination = target(4, 4, 32);
    draw<Gles3BlitFilter8>({{{target(4, 4, 32, pixels), 0, 0, false}}, 4, 4, destination});
    glCullFace(GL_BACK);
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, pixels, 4));
    GLboolean depthMask = GL_TRUE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &depthMask);
    EXPECT_EQ(depthMask, GL_FALSE);
}

TEST_F(Gles3BlitFilterGLTest, OnlyTheSixteenBitBlitAlignsItsOutputToPairs) {
    Filter filter = plainFilter();
    EXPECT_EQ(Gles3BlitFilter8(filter).alignXOut(), 1U);
    EXPECT_EQ(Gles3BlitFilter16(filter).alignXOut(), 2U);
    EXPECT_EQ(Gles3BlitFilter16(filter).alignXIn(), 1U);
    EXPECT_EQ(Gles3FilterMask(filter).alignXOut(), 1U);
    EXPECT_EQ(filter.alignXOut(), 1U) << "the description that it was made for stays";
}

// The texture coordinate follows the position: a part of the target shows the same part of the source.
TEST_F(Gles3BlitFilterGLTest, TheMaskShowsTheSourceWhereItLies) {
    Picture const picture(8, 6, numberedBytes(8 * 6 * 4));
    auto const destination = target(8, 6, 32);
    draw<Gles3FilterMask>({{{target(8, 6, 32, picture.bytes), 0, 0, true}}, 5, 3, destination, {0, 0, 0, 0}, {2, 1}});
    auto expected = Picture::filled(8, 6, Bytes(4, kUntouched));
    expected.copy(picture, 2, 1, 5, 3, 2, 1);
    EXPECT_TRUE(pixelsEqual(read(destination).bytes, expected.bytes, 8));
}

} // namespace
