#include "gles3renderbackend/resources/GlName.h"

#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

namespace {

using Texts = std::vector<std::string>;

class GlNameTest : public RecordingGlTest {};

TEST_F(GlNameTest, EachKindIsDeletedOnceByTheLastOwner) {
    struct Row {
        GlName (*make)();
        char const* deletion;
    };
    for (auto const& row :
         {Row{makeTextureName, "glDeleteTextures(1, 1)"}, Row{makeFramebufferName, "glDeleteFramebuffers(1, 1)"},
          Row{makeBufferName, "glDeleteBuffers(1, 1)"}, Row{makeProgramName, "glDeleteProgram(1)"}}) {
        gl.reset();
        GlName name = row.make();
        EXPECT_EQ(*name, 1U);
        GlName copy = name;
        gl.forgetCalls();
        copy.reset();
        EXPECT_TRUE(gl.calls().empty());
        name.reset();
        EXPECT_EQ(gl.texts(), Texts{row.deletion});
    }
}

TEST_F(GlNameTest, ANameThatGlDidNotMakeIsNotDeleted) {
    struct Row {
        GlName (*make)();
        char const* function;
    };
    for (auto const& row : {Row{makeTextureName, "glGenTextures"}, Row{makeFramebufferName, "glGenFramebuffers"},
                            Row{makeBufferName, "glGenBuffers"}, Row{makeProgramName, "glCreateProgram"}}) {
        gl.reset();
        gl.failNext(row.function, GL_OUT_OF_MEMORY);
        EXPECT_EQ(*row.make(), 0U);
        EXPECT_EQ(gl.names(), Texts{row.function});
    }
}

TEST_F(GlNameTest, NameZeroHasAHolderOfItsOwnAndMakesNoCall) {
    EXPECT_EQ(*defaultFramebufferName(), 0U);
    EXPECT_EQ(*noBufferName(), 0U);
    EXPECT_NE(defaultFramebufferName(), defaultFramebufferName());
    EXPECT_TRUE(gl.calls().empty());
}

} // namespace
