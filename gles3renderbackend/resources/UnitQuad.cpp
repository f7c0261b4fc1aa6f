#include "gles3renderbackend/resources/UnitQuad.h"

#include "gles3renderbackend/resources/Gles3Buffer.h"

namespace {

constexpr std::array<GLushort, 6> kIndices = {0, 1, 2, 0, 2, 3};
constexpr std::array<GLfloat, 16> kVertices = {
    0.0F, 0.0F, 0.0F, 0.0F, //
    1.0F, 0.0F, 1.0F, 0.0F, //
    1.0F, 1.0F, 1.0F, 1.0F, //
    0.0F, 1.0F, 0.0F, 1.0F, //
};

} // namespace

void unitQuad::uploadIndices(Gles3Buffer& indices) {
    indices.setData(kIndices.data(), sizeof kIndices);
}

void unitQuad::uploadVertices(Gles3Buffer& vertices) {
    vertices.setData(kVertices.data(), sizeof kVertices);
}

void unitQuad::pointAttribute(GLint location, size_t firstByte) {
    glVertexAttribPointer(static_cast<GLuint>(location), 2, GL_FLOAT, GL_FALSE, kVertexBytes,
                          reinterpret_cast<void const*>(firstByte));
}

void unitQuad::draw() {
    glDrawElements(GL_TRIANGLES, kIndexCount, GL_UNSIGNED_SHORT, nullptr);
}
