#include "gles3renderbackend/resources/Gles3Target.h"

#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/resources/Thrown.h"
#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

using Texts = std::vector<std::string>;
using Sizes = std::vector<size_t>;

char const* const kIncomplete = "#Name:Failed to setup render to texture"
                                "#Location:void Gles3Target::bindTextureToFrameBuffer() const";
char const* const kCannotClear = "#Name:Cannot clear buffer"
                                 "#Location:void Gles3Target::clear(float r, float g, float b, float a) const";

class Gles3TargetTest : public RecordingGlTest {};

Gles3Target target(size_t width, size_t height, Sizes const& logicalSize = {}, size_t logicalPerPhysical = 1,
                   size_t physicalPerLogical = 1) {
    return {width,
            height,
            logicalSize,
            logicalPerPhysical,
            physicalPerLogical,
            RenderBackend::RGBA32,
            RenderBackend::NEAREST};
}

TEST_F(Gles3TargetTest, DefaultConstructedIsTheHostsOwnSurface) {
    {
        Gles3Target const surface;
        EXPECT_EQ(gl.texts(), Texts{"glGenTextures(1, data)"});
        EXPECT_EQ(surface.framebuffer(), 0U);
        EXPECT_EQ(surface.ownSurface(), 0U);
        EXPECT_EQ(surface.logicalSize(), (Sizes{0, 0}));
        EXPECT_EQ(surface.logicalPerPhysical(), 1U);
        EXPECT_EQ(surface.physicalPerLogical(), 1U);
        EXPECT_EQ(surface.width(), 0U);
        EXPECT_EQ(surface.height(), 0U);
        EXPECT_EQ(surface.format(), RenderBackend::RGBA32);
        EXPECT_EQ(surface.filtering(), RenderBackend::NEAREST);
    }
    EXPECT_EQ(gl.count("glDeleteFramebuffers"), 0U) << "framebuffer 0 belongs to the context";
    EXPECT_EQ(gl.count("glDeleteTextures"), 1U);
}

TEST_F(Gles3TargetTest, ConstructorMakesTheTextureThenTheFramebufferAndLeavesItBound) {
    Gles3Target const made = target(5, 3);
    EXPECT_EQ(gl.texts(),
              (Texts{"glGenTextures(1, data)", "glBindTexture(GL_TEXTURE_2D, 1)", "glBindTexture(GL_TEXTURE_2D, 1)",
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST)",
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST)",
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
                     "glPixelStorei(GL_UNPACK_ALIGNMENT, 1)", "glGetIntegerv(GL_MAX_TEXTURE_SIZE, data)",
                     "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 5, 3, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)",
                     "glGenFramebuffers(1, data)", "glBindFramebuffer(GL_FRAMEBUFFER, 2)",
                     "glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 1, 0)",
                     "glCheckFramebufferStatus(GL_FRAMEBUFFER)"}));
    EXPECT_EQ(made.framebuffer(), 2U);
    EXPECT_EQ(gl.boundFramebuffer(), 2U);
    EXPECT_EQ(made.ownSurface(), 1U);
}

TEST_F(Gles3TargetTest, ConstructorKeepsWhatItIsGiven) {
    Gles3Target const made(4, 3, {9, 5}, 2, 7, RenderBackend::RGB24, RenderBackend::LINEAR);
    EXPECT_EQ(made.logicalSize(), (Sizes{9, 5}));
    EXPECT_EQ(made.logicalPerPhysical(), 2U);
    EXPECT_EQ(made.physicalPerLogical(), 7U);
    EXPECT_EQ(made.format(), RenderBackend::RGB24);
    EXPECT_EQ(made.filtering(), RenderBackend::LINEAR);
    Canvas const& canvas = made;
    EXPECT_EQ(canvas.width(), 4U) << "texels, not logical pixels";
    EXPECT_EQ(canvas.height(), 3U);
}

TEST_F(Gles3TargetTest, AnEmptyLogicalSizeMeansThePhysicalSize) {
    EXPECT_EQ(target(5, 3, {}, 2, 1).logicalSize(), (Sizes{5, 3}));
}

TEST_F(Gles3TargetTest, AnIncompleteFramebufferThrowsAndEveryNameIsReleased) {
    for (auto const status :
         std::vector<GLenum>{GL_FRAMEBUFFER_UNSUPPORTED, GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT,
                             GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT, GL_FRAMEBUFFER_UNDEFINED, GL_NONE}) {
        gl.reset();
        gl.setFramebufferStatus(status);
        EXPECT_EQ(thrownBy<VelmoraException>([&] { target(5, 3); }), kIncomplete);
        EXPECT_EQ(gl.count("glDeleteFramebuffers"), 1U);
        EXPECT_EQ(gl.count("glDeleteTextures"), 1U);
        EXPECT_TRUE(gl.living().empty());
    }
}

