#include "gles3renderbackend/Gles3SharedResources.h"

#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

using Texts = std::vector<std::string>;

class Gles3SharedResourcesTest : public RecordingGlTest {
protected:
    template <class Value>
    std::vector<Value> contents(Gles3Buffer const& buffer) const {
        auto const& bytes = gl.buffer(buffer.buffer()).bytes;
        std::vector<Value> values(bytes.size() / sizeof(Value));
        std::memcpy(values.data(), bytes.data(), values.size() * sizeof(Value));
        return values;
    }
};

TEST_F(Gles3SharedResourcesTest, HoldsTheUnitQuad) {
    Gles3SharedResources const resources;
    EXPECT_EQ(contents<std::uint16_t>(resources.indexBuffer()), (std::vector<std::uint16_t>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(contents<float>(resources.vertexBuffer()),
              (std::vector<float>{0, 0, 0, 0, 1, 0, 1, 0, 1, 1, 1, 1, 0, 1, 0, 1}));
    EXPECT_EQ(gl.buffer(resources.indexBuffer().buffer()).usage, static_cast<GLenum>(GL_STATIC_DRAW));
    EXPECT_EQ(gl.buffer(resources.vertexBuffer().buffer()).usage, static_cast<GLenum>(GL_STATIC_DRAW));
}

TEST_F(Gles3SharedResourcesTest, EachBufferIsFilledAtItsOwnTargetAndLeftUnbound) {
    Gles3SharedResources const resources;
    std::map<double, double> bytesByTarget;
    for (auto const& call : gl.callsOf("glBufferData"))
        bytesByTarget[call.number(0)] = call.number(1);
    EXPECT_EQ(bytesByTarget, (std::map<double, double>{{GL_ELEMENT_ARRAY_BUFFER, 12}, {GL_ARRAY_BUFFER, 64}}));
    EXPECT_EQ(gl.boundBuffer(GL_ELEMENT_ARRAY_BUFFER), 0U);
    EXPECT_EQ(gl.boundBuffer(GL_ARRAY_BUFFER), 0U);
}

TEST_F(Gles3SharedResourcesTest, EachBufferIsUnboundRightAfterItsOwnFill) {
    Gles3SharedResources const resources;
    auto const texts = gl.texts();
    for (std::string const target : {"GL_ELEMENT_ARRAY_BUFFER", "GL_ARRAY_BUFFER"}) {
        auto const filled = std::find_if(texts.begin(), texts.end(), [&](std::string const& call) {
            return call.find("glBufferData(" + target + ",") == 0;
        });
        ASSERT_NE(filled, texts.end());
        EXPECT_EQ(*(filled + 1), "glBindBuffer(" + target + ", 0)");
    }
}

TEST_F(Gles3SharedResourcesTest, HoldsOneTexelOfTransparentBlack) {
    Gles3SharedResources const resources;
    auto const& image = gl.texture(resources.transparentBlack().texture()).image();
    EXPECT_EQ(image.pixels, (std::vector<std::uint8_t>{0, 0, 0, 0}));
    EXPECT_EQ(image.format, static_cast<GLenum>(GL_RGBA));
    EXPECT_EQ(resources.transparentBlack().width(), 1U);
    EXPECT_EQ(resources.transparentBlack().height(), 1U);
    EXPECT_EQ(resources.transparentBlack().filtering(), RenderBackend::NEAREST);
}

TEST_F(Gles3SharedResourcesTest, DestructionDeletesEachNameOnce) {
    auto resources = std::make_unique<Gles3SharedResources>();
    EXPECT_EQ(gl.living().size(), 3U);
    resources.reset();
    EXPECT_EQ(gl.living(), Texts{});
}

TEST_F(Gles3SharedResourcesTest, ConstructionThatThrowsReleasesEveryName) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 0);
    EXPECT_ANY_THROW(Gles3SharedResources());
    EXPECT_EQ(gl.living(), Texts{});
}

} // namespace
