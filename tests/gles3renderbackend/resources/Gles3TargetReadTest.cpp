#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <array>

namespace {

using Texts = std::vector<std::string>;
using Bytes = std::vector<GLubyte>;

constexpr auto kNoFormat = static_cast<RenderBackend::ImageFormatType>(9);

class Gles3TargetReadTest : public RecordingGlTest {
protected:
    Gles3Target target(RenderBackend::ImageFormatType format, size_t logicalPerPhysical = 1,
                       size_t physicalPerLogical = 1) {
        Gles3Target made(16, 16, {}, logicalPerPhysical, physicalPerLogical, format, RenderBackend::NEAREST);
        gl.forgetCalls();
        return made;
    }

    // An image of size 0 is not looked at, so this target exists with a format that nothing can read.
    Gles3Target unreadable(RenderBackend::ImageFormatType format) {
        Gles3Target made(0, 0, {}, 1, 1, format, RenderBackend::NEAREST);
        gl.forgetCalls();
        return made;
    }

    void preferReading(GLenum format, GLenum type = GL_UNSIGNED_BYTE) {
        gl.setInteger(GL_IMPLEMENTATION_COLOR_READ_FORMAT, static_cast<GLint>(format));
        gl.setInteger(GL_IMPLEMENTATION_COLOR_READ_TYPE, static_cast<GLint>(type));
    }
};

TEST_F(Gles3TargetReadTest, ABufferThatIsTooSmallIsRefusedBeforeAnyCall) {
    Gles3Target const made = target(RenderBackend::RGBA32);
    Bytes buffer(100);
    EXPECT_EQ(thrownBy<VelmoraException>([&] { made.getPixels(buffer.data(), 59, 0, 0, 5, 4); }),
              "#Name:buffer too small provided 59 required : 60"
              "#Location:size_t Gles3Target:: getPixels(void* buffer, size_t n, size_t x, size_t y, size_t width, "
              "size_t height) const");
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3TargetReadTest, TheRequiredSizeCountsTexelsOfAPackedTarget) {
    Gles3Target const packed = target(RenderBackend::RGBA32, 2, 1);
    EXPECT_EQ(thrownBy<VelmoraException>([&] { packed.getPixels(nullptr, 0, 0, 0, 5, 4); }),
              "#Name:buffer too small provided 0 required : 36"
              "#Location:size_t Gles3Target:: getPixels(void* buffer, size_t n, size_t x, size_t y, size_t width, "
              "size_t height) const");
}

// Required: 3 bytes per texel for every format, although an RGBA read writes 4.
TEST_F(Gles3TargetReadTest, ABufferOfThreeBytesATexelIsAcceptedForFourBytesATexel) {
    Gles3Target const made = target(RenderBackend::RGBA32);
    Bytes buffer(80);
    gl.setReadPixels(numberedBytes(80));
    EXPECT_EQ(made.getPixels(buffer.data(), 60, 0, 0, 5, 4), 80U);
    EXPECT_EQ(buffer, numberedBytes(80));
}

TEST_F(Gles3TargetReadTest, RgbaIsReadInThisOrder) {
    Gles3Target const made = target(RenderBackend::RGBA32);
    Bytes buffer(8 * 2 * 4);
    gl.setReadPixels(numberedBytes(64));
    EXPECT_EQ(made.getPixels(buffer.data(), buffer.size(), 3, 1, 8, 2), 64U);
    EXPECT_EQ(gl.texts(), (Texts{"glBindFramebuffer(GL_FRAMEBUFFER, 2)", "glPixelStorei(GL_PACK_ALIGNMENT, 4)",
                                 "glReadPixels(3, 1, 8, 2, GL_RGBA, GL_UNSIGNED_BYTE, data)"}));
    EXPECT_EQ(buffer, numberedBytes(64));
}

TEST_F(Gles3TargetReadTest, AlignmentIsFourWhereTheWidthIsAMultipleOfFourTexels) {
    Gles3Target const made = target(RenderBackend::RGBA32);
    Gles3Target const packed = target(RenderBackend::RGBA32, 2, 1);
    Bytes buffer(16 * 4);
    for (auto const& [width, alignment] :
         {std::pair<size_t, GLint>{1, 1}, {3, 1}, {4, 4}, {5, 1}, {6, 1}, {8, 4}, {12, 4}}) {
        made.getPixels(buffer.data(), buffer.size(), 0, 0, width, 1);
        EXPECT_EQ(gl.pixelStore(GL_PACK_ALIGNMENT), alignment) << width;
    }
    packed.getPixels(buffer.data(), buffer.size(), 0, 0, 7, 1);
    EXPECT_EQ(gl.pixelStore(GL_PACK_ALIGNMENT), 4) << "7 logical pixels are 4 texels";
    packed.getPixels(buffer.data(), buffer.size(), 0, 0, 4, 1);
    EXPECT_EQ(gl.pixelStore(GL_PACK_ALIGNMENT), 1) << "4 logical pixels are 2 texels";
}

TEST_F(Gles3TargetReadTest, AHundredAndOneLogicalPixelsOfTwoATexelAreReadAsFiftyOneTexels) {
    Gles3Target const packed(51, 2, {102, 2}, 2, 1, RenderBackend::RGBA32, RenderBackend::NEAREST);
    Bytes pixels;
    packed.getPixels(pixels, 0, 0, 101, 2);
    EXPECT_EQ(gl.last("glReadPixels").text(), "glReadPixels(0, 0, 51, 2, GL_RGBA, GL_UNSIGNED_BYTE, data)");
    EXPECT_EQ(pixels.size(), 51U * 2 * 4);
}

TEST_F(Gles3TargetReadTest, PositionsArePassedUnconverted) {
    Gles3Target const spread = target(RenderBackend::RGBA32, 1, 2);
    Bytes buffer(4 * 4 * 3);
    spread.getPixels(buffer.data(), buffer.size(), 3, 5, 2, 2);
    EXPECT_EQ(gl.last("glReadPixels").text(), "glReadPixels(3, 5, 4, 2, GL_RGBA, GL_UNSIGNED_BYTE, data)");
}

TEST_F(Gles3TargetReadTest, RgbIsReadDirectlyWhereGlPrefersIt) {
    Gles3Target const made = target(RenderBackend::RGB24);
    preferReading(GL_RGB);
    gl.setReadPixels(numberedBytes(24));
    Bytes buffer(24);
    EXPECT_EQ(made.getPixels(buffer.data(), buffer.size(), 0, 0, 4, 2), 24U);
    EXPECT_EQ(gl.texts(),
              (Texts{"glBindFramebuffer(GL_FRAMEBUFFER, 2)", "glGetIntegerv(GL_IMPLEMENTATION_COLOR_READ_FORMAT, data)",
                     "glGetIntegerv(GL_IMPLEMENTATION_COLOR_READ_TYPE, data)", "glPixelStorei(GL_PACK_ALIGNMENT, 1)",
                     "glReadPixels(0, 0, 4, 2, GL_RGB, GL_UNSIGNED_BYTE, data)"}))
        << "with alignment 1, although 4 texels are a multiple of 4";
    EXPECT_EQ(buffer, numberedBytes(24));
}

TEST_F(Gles3TargetReadTest, RgbIsConvertedWhereGlPrefersAnythingElse) {
    for (auto const& [format, type] :
         {std::pair<GLenum, GLenum>{GL_RGBA, GL_UNSIGNED_BYTE}, {GL_RGB, GL_UNSIGNED_SHORT_5_6_5}}) {
        Gles3Target const made = target(RenderBackend::RGB24);
        preferReading(format, type);
        gl.setReadPixels(numberedBytes(3 * 2 * 4));
        Bytes buffer(3 * 2 * 3 + 1, 99);
        EXPECT_EQ(made.getPixels(buffer.data(), 18, 0, 0, 3, 2), 18U);
        EXPECT_EQ(gl.last("glReadPixels").text(), "glReadPixels(0, 0, 3, 2, GL_RGBA, GL_UNSIGNED_BYTE, data)");
        EXPECT_EQ(gl.pixelStore(GL_PACK_ALIGNMENT), 1);
        Bytes expected;
        auto const texels = numberedBytes(24);
        for (size_t i = 0; i < texels.size(); ++i)
            if (i % 4 != 3) expected.push_back(texels[i]);
        expected.push_back(99); // behind the end nothing is touched
        EXPECT_EQ(buffer, expected);
    }
}

TEST_F(Gles3TargetReadTest, AConvertingReadOfFourTexelsARowIsAlignedToFour) {
    Gles3Target const made = target(RenderBackend::RGB24);
    Bytes buffer(12);
    made.getPixels(buffer.data(), buffer.size(), 0, 0, 4, 1);
    EXPECT_EQ(gl.pixelStore(GL_PACK_ALIGNMENT), 4);
}

TEST_F(Gles3TargetReadTest, AConvertingReadOfNoTexelsWritesNothing) {
    preferReading(GL_RGBA);
    Gles3Target const made = target(RenderBackend::RGB24);
    Bytes buffer{7, 8, 9};
    EXPECT_EQ(made.getPixels(buffer.data(), buffer.size(), 0, 0, 0, 2), 0U);
    EXPECT_EQ(made.getPixels(buffer.data(), buffer.size(), 0, 0, 2, 0), 0U);
    EXPECT_EQ(buffer, (Bytes{7, 8, 9}));
}

TEST_F(Gles3TargetReadTest, GrayIsReadAsAlphaOneByteATexel) {
    Gles3Target const made = target(RenderBackend::GRAY8);
    preferReading(GL_ALPHA);
    gl.setReadPixels(numberedBytes(16));
    Bytes buffer(48);
    EXPECT_EQ(made.getPixels(buffer.data(), buffer.size(), 2, 1, 8, 2), 16U);
    EXPECT_EQ(gl.texts(),
              (Texts{"glBindFramebuffer(GL_FRAMEBUFFER, 2)", "glGetIntegerv(GL_IMPLEMENTATION_COLOR_READ_FORMAT, data)",
                     "glGetIntegerv(GL_IMPLEMENTATION_COLOR_READ_TYPE, data)", "glPixelStorei(GL_PACK_ALIGNMENT, 4)",
                     "glReadPixels(2, 1, 8, 2, GL_ALPHA, GL_UNSIGNED_BYTE, data)"}));
    buffer.resize(16);
    EXPECT_EQ(buffer, numberedBytes(16));
}

// Required: GL's preferred format is queried and then ignored.
TEST_F(Gles3TargetReadTest, GrayIsReadAsAlphaWhateverGlPrefers) {
    gl.expectError(GL_INVALID_OPERATION);
    for (auto const format : std::vector<GLenum>{GL_RGBA, GL_RGB, GL_RED}) {
        Gles3Target const made = target(RenderBackend::GRAY8);
        preferReading(format);
        Bytes buffer(9);
        EXPECT_EQ(made.getPixels(buffer.data(), buffer.size(), 0, 0, 3, 1), 3U);
        EXPECT_EQ(gl.last("glReadPixels").text(), "glReadPixels(0, 0, 3, 1, GL_ALPHA, GL_UNSIGNED_BYTE, data)");
        EXPECT_EQ(gl.pixelStore(GL_PACK_ALIGNMENT), 1);
    }
}

TEST_F(Gles3TargetReadTest, BothFormsRefuseAnUnknownFormatUnderTheirOwnSignature) {
    for (auto const format : {RenderBackend::UNDEFINED, kNoFormat}) {
        Gles3Target const made = unreadable(format);
        Bytes pixels(100);
        EXPECT_EQ(thrownBy<VelmoraException>([&] { made.getPixels(pixels.data(), pixels.size(), 0, 0, 2, 2); }),
                  "#Name:invalid texture format"
                  "#Location:size_t Gles3Target:: getPixels(void* buffer, size_t n, size_t x, size_t y, size_t width, "
                  "size_t height) const");
        EXPECT_EQ(gl.names(), Texts{"glBindFramebuffer"});
        gl.forgetCalls();
        EXPECT_EQ(thrownBy<VelmoraException>([&] { made.getPixels(pixels, 0, 0, 2, 2); }),
                  "#Name:invalid texture format"
                  "#Location:void Gles3Target::getPixels(std::vector<GLubyte>& pixels, size_t x, size_t y, size_t "
                  "width, size_t height) const");
        EXPECT_TRUE(gl.calls().empty());
        EXPECT_EQ(pixels.size(), 100U);
    }
}

TEST_F(Gles3TargetReadTest, TheVectorFormGrowsAVectorThatIsTooSmall) {
    Gles3Target const made = target(RenderBackend::RGBA32);
    gl.setReadPixels(numberedBytes(24));
    Bytes pixels;
    made.getPixels(pixels, 1, 2, 3, 2);
    EXPECT_EQ(pixels, numberedBytes(24));
    EXPECT_EQ(gl.last("glReadPixels").text(), "glReadPixels(1, 2, 3, 2, GL_RGBA, GL_UNSIGNED_BYTE, data)");
}

TEST_F(Gles3TargetReadTest, TheVectorFormCutsAVectorThatIsTooLarge) {
    Gles3Target const made = target(RenderBackend::RGB24);
    gl.setReadPixels({1, 2, 3, 255, 4, 5, 6, 255});
    Bytes pixels(100, 77);
    made.getPixels(pixels, 0, 0, 2, 1);
    EXPECT_EQ(pixels, (Bytes{1, 2, 3, 4, 5, 6}));
}

// Required: the vector form is held to the same 3 bytes per texel, counted by the vector's capacity.
TEST_F(Gles3TargetReadTest, TheVectorFormPassesTheCapacity) {
    Gles3Target const made = target(RenderBackend::GRAY8);
    preferReading(GL_ALPHA);
    Bytes exact;
    EXPECT_EQ(thrownBy<VelmoraException>([&] { made.getPixels(exact, 0, 0, 8, 2); }),
              "#Name:buffer too small provided 16 required : 48"
              "#Location:size_t Gles3Target:: getPixels(void* buffer, size_t n, size_t x, size_t y, size_t width, "
              "size_t height) const");
    Bytes reserved;
    reserved.reserve(48);
    gl.setReadPixels(numberedBytes(16));
    made.getPixels(reserved, 0, 0, 8, 2);
    EXPECT_EQ(reserved, numberedBytes(16));
}

} // namespace
