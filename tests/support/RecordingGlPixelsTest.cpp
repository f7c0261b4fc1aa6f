#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <vector>

using ::testing::Each;
using ::testing::ElementsAre;

namespace {

using Bytes = std::vector<std::uint8_t>;

class RecorderPixelsTest : public RecordingGlTest {
public:
    RecorderPixelsTest() {
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
    }
    ~RecorderPixelsTest() override { glDeleteTextures(1, &texture); }

protected:
    RecordingGl::Image const& image() const { return gl.texture(texture).image(); }

    GLuint texture = 0;
};

void upload(GLenum format, GLsizei width, GLsizei height, void const* pixels) {
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(format), width, height, 0, format, GL_UNSIGNED_BYTE, pixels);
}

} // namespace

TEST_F(RecorderPixelsTest, RowsArePaddedToFourBytesUnlessTheAlignmentIsOne) {
    Bytes const pixels{1, 2, 3, 0, 4, 5, 6, 0};
    upload(GL_LUMINANCE, 3, 2, pixels.data());
    EXPECT_THAT(image().pixels, ElementsAre(1, 2, 3, 4, 5, 6));
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    upload(GL_LUMINANCE, 3, 2, pixels.data());
    EXPECT_THAT(image().pixels, ElementsAre(1, 2, 3, 0, 4, 5));
}

TEST_F(RecorderPixelsTest, RowLengthTakesPartOfEachRow) {
    Bytes const pixels{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 2);
    upload(GL_RGBA, 1, 2, pixels.data());
    EXPECT_THAT(image().pixels, ElementsAre(0, 1, 2, 3, 8, 9, 10, 11));
}

TEST_F(RecorderPixelsTest, AnUploadFromABoundBufferTakesThePointerAsAnOffset) {
    GLuint buffer = 0;
    Bytes const pixels{9, 9, 9, 9, 1, 2, 3, 4};
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
    glBufferData(GL_PIXEL_UNPACK_BUFFER, 8, pixels.data(), GL_STREAM_DRAW);
    upload(GL_RGBA, 1, 1, reinterpret_cast<void const*>(std::uintptr_t{4}));
    EXPECT_THAT(image().pixels, ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(gl.last("glTexImage2D").arguments.back().text, "offset 4");

    upload(GL_RGBA, 1, 2, reinterpret_cast<void const*>(std::uintptr_t{4}));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION)) << "4 bytes of 8 lie behind the end";
    EXPECT_EQ(image().height, 1U);
    glDeleteBuffers(1, &buffer);
}

TEST_F(RecorderPixelsTest, AnImageLargerThanTheLimitIsRefused) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 8);
    upload(GL_RGBA, 9, 1, nullptr);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_VALUE));
    upload(GL_RGBA, 8, 8, nullptr);
    EXPECT_THAT(image().pixels, Each(0));
}

TEST_F(RecorderPixelsTest, ARectangleReplacesItsTexelsAlone) {
    upload(GL_RGBA, 2, 2, Bytes(16, 7).data());
    Bytes const texel{1, 2, 3, 4};
    glTexSubImage2D(GL_TEXTURE_2D, 0, 1, 1, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, texel.data());
    EXPECT_THAT(image().pixels, ElementsAre(7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 1, 2, 3, 4));
}

TEST_F(RecorderPixelsTest, ARectangleInAnotherFormatThanTheTexturesIsRefused) {
    upload(GL_RGB, 1, 1, Bytes(4, 7).data());
    Bytes const texel{1, 2, 3, 4};
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, texel.data());
    EXPECT_THAT(image().pixels, ElementsAre(7, 7, 7));
    gl.expectError(GL_INVALID_OPERATION);
}

TEST_F(RecorderPixelsTest, ReadingDeliversTheScriptInThePackLayout) {
    gl.setReadPixels({1, 2, 3, 4, 5, 6, 7, 8});
    glPixelStorei(GL_PACK_ROW_LENGTH, 2);
    Bytes target(12, 99);
    glReadPixels(0, 0, 1, 2, GL_RGBA, GL_UNSIGNED_BYTE, target.data());
    EXPECT_THAT(target, ElementsAre(1, 2, 3, 4, 99, 99, 99, 99, 5, 6, 7, 8));
}

TEST_F(RecorderPixelsTest, ReadingAnotherFormatThanTheOfferedOneIsRefused) {
    Bytes target(4, 99);
    glReadPixels(0, 0, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, target.data());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
    gl.setInteger(GL_IMPLEMENTATION_COLOR_READ_FORMAT, GL_RGB);
    glReadPixels(0, 0, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, target.data());
    EXPECT_THAT(target, ElementsAre(0, 0, 0, 99));
}