TEST_F(Gles3TargetTest, AFailureOfTheTextureComesBeforeTheFramebuffer) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    EXPECT_THROW(target(65, 1), VelmoraRangeException);
    EXPECT_THROW(Gles3Target(3, 3, {}, 1, 1, RenderBackend::RGBA32, RenderBackend::TRILINEAR), VelmoraException);
    EXPECT_THROW(Gles3Target(3, 3, {}, 1, 1, RenderBackend::UNDEFINED, RenderBackend::NEAREST), VelmoraException);
    EXPECT_EQ(gl.count("glGenFramebuffers"), 0U);
    EXPECT_TRUE(gl.living().empty());
}

TEST_F(Gles3TargetTest, ALogicalSizeOfOneNumberThrows) {
    EXPECT_THROW(target(5, 3, {5}), VelmoraException);
    EXPECT_TRUE(gl.living().empty());
}

TEST_F(Gles3TargetTest, CopiesShareBothNamesAndTheLastOneDeletesThem) {
    auto original = std::make_unique<Gles3Target>(target(5, 3));
    auto copy = std::make_unique<Gles3Target>(*original);
    EXPECT_EQ(copy->framebuffer(), original->framebuffer());
    EXPECT_EQ(copy->texture(), original->texture());
    original.reset();
    EXPECT_EQ(gl.count("glDeleteFramebuffers"), 0U);
    EXPECT_EQ(gl.count("glDeleteTextures"), 0U);
    gl.forgetCalls();
    copy.reset();
    EXPECT_EQ(gl.texts(), (Texts{"glDeleteFramebuffers(1, 2)", "glDeleteTextures(1, 1)"}));
}

TEST_F(Gles3TargetTest, BindTextureToFrameBufferAttachesToWhateverFramebufferIsBound) {
    Gles3Target const first = target(5, 3);
    Gles3Target const second = target(2, 2);
    gl.forgetCalls();
    first.bindTextureToFrameBuffer();
    EXPECT_EQ(gl.texts(), (Texts{"glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 1, 0)",
                                 "glCheckFramebufferStatus(GL_FRAMEBUFFER)"}));
    EXPECT_EQ(gl.framebuffer(second.framebuffer()).colorTexture, first.texture());
    gl.failNext("glCheckFramebufferStatus");
    EXPECT_EQ(thrownBy<VelmoraException>([&] { second.bindTextureToFrameBuffer(); }), kIncomplete);
}

TEST_F(Gles3TargetTest, RepackChangesTheLogicalSideAlone) {
    Gles3Target made = target(6, 3);
    gl.forgetCalls();
    made.repack({12, 3}, 2, 1);
    EXPECT_EQ(made.logicalSize(), (Sizes{12, 3}));
    EXPECT_EQ(made.logicalPerPhysical(), 2U);
    EXPECT_EQ(made.physicalPerLogical(), 1U);
    EXPECT_EQ(made.width(), 6U);
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3TargetTest, ClearSetsTheColourOfItsFramebuffer) {
    Gles3Target const made = target(5, 3);
    Gles3Target const other = target(5, 3);
    gl.forgetCalls();
    made.clear(0.25F, 0.5F, 1.0F, 2.0F);
    EXPECT_EQ(gl.texts(), (Texts{"glBindFramebuffer(GL_FRAMEBUFFER, 2)", "glClearColor(0.25, 0.5, 1, 2)",
                                 "glClear(GL_COLOR_BUFFER_BIT)"}));
    EXPECT_EQ(gl.boundFramebuffer(), made.framebuffer());
}

TEST_F(Gles3TargetTest, APackedTargetIsClearedToBlackOnlyWhateverAlphaIs) {
    for (auto const& [perPhysical, perLogical] : {std::pair<size_t, size_t>{2, 1}, {4, 1}, {1, 2}, {1, 3}, {3, 2}}) {
        Gles3Target const made = target(6, 3, {12, 3}, perPhysical, perLogical);
        made.clear(0, 0, 0, 1);
        EXPECT_EQ(gl.last("glClearColor").text(), "glClearColor(0, 0, 0, 1)");
        made.clear(0, 0, 0, 0.5F);
        gl.forgetCalls();
        EXPECT_EQ(thrownBy<VelmoraException>([&] { made.clear(1, 0, 0, 1); }), kCannotClear);
        EXPECT_EQ(thrownBy<VelmoraException>([&] { made.clear(0, 0.5F, 0, 1); }), kCannotClear);
        EXPECT_EQ(thrownBy<VelmoraException>([&] { made.clear(0, 0, 1, 0); }), kCannotClear);
        EXPECT_TRUE(gl.calls().empty());
    }
}

