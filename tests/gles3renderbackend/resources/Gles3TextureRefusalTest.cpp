// Uploads that are refused for their pixels: the texture is unchanged, in GL and in its fields.
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "gles3renderbackend/resources/Gles3Texture.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/RecordingGlTest.h"

#include <limits>
#include <optional>

namespace {

using Bytes = std::vector<std::uint8_t>;

char const* const kTooShort = "#Name:pixel vector is shorter than its size says"
                              "#Location:void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, "
                              "std::vector<size_t> const& size, size_t offset=0)";

class Gles3TextureRefusalTest : public RecordingGlTest {
protected:
    RecordingGl::Image const& image(Gles3Texture const& texture) const { return gl.texture(texture.texture()).image(); }

    // Refuses a vector that ends inside an image of this size.
    void refuse(Gles3Texture& texture, std::vector<size_t> const& size, std::optional<size_t> rowLength = {}) {
        gl.forgetCalls();
        EXPECT_EQ(thrownBy<VelmoraException>([&] { texture.setPixels(Bytes(5), size, 0, rowLength); }), kTooShort);
        EXPECT_EQ(gl.texts(true), std::vector<std::string>()) << "nothing of GL is changed";
    }
};

TEST_F(Gles3TextureRefusalTest, ATooShortVectorLeavesANewTextureEmpty) {
    Gles3Texture made;
    refuse(made, {4, 4, 3});
    EXPECT_EQ(made.width(), 0U);
    EXPECT_EQ(made.height(), 0U);
    EXPECT_EQ(made.format(), RenderBackend::RGBA32);
    EXPECT_EQ(gl.texture(made.texture()).levels.count(0), 0U);
}

// With the refused size in its fields the texture would take the smaller image for a part of one that is not there.
TEST_F(Gles3TextureRefusalTest, ASmallerImageArrivesAfterATooShortVector) {
    for (size_t const bytes : {1U, 3U, 4U}) {
        Gles3Texture made;
        refuse(made, {4, 4, bytes});
        auto const pixels = numberedBytes(2 * 2 * bytes);
        made.setPixels(pixels, {2, 2, bytes});
        EXPECT_EQ(made.width(), 2U);
        EXPECT_EQ(image(made).pixels, pixels) << bytes;
    }
}

TEST_F(Gles3TextureRefusalTest, ATooShortVectorLeavesAnImageSizeFormatAndSamplingAsTheyWere) {
    Gles3Texture made({}, {2, 2}, RenderBackend::RGBA32, RenderBackend::LINEAR);
    auto const before = numberedBytes(16);
    made.setPixels(before, {2, 2, 4});
    for (std::vector<size_t> const& size : {std::vector<size_t>{4, 4, 3}, {2, 2, 3}, {2, 2, 4}, {1, 9, 1}, {9, 1, 4}}) {
        refuse(made, size);
        EXPECT_EQ(made.width(), 2U);
        EXPECT_EQ(made.height(), 2U);
        EXPECT_EQ(made.format(), RenderBackend::RGBA32);
        EXPECT_EQ(image(made).pixels, before);
    }
    refuse(made, {2, 2, 4}, 7);
    EXPECT_EQ(gl.pixelStore(GL_UNPACK_ROW_LENGTH), 0);
    made.setPixels({9, 9, 9, 9}, {1, 1, 4});
    EXPECT_EQ(gl.last("glTexSubImage2D").number(4), 1) << "still an image that smaller ones go into";
}

// Each factor or sum of the bytes that GL would read passes SIZE_MAX in turn; a number that wraps around would fit.
TEST_F(Gles3TextureRefusalTest, RowsThatAreLongerThanAnyVectorAreRefused) {
    constexpr size_t kMost = std::numeric_limits<size_t>::max();
    Gles3Texture made({}, {4, 4}, RenderBackend::RGBA32, RenderBackend::NEAREST);
    refuse(made, {2, 3, 4}, kMost / 2 + 1);
    refuse(made, {2, 2, 4}, kMost - 1);
    refuse(made, {1, 2, 4}, kMost / 4 + 1);
    EXPECT_EQ(made.width(), 4U);
}

// The format of the texture is not the image's then, and GL reads RGBA.
TEST_F(Gles3TextureRefusalTest, ATooShortVectorIsRefusedAfterAnImageOfAnotherFormatWas) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    Gles3Texture made({}, {32, 32}, RenderBackend::RGBA32, RenderBackend::NEAREST);
    EXPECT_THROW(made.setPixels({}, {65, 65, 3}), VelmoraException);
    ASSERT_EQ(made.format(), RenderBackend::RGB24);
    refuse(made, {1, 2, 3});
    EXPECT_EQ(image(made).width, 32U);
}

