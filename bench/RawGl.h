#pragma once

#include "gles3renderbackend/Gl.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// What the bare-GL baselines have in common. They draw with the same programs, textures and framebuffers as the
/// backend, whose names they ask GL for: then both sides differ in nothing but the code that makes the calls.
namespace rawGl {

/// The names that the last operation of the backend left bound.
GLuint currentProgram();
GLuint currentTexture();

/// A unit square of our own: x, y, s, t a vertex, two indexed triangles.
class Quad {
public:
    Quad();
    Quad(Quad const&) = delete;
    Quad& operator=(Quad const&) = delete;
    ~Quad();

    void bind() const;
    static void pointPositions(GLint attribute);
    static void pointTextureCoordinates(GLint attribute);
    static void draw();

private:
    std::array<GLuint, 2> buffers_; ///< vertices, indices
};

/// Depth mask off, and the four tests that would drop fragments.
void setFixedState();

/// The pixels of a framebuffer, RGBA.
std::vector<std::uint8_t> read(GLuint framebuffer, GLsizei width, GLsizei height);

/// Throws std::runtime_error where GL has recorded an error.
void requireNoError();

} // namespace rawGl
