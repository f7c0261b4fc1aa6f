#include "gles3renderbackend/resources/GlName.h"

#include "gles3renderbackend/resources/Gles3Buffer.h"
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
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
    for (auto const& row : {Row{[] { return makeTextureName("here"); }, "glDeleteTextures(1, 1)"},
                            Row{[] { return makeFramebufferName("here"); }, "glDeleteFramebuffers(1, 1)"},
                            Row{[] { return makeBufferName("here"); }, "glDeleteBuffers(1, 1)"},
                            Row{makeProgramName, "glDeleteProgram(1)"}}) {
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

// Name 0 is an object of the context's own: framebuffer 0 the host's surface, texture 0 one that has no image.
TEST_F(GlNameTest, ANameThatGlDidNotMakeIsRefusedAndNotDeleted) {
    struct Row {
        GlName (*make)(char const* location);
        char const* function;
        char const* text;
    };
    for (auto const& row : {Row{makeTextureName, "glGenTextures", "#Name:GL made no texture#Location:here"},
                            Row{makeFramebufferName, "glGenFramebuffers", "#Name:GL made no framebuffer#Location:here"},
                            Row{makeBufferName, "glGenBuffers", "#Name:GL made no buffer#Location:here"}}) {
        gl.reset();
        gl.failNext(row.function, GL_OUT_OF_MEMORY);
        EXPECT_EQ(thrownBy<VelmoraException>([&] { row.make("here"); }), row.text);
        EXPECT_EQ(gl.names(), Texts{row.function});
    }
}

TEST_F(GlNameTest, EachObjectReportsAMissingNameUnderItsOwnConstructor) {
    struct Row {
        char const* function;
        void (*construct)();
        char const* text;
    };
    for (auto const& row :
         {Row{"glGenTextures", [] { Gles3Texture(); },
              "#Name:GL made no texture#Location:Gles3Texture::Gles3Texture()"},
          Row{"glGenTextures",
              [] {
                  Gles3Texture({}, {2, 2}, RenderBackend::RGBA32, RenderBackend::NEAREST);
              },
              "#Name:GL made no texture#Location:Gles3Texture::Gles3Texture(std::vector<uint8_t> const& pixels, "
              "std::vector<size_t> const& size, RenderBackend::ImageFormatType textureFormat, "
              "RenderBackend::ImageFiltering filtering)"},
          Row{"glGenFramebuffers", [] { Gles3Target(2, 2, {}, 1, 1, RenderBackend::RGBA32, RenderBackend::NEAREST); },
              "#Name:GL made no framebuffer#Location:Gles3Target::Gles3Target(size_t physicalWidth, size_t "
              "physicalHeight, std::vector<size_t> const& logicalSize, size_t logicalPerPhysical, size_t "
              "physicalPerLogical, RenderBackend::ImageFormatType format, RenderBackend::ImageFiltering filtering)"},
          Row{"glGenBuffers", [] { Gles3Buffer(GL_ARRAY_BUFFER); },
              "#Name:GL made no buffer#Location:Gles3Buffer::Gles3Buffer(GLenum target, GLenum usage)"},
          Row{"glGenBuffers", [] { Gles3Pbo(GL_PIXEL_UNPACK_BUFFER, GL_STREAM_DRAW, 8); },
              "#Name:GL made no buffer#Location:Gles3Pbo::Gles3Pbo(GLenum target, GLenum usage, size_t size)"}}) {
        gl.failNext(row.function);
        EXPECT_EQ(thrownBy<VelmoraException>(row.construct), row.text);
        EXPECT_EQ(gl.living(), Texts()) << "what was made before it is gone";
        EXPECT_EQ(gl.count("glBindFramebuffer"), 0U);
    }
}

// Linking such a program fails, and that failure is reported.
TEST_F(GlNameTest, AProgramMayHaveNoName) {
    gl.failNext("glCreateProgram", GL_OUT_OF_MEMORY);
    EXPECT_EQ(*makeProgramName(), 0U);
    EXPECT_EQ(gl.names(), Texts{"glCreateProgram"});
}

TEST_F(GlNameTest, NameZeroHasAHolderOfItsOwnAndMakesNoCall) {
    EXPECT_EQ(*defaultFramebufferName(), 0U);
    EXPECT_EQ(*noBufferName(), 0U);
    EXPECT_NE(defaultFramebufferName(), defaultFramebufferName());
    EXPECT_TRUE(gl.calls().empty());
}

} // namespace
