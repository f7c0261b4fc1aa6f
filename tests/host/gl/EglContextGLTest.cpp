#include "host/gl/EglContext.h"

#include "gles3renderbackend/Gl.h"
#include "tests/support/PixelMatchers.h"

#include <gtest/gtest.h>

#include <EGL/egl.h>

#include <stdexcept>
#include <string>
#include <thread>

namespace {

// Restores the shared context of the tests on this thread.
class EglContextGLTest : public ::testing::Test {
public:
    ~EglContextGLTest() override { eglMakeCurrent(display_, surface_, surface_, context_); }

private:
    EGLDisplay display_ = eglGetCurrentDisplay();
    EGLSurface surface_ = eglGetCurrentSurface(EGL_DRAW);
    EGLContext context_ = eglGetCurrentContext();
};

using Bytes = std::vector<std::uint8_t>;

Bytes read(GLsizei width, GLsizei height) {
    Bytes pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

} // namespace

TEST_F(EglContextGLTest, AClearedSurfaceReadsBackInItsColour) {
    EglContext const context(2, 3);
    EXPECT_EQ(context.width(), 2U);
    EXPECT_EQ(context.height(), 3U);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE));
    glClearColor(1, 0, 0.2F, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    Bytes expected;
    for (int i = 0; i < 6; ++i)
        expected.insert(expected.end(), {255, 0, 51, 255});
    EXPECT_TRUE(pixelsEqual(read(2, 3), expected, 2));
}

TEST_F(EglContextGLTest, TheContextIsOpenGlEs3) {
    EglContext const context;
    GLint major = 0;
    glGetIntegerv(GL_MAJOR_VERSION, &major);
    EXPECT_EQ(major, 3);
}

TEST_F(EglContextGLTest, EachContextKeepsItsSurface) {
    EglContext first(1, 1);
    glClearColor(0, 1, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    {
        EglContext second(1, 1);
        glClearColor(0, 0, 1, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        first.makeCurrent();
        EXPECT_TRUE(pixelsEqual(read(1, 1), {0, 255, 0, 255}, 1));
        second.makeCurrent();
        EXPECT_TRUE(pixelsEqual(read(1, 1), {0, 0, 255, 255}, 1));
    }
    first.makeCurrent();
    EXPECT_TRUE(pixelsEqual(read(1, 1), {0, 255, 0, 255}, 1)) << "the end of the second context leaves the first alone";
}

TEST_F(EglContextGLTest, NoContextIsCurrentAfterTheLastOne) {
    { EglContext const context; }
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

TEST_F(EglContextGLTest, AContextThatIsCurrentOnAnotherThreadIsRefused) {
    EglContext context(1, 1);
    std::string text;
    std::thread([&] {
        try {
            context.makeCurrent();
        } catch (std::runtime_error const& error) {
            text = error.what();
        }
    }).join();
    EXPECT_EQ(text, "eglMakeCurrent failed (EGL_BAD_ACCESS)");
}