// Required: the quotient of the two ratio numbers is a whole number, so 3 / 2 counts as 1.
TEST_F(Gles3TargetTest, ATargetWhoseWholeQuotientIsOneTakesEveryColour) {
    for (auto const& [perPhysical, perLogical] : {std::pair<size_t, size_t>{1, 1}, {2, 2}, {2, 3}}) {
        Gles3Target const made = target(6, 3, {12, 3}, perPhysical, perLogical);
        made.clear(1, 0, 0, 1);
        EXPECT_EQ(gl.last("glClearColor").text(), "glClearColor(1, 0, 0, 1)");
    }
}

TEST_F(Gles3TargetTest, ClearRectScissorsInThisOrder) {
    Gles3Target const made = target(8, 6);
    gl.forgetCalls();
    made.clearRect(1, 0.5F, 0, 1, 1, 2, 3, 4);
    EXPECT_EQ(gl.texts(),
              (Texts{"glEnable(GL_SCISSOR_TEST)", "glScissor(1, 2, 3, 4)", "glBindFramebuffer(GL_FRAMEBUFFER, 2)",
                     "glClearColor(1, 0.5, 0, 1)", "glClear(GL_COLOR_BUFFER_BIT)", "glDisable(GL_SCISSOR_TEST)"}));
}

TEST_F(Gles3TargetTest, ClearRectTruncatesPositionsRoundsWidthsUpAndScalesRows) {
    struct Row {
        char const* what;
        Sizes logicalSize;
        size_t perPhysical;
        size_t perLogical;
        Sizes rectangle;
        char const* scissor;
    };
    // The target is 51 by 20 texels.
    for (auto const& row :
         {Row{"101 of 102 logical pixels take 51 texels", {102, 20}, 2, 1, {0, 0, 101, 20}, "glScissor(0, 0, 51, 20)"},
          Row{"an odd position is truncated", {102, 20}, 2, 1, {3, 1, 1, 1}, "glScissor(1, 1, 1, 1)"},
          Row{"two texels per pixel", {25, 20}, 1, 2, {3, 0, 4, 2}, "glScissor(6, 0, 8, 2)"},
          Row{"three quarters", {68, 20}, 4, 3, {5, 0, 5, 1}, "glScissor(3, 0, 4, 1)"},
          Row{"rows are truncated", {51, 30}, 1, 1, {0, 4, 1, 5}, "glScissor(0, 2, 1, 3)"},
          Row{"rows are spread", {51, 10}, 1, 1, {0, 4, 1, 5}, "glScissor(0, 8, 1, 10)"}}) {
        Gles3Target const made = target(51, 20, row.logicalSize, row.perPhysical, row.perLogical);
        made.clearRect(0, 0, 0, 1, row.rectangle[0], row.rectangle[1], row.rectangle[2], row.rectangle[3]);
        EXPECT_EQ(gl.last("glScissor").text(), row.scissor) << row.what;
    }
}

TEST_F(Gles3TargetTest, ClearRectSwitchesTheScissorTestOffAlsoWhenItThrows) {
    Gles3Target const made = target(4, 4, {8, 4}, 2, 1);
    gl.forgetCalls();
    EXPECT_EQ(thrownBy<VelmoraException>([&] { made.clearRect(0, 1, 0, 1, 0, 0, 4, 4); }), kCannotClear);
    EXPECT_EQ(gl.texts(), (Texts{"glEnable(GL_SCISSOR_TEST)", "glScissor(0, 0, 2, 4)", "glDisable(GL_SCISSOR_TEST)"}));
}

TEST_F(Gles3TargetTest, ClearRectOfTheHostsOwnSurfaceTakesTheRectangleAsItStands) {
    Gles3Target const surface;
    surface.clearRect(1, 1, 1, 1, 1, 2, 3, 4);
    EXPECT_EQ(gl.last("glScissor").text(), "glScissor(1, 2, 3, 4)");
    EXPECT_EQ(gl.last("glBindFramebuffer").text(), "glBindFramebuffer(GL_FRAMEBUFFER, 0)");
}

TEST_F(Gles3TargetTest, ALogicalWidthTakesTheCeilingInTexels) {
    EXPECT_EQ(target(51, 1, {102, 1}, 2, 1).texelWidth(101), 51U);
    EXPECT_EQ(target(51, 1, {102, 1}, 2, 1).texelWidth(100), 50U);
    EXPECT_EQ(target(51, 1, {102, 1}, 2, 1).texelWidth(0), 0U);
    EXPECT_EQ(target(6, 1, {3, 1}, 1, 2).texelWidth(3), 6U);
    EXPECT_EQ(target(6, 1, {8, 1}, 4, 3).texelWidth(5), 4U);
}

} // namespace
