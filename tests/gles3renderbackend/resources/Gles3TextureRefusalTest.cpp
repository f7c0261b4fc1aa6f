// Uploads that are refused for their pixels: the texture is unchanged, in GL and in its fields.
#include "gles3renderbackend/resources/Gles3Texture.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/RecordingGlTest.h"

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
