#include "host/gl/SurfacelessContext.h"

#include "gles3renderbackend/Gl.h"

#include <gtest/gtest.h>

#include <array>

// GL's first viewport is the whole surface.
TEST(SurfacelessContextGLTest, ItsSizeIsTheOneOfItsSurface) {
    SurfacelessContext const context;
    std::array<GLint, 4> viewport{};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    EXPECT_EQ(context.width(), static_cast<size_t>(viewport[2]));
    EXPECT_EQ(context.height(), static_cast<size_t>(viewport[3]));
    EXPECT_GT(context.width() * context.height(), 0U);
}