TEST_F(Gles3TextureRefusalTest, ATooShortVectorIsRefusedAfterGlRefusedANegativeSize) {
    gl.expectError(GL_INVALID_VALUE);
    Gles3Texture made({}, {32, 32}, RenderBackend::RGBA32, RenderBackend::NEAREST);
    for (std::vector<size_t> const& size : {std::vector<size_t>{0x80000000, 40, 3}, {40, 0x80000000, 3}}) {
        made.setPixels({}, size);
        ASSERT_EQ(made.format(), RenderBackend::RGB24);
        refuse(made, {1, 2, 3});
        EXPECT_EQ(image(made).width, 32U);
    }
}

TEST_F(Gles3TextureRefusalTest, ATooShortVectorIsRefusedAfterGlRefusedAPixelBuffer) {
    gl.expectError(GL_INVALID_VALUE);
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    Gles3Texture made({}, {32, 32}, RenderBackend::RGBA32, RenderBackend::NEAREST);
    Gles3Pbo const buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, Gles3Pbo::kMappedBytes);
    made.setPixels({65, 65, 3}, buffer, 0);
    ASSERT_EQ(made.format(), RenderBackend::RGB24);
    refuse(made, {1, 2, 3});
    EXPECT_EQ(image(made).width, 32U);
}

TEST_F(Gles3TextureRefusalTest, ATooShortVectorIsRefusedAfterACopyMadeTheImage) {
    Gles3Texture made({}, {4, 4}, RenderBackend::RGB24, RenderBackend::NEAREST);
    Gles3Texture copy = made;
    copy.setPixels({}, {4, 4, 4});
    ASSERT_EQ(made.format(), RenderBackend::RGB24);
    refuse(made, {1, 2, 3});
}

TEST_F(Gles3TextureRefusalTest, ATooShortVectorIsRefusedAfterAPixelBufferMadeAnImageOfRgba) {
    Gles3Texture made({}, {4, 4}, RenderBackend::RGB24, RenderBackend::NEAREST);
    Gles3Pbo const buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, Gles3Pbo::kMappedBytes);
    made.setPixels({4, 4, 4}, buffer, 0);
    refuse(made, {1, 2, 4});
}

// GL refuses it, and reads nothing.
TEST_F(Gles3TextureRefusalTest, ATooShortVectorIsGlsToRefuseWhereNoImageOfRgbaCanBe) {
    gl.expectError(GL_INVALID_OPERATION);
    Gles3Texture made({}, {4, 4}, RenderBackend::RGB24, RenderBackend::NEAREST);
    Gles3Pbo const buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, Gles3Pbo::kMappedBytes);
    made.setPixels({4, 4, 3}, buffer, 0);
    EXPECT_NO_THROW(made.setPixels(Bytes(5), {1, 2, 3}));
    EXPECT_EQ(gl.count("glTexSubImage2D"), 1U);
    for (std::vector<size_t> const& size : {std::vector<size_t>{0, 4, 3}, {4, 0, 3}}) {
        Gles3Texture large({}, {4, 4}, RenderBackend::RGBA32, RenderBackend::NEAREST);
        Gles3Texture copy = large;
        copy.setPixels({}, size);
        EXPECT_NO_THROW(large.setPixels(Bytes(5), {1, 2, 3}));
    }
}

TEST_F(Gles3TextureRefusalTest, AnImageWithoutTexelsNeedsNoBytes) {
    for (std::vector<size_t> const& size : {std::vector<size_t>{0, 3, 4}, {3, 0, 4}}) {
        Gles3Texture made({}, {4, 4}, RenderBackend::RGBA32, RenderBackend::NEAREST);
        EXPECT_NO_THROW(made.setPixels(Bytes(1), size));
        EXPECT_EQ(gl.count("glTexSubImage2D"), 1U);
        gl.forgetCalls();
    }
}

// The order of the checks, if several fail: format, filtering, size, pixels.
TEST_F(Gles3TextureRefusalTest, OtherFailuresComeBeforeATooShortVector) {
    struct Row {
        RenderBackend::ImageFiltering filtering;
        std::vector<size_t> size;
        char const* name;
    };
    for (auto const& row : {
             Row{static_cast<RenderBackend::ImageFiltering>(3), {5000, 5000, 2}, "invalid texture format"},
             Row{RenderBackend::TRILINEAR, {5000, 5000, 4}, "TRILINEAR filtering is only allowed for power-of-two"},
             Row{static_cast<RenderBackend::ImageFiltering>(3), {5000, 5000, 4}, "invalid texture filtering type"},
             Row{RenderBackend::NEAREST, {5000, 4, 4}, "requested buffer size exceeds maximum supported size"},
             Row{RenderBackend::NEAREST, {4, 5000, 4}, "requested buffer size exceeds maximum supported size"},
             Row{RenderBackend::NEAREST, {4, 4, 4}, "pixel vector is shorter than its size says"},
         }) {
        Gles3Texture made({}, {0, 0}, RenderBackend::RGBA32, row.filtering);
        try {
            made.setPixels(Bytes(5), row.size);
            ADD_FAILURE() << "no exception";
        } catch (VelmoraException const& exception) {
            EXPECT_EQ(std::string(exception.what()).find(std::string("#Name:") + row.name), 0U) << exception.what();
        }
    }
}

} // namespace
