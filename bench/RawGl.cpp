#include "bench/RawGl.h"

#include <stdexcept>
#include <string>

namespace {

constexpr std::array<GLushort, 6> kIndices = {0, 1, 2, 0, 2, 3};
constexpr std::array<GLfloat, 16> kVertices = {0, 0, 0, 0, 1, 0, 1, 0, 1, 1, 1, 1, 0, 1, 0, 1};
constexpr GLsizei kVertexBytes = 16;

void point(GLint attribute, size_t firstByte) {
    glVertexAttribPointer(static_cast<GLuint>(attribute), 2, GL_FLOAT, GL_FALSE, kVertexBytes,
                          reinterpret_cast<void const*>(firstByte));
}

GLuint currentName(GLenum binding) {
    GLint name = 0;
    glGetIntegerv(binding, &name);
    return static_cast<GLuint>(name);
}

} // namespace

GLuint rawGl::currentProgram() {
    return currentName(GL_CURRENT_PROGRAM);
}

GLuint rawGl::currentTexture() {
    return currentName(GL_TEXTURE_BINDING_2D);
}

rawGl::Quad::Quad() : buffers_() {
    glGenBuffers(2, buffers_.data());
    bind();
    glBufferData(GL_ARRAY_BUFFER, sizeof kVertices, kVertices.data(), GL_STATIC_DRAW);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof kIndices, kIndices.data(), GL_STATIC_DRAW);
}

rawGl::Quad::~Quad() {
    glDeleteBuffers(2, buffers_.data());
}

void rawGl::Quad::bind() const {
    glBindBuffer(GL_ARRAY_BUFFER, buffers_[0]);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers_[1]);
}

void rawGl::Quad::pointPositions(GLint attribute) {
    point(attribute, 0);
}

void rawGl::Quad::pointTextureCoordinates(GLint attribute) {
    point(attribute, 8);
}

void rawGl::Quad::draw() {
    glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr);
}

void rawGl::setFixedState() {
    glDepthMask(GL_FALSE);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_STENCIL_TEST);
    glDisable(GL_SCISSOR_TEST);
}

std::vector<std::uint8_t> rawGl::read(GLuint framebuffer, GLsizei width, GLsizei height) {
    std::vector<std::uint8_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

void rawGl::requireNoError() {
    GLenum const error = glGetError();
    if (error != GL_NO_ERROR) throw std::runtime_error("GL error " + std::to_string(error));
}
