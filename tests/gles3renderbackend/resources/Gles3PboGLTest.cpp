#include "gles3renderbackend/resources/Gles3Pbo.h"

#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/PixelMatchers.h"

#include <gmock/gmock.h>

#include <cstring>
#include <memory>

namespace {

constexpr size_t kFourMebibytes = 4194304;

char const* const kAlreadyMapped = "#Name:could not map PBO range"
                                   "#Location:void* Gles3Pbo::mapRange(size_t offset, size_t size)"
                                   "#Description:invalid operation: buffer already mapped or illegal access flags";

GLint bound(GLenum binding) {
    GLint name = -1;
    glGetIntegerv(binding, &name);
    return name;
}

class Gles3PboGLTest : public ::testing::Test {
public:
    // A failed map or unmap leaves its buffer bound, which would turn later uploads into reads from it.
    ~Gles3PboGLTest() override {
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    }
};

// The errors below come from the driver; the buffer reads them itself.

TEST_F(Gles3PboGLTest, MappingAMappedBufferThrows) {
    Gles3Pbo buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, kFourMebibytes);
    ASSERT_NE(buffer.mapRange(0, kFourMebibytes), nullptr);
    EXPECT_EQ(bound(GL_PIXEL_UNPACK_BUFFER_BINDING), 0);
    EXPECT_EQ(thrownBy<VelmoraException>([&] { buffer.mapRange(0, kFourMebibytes); }), kAlreadyMapped);
    EXPECT_EQ(bound(GL_PIXEL_UNPACK_BUFFER_BINDING), static_cast<GLint>(buffer.buffer()));
    EXPECT_EQ(buffer.mapped(), nullptr);
    buffer.unmap();
}

TEST_F(Gles3PboGLTest, UnmappingABufferThatIsNotMappedThrows) {
    Gles3Pbo buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, kFourMebibytes);
    EXPECT_EQ(thrownBy<VelmoraException>([&] { buffer.unmap(); }),
              "#Name:could not unmap PBO range"
              "#Location:void* Gles3Pbo::unmap() "
              "#Description:invalid operation: buffer not mapped or does not exist");
}

TEST_F(Gles3PboGLTest, ABufferSmallerThanTheMappedRangeThrows) {
    Gles3Pbo buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, 4096);
    EXPECT_EQ(thrownBy<VelmoraException>([&] { buffer.mapRange(0, 4096); }),
              "#Name:could not map PBO range"
              "#Location:void* Gles3Pbo::mapRange(size_t offset, size_t size)"
              "#Description:invalid access flags, offset or length");
}

TEST_F(Gles3PboGLTest, WhatAPackBufferReceivedIsReadThroughItsMapping) {
    auto const pixels = numberedBytes(8 * 8 * 4);
    Gles3Target target(8, 8, {}, 1, 1, RenderBackend::RGBA32, RenderBackend::NEAREST);
    target.setPixels(pixels, {8, 8, 4});
    Gles3Pbo buffer(GL_PIXEL_PACK_BUFFER, GL_STREAM_READ, kFourMebibytes);
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer());
    buffer.bind();
    glReadPixels(0, 0, 8, 8, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    buffer.unbind();
    auto const* const mapped = static_cast<std::uint8_t const*>(buffer.mapRange(0, kFourMebibytes));
    ASSERT_NE(mapped, nullptr);
    EXPECT_TRUE(pixelsEqual({mapped, mapped + pixels.size()}, pixels, 8));
    buffer.unmap();
}

TEST_F(Gles3PboGLTest, ABufferIsMappedAgainAfterUnmapping) {
    Gles3Pbo buffer(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, kFourMebibytes);
    for (int i = 0; i < 3; ++i) {
        void* const mapped = buffer.mapRange(0, kFourMebibytes);
        ASSERT_NE(mapped, nullptr);
        std::memset(mapped, i, kFourMebibytes);
        buffer.unmap();
    }
    EXPECT_EQ(bound(GL_PIXEL_UNPACK_BUFFER_BINDING), 0);
}

TEST_F(Gles3PboGLTest, AMappedBufferIsDeletedWithItsLastCopy) {
    auto buffer = std::make_unique<Gles3Pbo>(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, kFourMebibytes);
    auto const name = buffer->buffer();
    buffer->mapRange(0, kFourMebibytes);
    auto copy = std::make_unique<Gles3Pbo>(*buffer);
    buffer.reset();
    EXPECT_EQ(glIsBuffer(name), GL_TRUE);
    copy.reset();
    EXPECT_EQ(glIsBuffer(name), GL_FALSE);
}

TEST_F(Gles3PboGLTest, AnotherTargetMakesNothing) {
    Gles3Pbo buffer(GL_ARRAY_BUFFER, GL_STATIC_DRAW, kFourMebibytes);
    EXPECT_EQ(buffer.mapRange(0, kFourMebibytes), nullptr);
    EXPECT_EQ(buffer.unmap(), nullptr);
    EXPECT_EQ(buffer.buffer(), 0U);
}

} // namespace
