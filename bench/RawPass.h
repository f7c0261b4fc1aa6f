#pragma once

#include "bench/RawGl.h"

#include <array>
#include <string>
#include <vector>

namespace rawGl {

/// A texture that a pass reads: over its whole output it spans as much of it as `span` says, 1 for all.
struct PassInput {
    GLuint texture;
    std::array<GLfloat, 2> texel; ///< size of one texel, the texture being 1
    std::array<GLfloat, 2> span;
};

/// One fragment pass in bare GL: a program of its own over a whole framebuffer. The fragment text finds, for input i,
/// s_i, its sampler; t_i, its texel's size; v_i, its coordinate.
class Pass {
public:
    /// `fragment` begins after the declarations. Throws std::runtime_error with GL's log for a text that is no GLSL.
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

/// A nearest texture of RGBA bytes without a pattern.
GLuint noiseTexture(GLsizei width, GLsizei height);

} // namespace rawGl
