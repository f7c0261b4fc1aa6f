#include "bench/RawPass.h"

#include <stdexcept>

namespace {

// Repeats the line per input, with every N replaced by the input's number.
std::string numbered(std::vector<rawGl::PassInput> const& inputs, std::string const& line) {
    std::string lines;
    for (size_t i = 0; i < inputs.size(); ++i)
        for (char const letter : line)
            lines += letter == 'N' ? std::to_string(i) : std::string(1, letter);
    return lines;
}

std::string vertexText(std::vector<rawGl::PassInput> const& inputs) {
    return "#version 100\nattribute highp vec2 a_position;\nattribute highp vec2 a_coordinate;\n" +
           numbered(inputs, "uniform highp vec2 span_N;\nvarying highp vec2 v_N;\n") +
           "void main() {\n    gl_Position = vec4(2.0 * a_position - 1.0, 1.0, 1.0);\n" +
           numbered(inputs, "    v_N = span_N * a_coordinate;\n") + "}\n";
}

std::string fragmentText(std::vector<rawGl::PassInput> const& inputs, std::string const& fragment) {
    return "#version 100\nprecision highp float;\n" +
           numbered(inputs, "uniform highp sampler2D s_N;\nuniform highp vec2 t_N;\nvarying highp vec2 v_N;\n") +
           fragment;
}

GLuint compiled(GLenum type, std::string const& source) {
    GLuint const shader = glCreateShader(type);
    GLchar const* const begin = source.c_str();
    glShaderSource(shader, 1, &begin, nullptr);
    glCompileShader(shader);
    GLint good = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &good);
    if (good != 0) return shader;
    std::array<GLchar, 2000> log{};
    glGetShaderInfoLog(shader, log.size(), nullptr, log.data());
    throw std::runtime_error(log.data() + source);
}

GLuint linked(std::string const& vertex, std::string const& fragment) {
    GLuint const program = glCreateProgram();
    for (GLuint const shader : {compiled(GL_VERTEX_SHADER, vertex), compiled(GL_FRAGMENT_SHADER, fragment)}) {
        glAttachShader(program, shader);
        glDeleteShader(shader);
    }
    glLinkProgram(program);
    GLint good = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &good);
    if (good == 0) throw std::runtime_error("the pass does not link");
    return program;
}

} // namespace

rawGl::Pass::Pass(std::string const& fragment, std::vector<PassInput> const& inputs, GLuint framebuffer, GLsizei width,
                  GLsizei height)
    : program_(linked(vertexText(inputs), fragmentText(inputs, fragment))),
      framebuffer_(framebuffer),
      width_(width),
      height_(height),
      position_(glGetAttribLocation(program_, "a_position")),
      textureCoordinates_(glGetAttribLocation(program_, "a_coordinate")) {
    glUseProgram(program_);
    auto const uniform = [&](char const* prefix, size_t i) {
        return glGetUniformLocation(program_, (prefix + std::to_string(i)).c_str());
    };
    for (size_t i = 0; i < inputs.size(); ++i) {
        textures_.push_back(inputs[i].texture);
        glUniform1i(uniform("s_", i), static_cast<GLint>(i));
        glUniform2f(uniform("t_", i), inputs[i].texel[0], inputs[i].texel[1]);
        glUniform2f(uniform("span_", i), inputs[i].span[0], inputs[i].span[1]);
    }
}

rawGl::Pass::~Pass() {
    glDeleteProgram(program_);
}

void rawGl::Pass::draw() const {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
    quad_.bind();
    glUseProgram(program_);
    setFixedState();
    glViewport(0, 0, width_, height_);
    for (size_t i = 0; i < textures_.size(); ++i) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(i));
        glBindTexture(GL_TEXTURE_2D, textures_[i]);
    }
    Quad::pointPositions(position_);
    Quad::pointTextureCoordinates(textureCoordinates_);
    glEnableVertexAttribArray(static_cast<GLuint>(position_));
    glEnableVertexAttribArray(static_cast<GLuint>(textureCoordinates_));
    Quad::draw();
    glDisableVertexAttribArray(static_cast<GLuint>(position_));
    glDisableVertexAttribArray(static_cast<GLuint>(textureCoordinates_));
}

GLuint rawGl::noiseTexture(GLsizei width, GLsizei height) {
    std::vector<std::uint8_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    std::uint32_t state = 1;
    for (auto& byte : pixels) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24U);
    }
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return texture;
}
