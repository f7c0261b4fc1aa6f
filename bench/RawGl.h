#pragma once

#include "gles3renderbackend/Gl.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Code shared by the bare-GL baselines. They draw with the backend's own programs, textures and framebuffers, whose
/// names they query from GL: so both sides differ only in the code that makes the calls.
namespace rawGl {

/// The names that the backend's last operation left bound.
GLuint currentProgram();
GLuint currentTexture();

/// A unit square: x, y, s, t per vertex, two indexed triangles.
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

/// Disables the depth mask and the four tests that would drop fragments.
void setFixedState();

/// The pixels of a framebuffer, RGBA.
std::vector<std::uint8_t> read(GLuint framebuffer, GLsizei width, GLsizei height);

/// Throws std::runtime_error if GL has recorded an error.
void requireNoError();

} // namespace rawGl
