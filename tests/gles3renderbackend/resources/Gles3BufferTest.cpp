#include "gles3renderbackend/resources/Gles3Buffer.h"

#include "gles3renderbackend/resources/UnitQuad.h"
#include "tests/gles3renderbackend/resources/Pixels.h"
#include "tests/support/RecordingGlTest.h"

#include <gmock/gmock.h>

#include <cstring>
#include <memory>

namespace {

using Texts = std::vector<std::string>;

class Gles3BufferTest : public RecordingGlTest {};

TEST_F(Gles3BufferTest, ConstructionMakesANameAndNothingElse) {
    Gles3Buffer const buffer(GL_ARRAY_BUFFER);
    EXPECT_EQ(gl.texts(), Texts{"glGenBuffers(1, data)"});
    EXPECT_EQ(buffer.buffer(), 1U);
}

TEST_F(Gles3BufferTest, SetDataLeavesTheBufferBoundAndTheUsageIsStaticByDefault) {
    Gles3Buffer buffer(GL_ELEMENT_ARRAY_BUFFER);
    gl.forgetCalls();
    auto const bytes = numberedBytes(6);
    buffer.setData(bytes.data(), bytes.size());
    EXPECT_EQ(gl.texts(), (Texts{"glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 1)",
                                 "glBufferData(GL_ELEMENT_ARRAY_BUFFER, 6, data, GL_STATIC_DRAW)"}));
    EXPECT_EQ(gl.buffer(1).bytes, bytes);
    EXPECT_EQ(gl.boundBuffer(GL_ELEMENT_ARRAY_BUFFER), 1U);
}

TEST_F(Gles3BufferTest, SetSubDataOverwritesAPartAndLeavesTheBufferBound) {
    Gles3Buffer buffer(GL_ARRAY_BUFFER, GL_DYNAMIC_DRAW);
    auto const bytes = numberedBytes(6);
    buffer.setData(bytes.data(), bytes.size());
    EXPECT_EQ(gl.buffer(1).usage, static_cast<GLenum>(GL_DYNAMIC_DRAW));
    gl.forgetCalls();
    buffer.setSubData("xy", 2, 3);
    EXPECT_EQ(gl.texts(), (Texts{"glBindBuffer(GL_ARRAY_BUFFER, 1)", "glBufferSubData(GL_ARRAY_BUFFER, 3, 2, data)"}));
    EXPECT_EQ(gl.buffer(1).bytes, (std::vector<std::uint8_t>{bytes[0], bytes[1], bytes[2], 'x', 'y', bytes[5]}));
    EXPECT_EQ(gl.boundBuffer(GL_ARRAY_BUFFER), 1U);
}

TEST_F(Gles3BufferTest, EveryOtherTargetIsBoundAsAVertexBuffer) {
    Gles3Buffer const buffer(GL_PIXEL_UNPACK_BUFFER);
    buffer.bind();
    EXPECT_EQ(gl.last("glBindBuffer").text(), "glBindBuffer(GL_ARRAY_BUFFER, 1)");
    buffer.unbind();
    EXPECT_EQ(gl.last("glBindBuffer").text(), "glBindBuffer(GL_ARRAY_BUFFER, 0)");
}

TEST_F(Gles3BufferTest, CopiesShareTheBufferAndTheLastOneDeletesIt) {
    auto original = std::make_unique<Gles3Buffer>(GL_ARRAY_BUFFER);
    auto copy = std::make_unique<Gles3Buffer>(*original);
    EXPECT_EQ(copy->buffer(), original->buffer());
    original.reset();
    EXPECT_EQ(gl.count("glDeleteBuffers"), 0U);
    copy.reset();
    EXPECT_EQ(gl.count("glDeleteBuffers"), 1U);
}

TEST_F(Gles3BufferTest, TheUnitQuadIsTwoTrianglesOfFourVertices) {
    Gles3Buffer indices(GL_ELEMENT_ARRAY_BUFFER);
    Gles3Buffer vertices(GL_ARRAY_BUFFER);
    unitQuad::uploadIndices(indices);
    unitQuad::uploadVertices(vertices);

    std::vector<std::uint16_t> const expectedIndices{0, 1, 2, 0, 2, 3};
    ASSERT_EQ(gl.buffer(indices.buffer()).bytes.size(), 12U);
    EXPECT_EQ(std::memcmp(gl.buffer(indices.buffer()).bytes.data(), expectedIndices.data(), 12), 0);
    ASSERT_EQ(gl.buffer(vertices.buffer()).bytes.size(), 64U);
    std::vector<float> uploaded(16);
    std::memcpy(uploaded.data(), gl.buffer(vertices.buffer()).bytes.data(), 64);
    EXPECT_EQ(uploaded, (std::vector<float>{0, 0, 0, 0, 1, 0, 1, 0, 1, 1, 1, 1, 0, 1, 0, 1}));
}

} // namespace
