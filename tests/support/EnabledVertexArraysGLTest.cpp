#include "tests/support/EnabledVertexArrays.h"

#include "gles3renderbackend/Gl.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(EnabledVertexArraysGLTest, AnArrayThatIsLeftEnabledIsFoundOnce) {
    EXPECT_THAT(enabled_vertex_arrays::findings(), IsEmpty());
    glEnableVertexAttribArray(2);
    glEnableVertexAttribArray(0);
    EXPECT_THAT(enabled_vertex_arrays::findings(),
                ElementsAre("vertex attribute array 0 was left enabled", "vertex attribute array 2 was left enabled"));
    EXPECT_THAT(enabled_vertex_arrays::findings(), IsEmpty());
}
