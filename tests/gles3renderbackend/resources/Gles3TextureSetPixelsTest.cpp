#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "gles3renderbackend/resources/Gles3Texture.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

namespace {

using Texts = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

constexpr auto kNoFiltering = static_cast<RenderBackend::ImageFiltering>(3);

char const* const kInvalidFormat =
    "#Name:invalid texture format"
    "#Location:void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, std::vector<size_t> const& size)";
char const* const kTooLarge =
    "#Name:requested buffer size exceeds maximum supported size"
    "#Location:void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, std::vector<size_t> const& size)";
char const* const kPowerOfTwo = "#Name:TRILINEAR filtering is only allowed for power-of-two dimensions"
                                "#Location:void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, "
                                "std::vector<size_t> const& size, size_t offset=0)";
char const* const kInvalidFiltering = "#Name:invalid texture filtering type"
                                      "#Location:void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, "
                                      "std::vector<size_t> const& size, size_t offset=0)";

class Gles3TextureSetPixelsTest : public RecordingGlTest {
protected:
    static Gles3Texture texture(size_t width, size_t height,
                                RenderBackend::ImageFormatType format = RenderBackend::RGBA32,
                                RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST) {
        return {{}, {width, height}, format, filtering};
    }

    RecordingGl::Image const& image(Gles3Texture const& texture) const { return gl.texture(texture.texture()).image(); }
};

// In place.

TEST_F(Gles3TextureSetPixelsTest, SmallerInBothDirectionsUpdatesTheCornerAndKeepsTheSize) {
    Gles3Texture made = texture(256, 256);
    gl.forgetCalls();
    auto const pixels = numberedBytes(100 * 100 * 4);
    made.setPixels(pixels, {100, 100, 4});
    EXPECT_EQ(gl.texts(),
              (Texts{"glBindTexture(GL_TEXTURE_2D, 1)",
                     "glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 100, 100, GL_RGBA, GL_UNSIGNED_BYTE, data)"}));
    EXPECT_EQ(made.width(), 256U);
    EXPECT_EQ(made.height(), 256U);
    auto expected = Picture::filled(256, 256, {0, 0, 0, 0});
    expected.copy(Picture(100, 100, pixels), 0, 0, 100, 100, 0, 0);
    EXPECT_EQ(image(made).pixels, expected.bytes);
}

TEST_F(Gles3TextureSetPixelsTest, TheComparisonIsStrictInBothDirections) {
    for (auto const& [width, height] : {std::pair<size_t, size_t>{256, 100}, {100, 256}, {256, 256}, {100, 257}}) {
        Gles3Texture made = texture(256, 256);
        gl.forgetCalls();
        made.setPixels({}, {width, height, 4});
        EXPECT_EQ(gl.count("glTexSubImage2D"), 0U);
        EXPECT_EQ(gl.count("glTexImage2D"), 1U);
        EXPECT_EQ(made.width(), width);
        EXPECT_EQ(made.height(), height);
    }
}

// Required: the in-place path ignores the format, and GL refuses unsuitable ones.
TEST_F(Gles3TextureSetPixelsTest, InPlacePassesRgbaWhateverTheFormatIs) {
    for (auto const format : {RenderBackend::RGB24, RenderBackend::GRAY8}) {
        Gles3Texture made = texture(4, 4, format);
        auto const before = image(made).pixels;
        gl.expectError(GL_INVALID_OPERATION);
        made.setPixels(numberedBytes(12), {2, 2, 3});
        EXPECT_EQ(gl.last("glTexSubImage2D").text(),
                  "glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, data)");
        EXPECT_EQ(image(made).pixels, before);
        EXPECT_EQ(made.format(), format);
        EXPECT_EQ(made.width(), 4U);
    }
}

TEST_F(Gles3TextureSetPixelsTest, InPlaceLooksNeitherAtTheBytesATexelNorAtTheFiltering) {
    Gles3Texture made = texture(4, 4, RenderBackend::RGBA32, RenderBackend::TRILINEAR);
    gl.forgetCalls();
    made.setPixels(numberedBytes(36), {3, 3, 2});
    EXPECT_EQ(gl.names(), (Texts{"glBindTexture", "glTexSubImage2D"}));
    EXPECT_EQ(made.format(), RenderBackend::RGBA32);
}

TEST_F(Gles3TextureSetPixelsTest, InPlaceStartsAtTheOffset) {
    Gles3Texture made = texture(2, 2);
    made.setPixels(Bytes{9, 9, 9, 1, 2, 3, 4}, {1, 1, 4}, 3);
    EXPECT_EQ(image(made).pixels, (Bytes{1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Gles3TextureSetPixelsTest, InPlaceSetsAndResetsTheRowLength) {
    Gles3Texture made = texture(4, 4);
    gl.forgetCalls();
    made.setPixels(numberedBytes((3 + 2) * 4), {2, 2, 4}, 0, 3);
    EXPECT_EQ(gl.texts(), (Texts{"glBindTexture(GL_TEXTURE_2D, 1)", "glPixelStorei(GL_UNPACK_ROW_LENGTH, 3)",
                                 "glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, data)",
                                 "glPixelStorei(GL_UNPACK_ROW_LENGTH, 0)"}));
    auto expected = Picture::filled(4, 4, {0, 0, 0, 0});
    auto source = numberedBytes((3 + 2) * 4);
    source.resize(3 * 2 * 4);
    expected.copy(Picture(3, 2, source), 0, 0, 2, 2, 0, 0);
    EXPECT_EQ(image(made).pixels, expected.bytes);
}

TEST_F(Gles3TextureSetPixelsTest, InPlaceRefusesAVectorThatEndsInsideTheImageBeforeAnyCall) {
    Gles3Texture made = texture(4, 4);
    gl.forgetCalls();
    EXPECT_THROW(made.setPixels(numberedBytes(35), {3, 3, 4}), VelmoraException);
    EXPECT_THROW(made.setPixels(numberedBytes(36), {3, 3, 3}, 1), VelmoraException);
    EXPECT_THROW(made.setPixels(numberedBytes(36), {3, 3, 4}, 37), VelmoraException);
    EXPECT_THROW(made.setPixels({}, {3, 3, 4}), VelmoraException);
    EXPECT_THROW(made.setPixels(numberedBytes((2 * 5 + 3) * 4 - 1), {3, 3, 4}, 0, 5), VelmoraException);
    EXPECT_TRUE(gl.calls().empty());
    made.setPixels(numberedBytes(37), {3, 3, 4}, 1);
    made.setPixels(numberedBytes((2 * 5 + 3) * 4), {3, 3, 4}, 0, 5);
    EXPECT_EQ(gl.count("glTexSubImage2D"), 2U);
}

// A new image.

TEST_F(Gles3TextureSetPixelsTest, ANewImageIsMadeInThisOrder) {
    Gles3Texture made;
    gl.forgetCalls();
    made.setPixels(numberedBytes(2 * 7 * 4), {5, 2, 4}, 0, 7);
    EXPECT_EQ(gl.texts(), (Texts{"glBindTexture(GL_TEXTURE_2D, 1)", "glPixelStorei(GL_UNPACK_ROW_LENGTH, 7)",
                                 "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST)",
                                 "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST)",
                                 "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
                                 "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
                                 "glPixelStorei(GL_UNPACK_ALIGNMENT, 1)", "glGetIntegerv(GL_MAX_TEXTURE_SIZE, data)",
                                 "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 5, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, data)",
                                 "glPixelStorei(GL_UNPACK_ROW_LENGTH, 0)"}));
    auto expected = Picture::filled(5, 2, {0, 0, 0, 0});
    expected.copy(Picture(7, 2, numberedBytes(2 * 7 * 4)), 0, 0, 5, 2, 0, 0);
    EXPECT_EQ(image(made).pixels, expected.bytes);
}

TEST_F(Gles3TextureSetPixelsTest, WithoutARowLengthItIsLeftAlone) {
    Gles3Texture made;
    gl.forgetCalls();
    made.setPixels({1, 2, 3, 4}, {1, 1, 4});
    EXPECT_EQ(gl.count("glPixelStorei"), 1U);
    EXPECT_EQ(gl.last("glPixelStorei").text(), "glPixelStorei(GL_UNPACK_ALIGNMENT, 1)");
}

TEST_F(Gles3TextureSetPixelsTest, TheBytesATexelChooseTheFormat) {
    struct Row {
        size_t bytes;
        RenderBackend::ImageFormatType format;
        GLenum gl;
    };
    for (auto const& row : {Row{1, RenderBackend::GRAY8, GL_LUMINANCE}, Row{3, RenderBackend::RGB24, GL_RGB},
                            Row{4, RenderBackend::RGBA32, GL_RGBA}}) {
        Gles3Texture made = texture(2, 2, RenderBackend::RGBA32);
        auto const pixels = numberedBytes(15 * row.bytes);
        made.setPixels(pixels, {3, 5, row.bytes});
        EXPECT_EQ(made.format(), row.format);
        EXPECT_EQ(image(made).internalFormat, row.gl);
        EXPECT_EQ(image(made).format, row.gl);
        EXPECT_EQ(image(made).pixels, pixels);
        EXPECT_EQ(made.width(), 3U);
        EXPECT_EQ(made.height(), 5U);
    }
}

TEST_F(Gles3TextureSetPixelsTest, OtherBytesATexelThrowAndTheNewSizeStays) {
    for (size_t const bytes : {0U, 2U, 5U, 8U}) {
        Gles3Texture made = texture(2, 2, RenderBackend::RGB24);
        gl.forgetCalls();
        EXPECT_EQ(thrownBy<VelmoraException>([&] { made.setPixels({1, 2, 3, 4}, {6, 7, bytes}); }), kInvalidFormat);
        EXPECT_EQ(made.width(), 6U);
        EXPECT_EQ(made.height(), 7U);
        EXPECT_EQ(made.format(), RenderBackend::RGB24);
        EXPECT_EQ(gl.names(), Texts{"glBindTexture"});
    }
}

TEST_F(Gles3TextureSetPixelsTest, FilteringIsSetAsTheTableSays) {
    struct Row {
        RenderBackend::ImageFiltering filtering;
        GLint minifying;
        GLint magnifying;
    };
    for (auto const& row :
         {Row{RenderBackend::NEAREST, GL_NEAREST, GL_NEAREST}, Row{RenderBackend::LINEAR, GL_LINEAR, GL_LINEAR},
          Row{RenderBackend::TRILINEAR, GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR}}) {
        Gles3Texture const made = texture(8, 4, RenderBackend::RGBA32, row.filtering);
        auto const& parameters = gl.texture(made.texture()).parameters;
        EXPECT_EQ(parameters.at(GL_TEXTURE_MIN_FILTER), row.minifying);
        EXPECT_EQ(parameters.at(GL_TEXTURE_MAG_FILTER), row.magnifying);
        EXPECT_EQ(parameters.at(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
        EXPECT_EQ(parameters.at(GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
        EXPECT_EQ(parameters.size(), 4U);
    }
}

TEST_F(Gles3TextureSetPixelsTest, TrilinearTakesPowersOfTwo) {
    for (auto const& [width, height] : {std::pair<size_t, size_t>{256, 128}, {1, 1}, {1, 4096}}) {
        Gles3Texture made({}, {0, 0}, RenderBackend::RGBA32, RenderBackend::TRILINEAR);
        made.setPixels({}, {width, height, 4});
        EXPECT_EQ(image(made).width, width);
    }
}

TEST_F(Gles3TextureSetPixelsTest, TrilinearRefusesAnythingElseAndTheNewSizeStays) {
    for (auto const& [width, height] :
         {std::pair<size_t, size_t>{0, 128}, {128, 0}, {200, 128}, {128, 200}, {3, 1}, {255, 255}}) {
        Gles3Texture made({}, {0, 0}, RenderBackend::RGBA32, RenderBackend::TRILINEAR);
        gl.forgetCalls();
        EXPECT_EQ(thrownBy<VelmoraException>([&, w = width, h = height] {
                      made.setPixels({}, {w, h, 1});
                  }),
                  kPowerOfTwo);
        EXPECT_EQ(made.width(), width);
        EXPECT_EQ(made.height(), height);
        EXPECT_EQ(made.format(), RenderBackend::GRAY8) << "the format is set before the filtering is looked at";
        EXPECT_EQ(gl.names(), Texts{"glBindTexture"});
    }
}

TEST_F(Gles3TextureSetPixelsTest, UnknownFilteringThrows) {
    Gles3Texture made({}, {0, 0}, RenderBackend::RGBA32, kNoFiltering);
    gl.forgetCalls();
    EXPECT_EQ(thrownBy<VelmoraException>([&] { made.setPixels({}, {2, 2, 4}); }), kInvalidFiltering);
    EXPECT_EQ(made.width(), 2U);
    EXPECT_EQ(gl.names(), Texts{"glBindTexture"});
}

TEST_F(Gles3TextureSetPixelsTest, BeyondTheMaximumThrowsItAndTheNewSizeStays) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    for (auto const& [width, height] : {std::pair<size_t, size_t>{65, 1}, {1, 65}}) {
        Gles3Texture made;
        try {
            made.setPixels({1, 2, 3, 4}, {width, height, 4});
            ADD_FAILURE() << "no exception";
        } catch (VelmoraRangeException const& exception) {
            EXPECT_STREQ(exception.what(), kTooLarge);
            EXPECT_EQ(exception.limit(), 64U);
            EXPECT_EQ(exception.location(), "void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, "
                                            "std::vector<size_t> const& size)");
        }
        EXPECT_EQ(made.width(), width);
        EXPECT_EQ(made.height(), height);
        EXPECT_EQ(gl.count("glTexImage2D"), 0U);
    }
    Gles3Texture made;
    made.setPixels({}, {64, 64, 4});
    EXPECT_EQ(image(made).width, 64U);
}

TEST_F(Gles3TextureSetPixelsTest, TheMaximumIsComparedAsSigned32BitNumbers) {
    Gles3Texture made;
    gl.expectError(GL_INVALID_VALUE);
    made.setPixels({}, {size_t{1} << 31U, 1, 4});
    EXPECT_EQ(gl.last("glTexImage2D").number(3), -2147483648.0);
    EXPECT_EQ(made.width(), size_t{1} << 31U);
}

// Required: hosts that give a row length reset it themselves after a failure.
TEST_F(Gles3TextureSetPixelsTest, AThrowLeavesTheRowLengthSet) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    Gles3Texture made;
    EXPECT_THROW(made.setPixels({}, {65, 1, 4}, 0, 70), VelmoraRangeException);
    EXPECT_EQ(gl.pixelStore(GL_UNPACK_ROW_LENGTH), 70);
    EXPECT_THROW(made.setPixels({}, {65, 1, 2}, 0, 71), VelmoraException);
    EXPECT_EQ(gl.pixelStore(GL_UNPACK_ROW_LENGTH), 71);
}

TEST_F(Gles3TextureSetPixelsTest, ANewImageStartsAtTheOffset) {
    Gles3Texture made;
    made.setPixels(Bytes{9, 9, 1, 2, 3}, {1, 1, 3}, 2);
    EXPECT_EQ(image(made).pixels, (Bytes{1, 2, 3}));
}

TEST_F(Gles3TextureSetPixelsTest, AVectorThatEndsAtOrBeforeTheOffsetAllocatesWithoutFilling) {
    for (size_t const offset : {0U, 4U, 5U, 1000U}) {
        Gles3Texture made;
        made.setPixels(offset == 0 ? Bytes{} : numberedBytes(4), {2, 2, 4}, offset);
        EXPECT_EQ(gl.last("glTexImage2D").text(),
                  "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)");
        EXPECT_EQ(made.width(), 2U);
    }
}

TEST_F(Gles3TextureSetPixelsTest, AVectorThatEndsInsideANewImageThrowsInsteadOfLettingGlReadPastIt) {
    Gles3Texture made;
    EXPECT_THROW(made.setPixels(numberedBytes(15), {2, 2, 4}), VelmoraException);
    EXPECT_THROW(made.setPixels(numberedBytes(16), {2, 2, 4}, 1), VelmoraException);
    EXPECT_THROW(made.setPixels(numberedBytes((3 + 2) * 4 - 1), {2, 2, 4}, 0, 3), VelmoraException);
    EXPECT_EQ(gl.pixelStore(GL_UNPACK_ROW_LENGTH), 0);
    EXPECT_EQ(gl.count("glTexImage2D"), 0U);
    made.setPixels(numberedBytes((3 + 2) * 4), {2, 2, 4}, 0, 3);
    EXPECT_EQ(gl.count("glTexImage2D"), 1U) << "the last row may end where the image ends";
}

TEST_F(Gles3TextureSetPixelsTest, ASizeThatGlCannotTakeIsReportedAsSuchHoweverManyPixelsCameWithIt) {
    Gles3Texture tooLarge;
    EXPECT_EQ(thrownBy<VelmoraRangeException>([&] { tooLarge.setPixels({1, 2, 3, 4}, {5000, 5000, 4}); }), kTooLarge);
    Gles3Texture noFormat;
    EXPECT_EQ(thrownBy<VelmoraException>([&] { noFormat.setPixels({1, 2, 3, 4}, {50, 50, 2}); }), kInvalidFormat);
}

TEST_F(Gles3TextureSetPixelsTest, AShortSizeVectorThrows) {
    Gles3Texture made;
    EXPECT_THROW(made.setPixels({1, 2, 3, 4}, {1, 1}), VelmoraException);
    EXPECT_THROW(made.setPixels({1, 2, 3, 4}, {}), VelmoraException);
}

// From a pixel buffer.

TEST_F(Gles3TextureSetPixelsTest, ABufferIsUploadedInThisOrder) {
    Gles3Texture made({}, {0, 0}, RenderBackend::RGBA32, RenderBackend::LINEAR);
    Gles3Pbo buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, 32);
    auto const bytes = numberedBytes(32);
    buffer.setData(bytes.data(), bytes.size());
    gl.forgetCalls();
    made.setPixels({2, 3, 4}, buffer, 8);
    EXPECT_EQ(
        gl.texts(),
        (Texts{"glBindTexture(GL_TEXTURE_2D, 1)", "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
               "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)",
               "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
               "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
               "glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 2)",
               "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 3, 0, GL_RGBA, GL_UNSIGNED_BYTE, offset 8)",
               "glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0)"}));
    EXPECT_EQ(image(made).pixels, Bytes(bytes.begin() + 8, bytes.end()));
    EXPECT_EQ(made.width(), 2U);
    EXPECT_EQ(made.height(), 3U);
}

TEST_F(Gles3TextureSetPixelsTest, ABufferAlwaysMakesANewImage) {
    Gles3Texture made = texture(8, 8);
    Gles3Pbo const buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, 64);
    made.setPixels({2, 2, 3}, buffer, 0);
    EXPECT_EQ(gl.count("glTexSubImage2D"), 0U);
    EXPECT_EQ(made.width(), 2U);
    EXPECT_EQ(made.format(), RenderBackend::RGB24);
    EXPECT_EQ(image(made).width, 2U);
}

TEST_F(Gles3TextureSetPixelsTest, ABufferIsUploadedWithoutASizeTest) {
    Gles3Texture made;
    Gles3Pbo const buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, 64);
    gl.expectError(GL_INVALID_VALUE);
    made.setPixels({5000, 1, 4}, buffer, 0);
    EXPECT_EQ(gl.last("glTexImage2D").number(3), 5000.0);
    EXPECT_EQ(gl.count("glGetIntegerv"), 0U);
    EXPECT_EQ(made.width(), 5000U);
    EXPECT_EQ(gl.boundBuffer(GL_PIXEL_UNPACK_BUFFER), 0U);
}

TEST_F(Gles3TextureSetPixelsTest, ABufferFailsWithTheTextsOfHostMemoryBeforeItIsBound) {
    Gles3Pbo const buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, 64);
    Gles3Texture trilinear({}, {0, 0}, RenderBackend::RGBA32, RenderBackend::TRILINEAR);
    Gles3Texture unknown({}, {0, 0}, RenderBackend::RGBA32, kNoFiltering);
    gl.forgetCalls();
    EXPECT_EQ(thrownBy<VelmoraException>([&] { trilinear.setPixels({4, 4, 2}, buffer, 0); }), kInvalidFormat);
    EXPECT_EQ(thrownBy<VelmoraException>([&] { trilinear.setPixels({0, 128, 4}, buffer, 0); }), kPowerOfTwo);
    EXPECT_EQ(thrownBy<VelmoraException>([&] { unknown.setPixels({3, 2, 4}, buffer, 0); }), kInvalidFiltering);
    EXPECT_EQ(trilinear.height(), 128U);
    EXPECT_EQ(unknown.width(), 3U);
    EXPECT_EQ(gl.count("glBindBuffer"), 0U);
}

} // namespace
