// Proves that the checks after each test in the main of a host's tests find faults.
#include "gles3renderbackend/Gl.h"
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/gl/SurfacelessContext.h"
#include "renderbackend/RenderBackendInstance.h"
#include "tests/support/ContextFindings.h"
#include "tests/support/LivingGlObjects.h"

#include <gtest/gtest.h>

namespace {

using Words = std::vector<std::string>;

bool names(Words const& findings, std::string const& word) {
    return findings.size() == 1 && findings.front().find(word) != std::string::npos;
}

} // namespace

TEST(HostGlChecksGLTest, ErrorsOfAContextThatIsGoneAreFound) {
    {
        SurfacelessContext const context;
        glEnable(GL_TEXTURE_2D); // no capability of OpenGL ES 3
    }
    EXPECT_TRUE(names(context_findings::take(), "GL_INVALID_ENUM"));
    EXPECT_EQ(context_findings::take(), Words());
}

TEST(HostGlChecksGLTest, ErrorsOfTheCurrentContextAreFound) {
    SurfacelessContext const context;
    EXPECT_EQ(context_findings::take(), Words());
    glBindTexture(GL_TEXTURE_2D, 0);
    glActiveTexture(0);
    EXPECT_TRUE(names(context_findings::take(), "GL_INVALID_ENUM"));
}

TEST(HostGlChecksGLTest, EnabledArraysAreFound) {
    {
        SurfacelessContext const context;
        glEnableVertexAttribArray(2);
    }
    EXPECT_TRUE(names(context_findings::take(), "vertex attribute array 2 was left enabled"));
}

TEST(HostGlChecksGLTest, ObjectsOfTheSharedLibraryAreCounted) {
    auto const before = living_gl_objects::snapshot();
    SurfacelessContext const context;
    {
        Gles3RenderBackend backend(RenderBackend::RGBA32, 1000);
        auto const instance = backend.createInstance(context);
        instance->setTile(1, std::vector<unsigned char>(16), {2, 2, 4}, 0);
        EXPECT_GT(living_gl_objects::findingsSince(before).size(), 3U);
    }
    EXPECT_EQ(living_gl_objects::findingsSince(before), Words());
    GLuint texture = 0;
    glGenTextures(1, &texture);
    EXPECT_TRUE(names(living_gl_objects::findingsSince(before), "was not deleted"));
    glDeleteTextures(1, &texture);
    EXPECT_EQ(living_gl_objects::findingsSince(before), Words());
    glDeleteTextures(1, &texture);
    EXPECT_TRUE(names(living_gl_objects::findingsSince(before), "did not live"));
    GLuint const program = glCreateProgram();
    EXPECT_TRUE(names(living_gl_objects::findingsSince(before), "program"));
    glDeleteProgram(program);
}
