#pragma once

#include "bench/RawGl.h"

#include <array>
#include <string>
#include <vector>

namespace rawGl {

/// A texture that a pass reads; the output spans the share `span` of it, 1 for all.
struct PassInput {
    GLuint texture;
    std::array<GLfloat, 2> texel; ///< size of one texel, in units of the texture
    std::array<GLfloat, 2> span;
};

/// One fragment pass in bare GL: a program of its own over a whole framebuffer. The fragment text has, for input i,
/// s_i, the sampler; t_i, the texel's size; v_i, the coordinate.
class Pass {
public:
    /// `fragment` begins after the declarations. Throws std::runtime_error with GL's log if it does not compile.
    Pass(std::string const& fragment, std::vector<PassInput> const& inputs, GLuint framebuffer, GLsizei width,
         GLsizei height);
    Pass(Pass const&) = delete;
    Pass& operator=(Pass const&) = delete;
    ~Pass();

    void draw() const;

private:
    Quad quad_;
    GLuint program_;
    GLuint framebuffer_;
    GLsizei width_;
    GLsizei height_;
    std::vector<GLuint> textures_;
    GLint position_;
    GLint textureCoordinates_;
};

/// A texture of random RGBA bytes with nearest sampling.
GLuint noiseTexture(GLsizei width, GLsizei height);

} // namespace rawGl
