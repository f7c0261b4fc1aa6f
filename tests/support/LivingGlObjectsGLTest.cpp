#include "tests/support/LivingGlObjects.h"

#include "gles3renderbackend/Gl.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(LivingGlObjectsGLTest, ATextureThatIsNotDeletedIsFoundByName) {
    auto const before = living_gl_objects::snapshot();
    GLuint texture = 0;
    glGenTextures(1, &texture);
    EXPECT_THAT(living_gl_objects::findingsSince(before),
                ElementsAre("texture " + std::to_string(texture) + " was not deleted"));
    glDeleteTextures(1, &texture);
    EXPECT_THAT(living_gl_objects::findingsSince(before), IsEmpty());
}

TEST(LivingGlObjectsGLTest, ANameDeletedTwiceIsFoundOnce) {
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    auto const name = buffer;
    glDeleteBuffers(1, &name);
    glDeleteBuffers(1, &name);
    auto const now = living_gl_objects::snapshot();
    EXPECT_THAT(living_gl_objects::findingsSince(now),
                ElementsAre("buffer " + std::to_string(name) + " was deleted but did not live"));
    EXPECT_THAT(living_gl_objects::findingsSince(now), IsEmpty());
}

TEST(LivingGlObjectsGLTest, DeletingNameZeroIsInOrder) {
    auto const before = living_gl_objects::snapshot();
    GLuint const zero = 0;
    glDeleteFramebuffers(1, &zero);
    glDeleteShader(0);
    glDeleteProgram(0);
    EXPECT_THAT(living_gl_objects::findingsSince(before), IsEmpty());
}

TEST(LivingGlObjectsGLTest, EveryKindOfObjectIsCounted) {
    auto const before = living_gl_objects::snapshot();
    GLuint framebuffer = 0;
    GLuint renderbuffer = 0;
    GLuint sampler = 0;
    GLuint vertexArray = 0;
    GLuint query = 0;
    glGenFramebuffers(1, &framebuffer);
    glGenRenderbuffers(1, &renderbuffer);
    glGenSamplers(1, &sampler);
    glGenVertexArrays(1, &vertexArray);
    glGenQueries(1, &query);
    auto const shader = glCreateShader(GL_VERTEX_SHADER);
    auto const program = glCreateProgram();
    auto* const sync = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);

    EXPECT_THAT(living_gl_objects::findingsSince(before),
                ElementsAre(StartsWith("framebuffer "), StartsWith("program "), StartsWith("query "),
                            StartsWith("renderbuffer "), StartsWith("sampler "), StartsWith("shader "),
                            StartsWith("sync "), StartsWith("vertex array ")));

    glDeleteFramebuffers(1, &framebuffer);
    glDeleteRenderbuffers(1, &renderbuffer);
    glDeleteSamplers(1, &sampler);
    glDeleteVertexArrays(1, &vertexArray);
    glDeleteQueries(1, &query);
    glDeleteShader(shader);
    glDeleteProgram(program);
    glDeleteSync(sync);
    EXPECT_THAT(living_gl_objects::findingsSince(before), IsEmpty());
}
