#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <array>
#include <thread>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class RecorderTest : public RecordingGlTest {
protected:
    GLuint buffer() {
        GLuint name = 0;
        glGenBuffers(1, &name);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, name);
        glBufferData(GL_PIXEL_UNPACK_BUFFER, 8, nullptr, GL_STREAM_DRAW);
        return name;
    }
};

constexpr GLbitfield kWrite = GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT;

} // namespace

TEST_F(RecorderTest, CallsReadAsTheyAreWritten) {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glActiveTexture(GL_TEXTURE0 + 3);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glClearColor(0, 0.1F, -1, 1e-9F);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glDeleteTextures(1, &texture);

    EXPECT_THAT(gl.texts(),
                ElementsAre("glGenTextures(1, data)", "glActiveTexture(GL_TEXTURE3)", "glBindTexture(GL_TEXTURE_2D, 1)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST)",
                            "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)",
                            "glClearColor(0, 0.1, -1, 1e-09)", "glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)",
                            "glDeleteTextures(1, 1)"));
    EXPECT_EQ(gl.last("glClearColor").number(2), -1);
    EXPECT_EQ(gl.count("glBindTexture"), 1U);
    EXPECT_THROW(gl.last("glFinish"), std::out_of_range);
}

TEST_F(RecorderTest, NamesAreNeverReusedAcrossKinds) {
    GLuint texture = 0;
    GLuint framebuffer = 0;
    glGenTextures(1, &texture);
    glGenFramebuffers(1, &framebuffer);
    auto const name = buffer();

    EXPECT_THAT(gl.living(), ElementsAre("texture 1", "framebuffer 2", "buffer 3"));
    EXPECT_TRUE(gl.isLiving(name));

    glDeleteBuffers(1, &name);
    glDeleteTextures(1, &texture);
    glDeleteFramebuffers(1, &framebuffer);
    EXPECT_THAT(gl.living(), IsEmpty());
}

TEST_F(RecorderTest, DeletingANameTwiceIsFoundThoughGlStaysSilent) {
    auto const name = buffer();
    glDeleteBuffers(1, &name);
    glDeleteBuffers(1, &name);

    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_THAT(gl.findings(), ElementsAre("misuse by glDeleteBuffers(1, 1): not a living buffer"));
    gl.expectError(GL_NO_ERROR);
}

TEST_F(RecorderTest, AnErrorThatNobodyReadsIsFound) {
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBufferData(GL_ARRAY_BUFFER, 4, nullptr, GL_STATIC_DRAW);

    EXPECT_THAT(
        gl.findings(),
        ElementsAre(
            "GL_INVALID_OPERATION by glBufferData(GL_ARRAY_BUFFER, 4, null, GL_STATIC_DRAW): no buffer is bound"));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_THAT(gl.findings(), IsEmpty());
}

TEST_F(RecorderTest, AnExpectedErrorThatDoesNotComeIsFound) {
    gl.expectError(GL_INVALID_VALUE);
    EXPECT_THAT(gl.findings(), ElementsAre("the expected GL_INVALID_VALUE did not come"));
    glViewport(0, 0, -1, 1);
    EXPECT_THAT(gl.findings(), IsEmpty());
}

TEST_F(RecorderTest, AVertexAttributeArrayThatIsLeftEnabledIsFound) {
    glEnableVertexAttribArray(3);
    EXPECT_THAT(gl.findings(), ElementsAre("vertex attribute array 3 was left enabled"));
    glDisableVertexAttribArray(3);
    EXPECT_THAT(gl.findings(), IsEmpty());
}

TEST_F(RecorderTest, AScriptThatIsNotReachedIsFound) {
    gl.failNext("glGenTextures");
    gl.failLink("log");
    EXPECT_THAT(gl.findings(), ElementsAre("the scripted failure of glGenTextures was not reached",
                                           "the scripted failure to link was not reached"));
    gl.reset();
}

TEST_F(RecorderTest, MappedMemoryIsTheBuffersOwn) {
    auto const name = buffer();
    auto* const memory = static_cast<std::uint8_t*>(glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 8, kWrite));
    ASSERT_NE(memory, nullptr);
    memory[5] = 42;
    EXPECT_TRUE(gl.buffer(name).mapped);
    EXPECT_EQ(glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER), GL_TRUE);
    EXPECT_EQ(gl.buffer(name).bytes[5], 42);
    EXPECT_EQ(gl.last("glMapBufferRange").text(),
              "glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 8, GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT)");
    glDeleteBuffers(1, &name);
}

TEST_F(RecorderTest, MappingTwiceAndUnmappingTwiceAreInvalid) {
    auto const name = buffer();
    glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 8, kWrite);
    EXPECT_EQ(glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 8, kWrite), nullptr);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
    EXPECT_EQ(glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER), GL_TRUE);
    EXPECT_EQ(glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER), GL_FALSE);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_OPERATION));
    glDeleteBuffers(1, &name);
}

TEST_F(RecorderTest, AFailureIsPlayedAtTheChosenCallAndLeavesNoFinding) {
    auto const name = buffer();
    gl.failNext("glMapBufferRange", GL_OUT_OF_MEMORY, 1);
    EXPECT_NE(glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 8, kWrite), nullptr);
    glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER);
    EXPECT_EQ(glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 8, kWrite), nullptr);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_OUT_OF_MEMORY));
    EXPECT_NE(glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, 8, kWrite), nullptr);
    glDeleteBuffers(1, &name);
}

TEST_F(RecorderTest, AFailedGenerationGivesNamesOfZero) {
    gl.failNext("glGenTextures");
    std::array<GLuint, 2> names{7, 7};
    glGenTextures(2, names.data());
    EXPECT_THAT(names, ElementsAre(0, 0));
    EXPECT_THAT(gl.living(), IsEmpty());
}

TEST_F(RecorderTest, AFramebufferIsCompleteOnlyWithATexture) {
    GLuint framebuffer = 0;
    GLuint texture = 0;
    glGenFramebuffers(1, &framebuffer);
    glGenTextures(1, &texture);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER),
              static_cast<GLenum>(GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT));
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE));
    EXPECT_EQ(gl.framebuffer(framebuffer).colorTexture, texture);
    gl.setFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), static_cast<GLenum>(GL_FRAMEBUFFER_UNSUPPORTED));
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteTextures(1, &texture);
    EXPECT_EQ(gl.boundFramebuffer(), 0U);
}

TEST_F(RecorderTest, ACallOnAThreadWithoutAContextIsAFailure) {
    ::testing::TestPartResultArray failures;
    {
        ::testing::ScopedFakeTestPartResultReporter const catcher(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &failures);
        std::thread([] { glFlush(); }).join();
    }
    ASSERT_EQ(failures.size(), 1);
    EXPECT_THAT(failures.GetTestPartResult(0).message(),
                HasSubstr("glFlush is called on a thread that has no GL context"));
}
