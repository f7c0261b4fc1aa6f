#include "tests/support/GlErrors.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

void provokeInvalidEnum() {
    glEnable(GL_RGBA);
}

} // namespace

TEST(GlErrorsGLTest, AnErrorThatNobodyAnnouncedIsFoundOnce) {
    provokeInvalidEnum();
    EXPECT_THAT(gl_errors::findings(), ElementsAre(StartsWith("unexpected GL_INVALID_ENUM")));
    EXPECT_THAT(gl_errors::findings(), IsEmpty());
}

TEST(GlErrorsGLTest, AnAnnouncedErrorIsInOrder) {
    expectGlError(GL_INVALID_ENUM);
    provokeInvalidEnum();
    EXPECT_THAT(gl_errors::findings(), IsEmpty());
}

TEST(GlErrorsGLTest, AnAnnouncedErrorThatDoesNotComeIsFound) {
    expectGlError(GL_OUT_OF_MEMORY);
    EXPECT_THAT(gl_errors::findings(), ElementsAre("the expected GL_OUT_OF_MEMORY did not come"));
}

TEST(GlErrorsGLTest, AnotherErrorThanTheAnnouncedOneIsFoundTwice) {
    expectGlError(GL_OUT_OF_MEMORY);
    provokeInvalidEnum();
    EXPECT_THAT(gl_errors::findings(), SizeIs(2));
}

TEST(GlErrorsGLTest, AnErrorThatATestReadsItselfNeedsNoAnnouncement) {
    provokeInvalidEnum();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_ENUM));
    EXPECT_THAT(gl_errors::findings(), IsEmpty());
}
