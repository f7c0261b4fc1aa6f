#include "tests/support/NullGl.h"

// Shared libraries must find these functions.
#pragma GCC visibility push(default)
#include "gles3renderbackend/Gl.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

// Names count up; one bit marks each name in use.
constexpr size_t kNames = size_t{1} << 22U;
std::array<bool, kNames> isLiving{};
GLuint lastName = 0;
size_t living = 0;

GLuint born() {
    do
        lastName = (lastName + 1) % kNames;
    while (lastName == 0 || isLiving[lastName]);
    isLiving[lastName] = true;
    ++living;
    return lastName;
}

void died(GLuint name) {
    if (name == 0 || !isLiving[name]) return;
    isLiving[name] = false;
    --living;
}

void born(GLsizei n, GLuint* names) {
    for (GLsizei i = 0; i < n; ++i)
        names[i] = born();
}

void died(GLsizei n, GLuint const* names) {
    for (GLsizei i = 0; i < n; ++i)
        died(names[i]);
}

// Large enough for a buffer of the upload ring.
std::array<unsigned char, size_t{8} << 20U> mapped{};

constexpr GLint kMaxTextureSize = 8192;
GLint unpackAlignment = 4;

} // namespace

size_t null_gl::livingObjects() {
    return living;
}

// Unused parameters have no names.
extern "C" {

void glGenTextures(GLsizei n, GLuint* names) {
    born(n, names);
}
void glDeleteTextures(GLsizei n, GLuint const* names) {
    died(n, names);
}
void glGenBuffers(GLsizei n, GLuint* names) {
    born(n, names);
}
void glDeleteBuffers(GLsizei n, GLuint const* names) {
    died(n, names);
}
void glGenFramebuffers(GLsizei n, GLuint* names) {
    born(n, names);
}
void glDeleteFramebuffers(GLsizei n, GLuint const* names) {
    died(n, names);
}
GLuint glCreateShader(GLenum) {
    return born();
}
void glDeleteShader(GLuint name) {
    died(name);
}
GLuint glCreateProgram() {
    return born();
}
void glDeleteProgram(GLuint name) {
    died(name);
}

GLenum glGetError() {
    return GL_NO_ERROR;
}
GLenum glCheckFramebufferStatus(GLenum) {
    return GL_FRAMEBUFFER_COMPLETE;
}
void glGetIntegerv(GLenum name, GLint* value) {
    *value = name == GL_MAX_TEXTURE_SIZE ? kMaxTextureSize : name == GL_UNPACK_ALIGNMENT ? unpackAlignment : 0;
}
void glGetBooleanv(GLenum name, GLboolean* values) {
    std::fill_n(values, name == GL_COLOR_WRITEMASK ? 4 : 1, GLboolean{GL_TRUE});
}
GLboolean glIsEnabled(GLenum) {
    return GL_FALSE;
}
void glGetShaderiv(GLuint, GLenum name, GLint* value) {
    *value = name == GL_COMPILE_STATUS ? 1 : 0;
}
void glGetProgramiv(GLuint, GLenum name, GLint* value) {
    *value = name == GL_LINK_STATUS ? 1 : 0;
}
void glGetShaderInfoLog(GLuint, GLsizei, GLsizei*, GLchar*) {}
void glGetProgramInfoLog(GLuint, GLsizei, GLsizei*, GLchar*) {}
void glGetActiveAttrib(GLuint, GLuint, GLsizei, GLsizei*, GLint*, GLenum*, GLchar*) {}
void glGetActiveUniform(GLuint, GLuint, GLsizei, GLsizei*, GLint*, GLenum*, GLchar*) {}
GLint glGetAttribLocation(GLuint, GLchar const*) {
    return -1;
}
GLint glGetUniformLocation(GLuint, GLchar const*) {
    return -1;
}
void* glMapBufferRange(GLenum, GLintptr, GLsizeiptr, GLbitfield) {
    return mapped.data();
}
GLboolean glUnmapBuffer(GLenum) {
    return GL_TRUE;
}
void glReadPixels(GLint, GLint, GLsizei width, GLsizei height, GLenum format, GLenum, void* pixels) {
    size_t const texelBytes = format == GL_RGB ? 3 : 4;
    std::memset(pixels, 0, texelBytes * static_cast<size_t>(width) * static_cast<size_t>(height));
}

void glActiveTexture(GLenum) {}
void glAttachShader(GLuint, GLuint) {}
void glBindBuffer(GLenum, GLuint) {}
void glBindFramebuffer(GLenum, GLuint) {}
void glBindTexture(GLenum, GLuint) {}
void glBufferData(GLenum, GLsizeiptr, void const*, GLenum) {}
void glBufferSubData(GLenum, GLintptr, GLsizeiptr, void const*) {}
void glClear(GLbitfield) {}
void glClearColor(GLfloat, GLfloat, GLfloat, GLfloat) {}
void glCompileShader(GLuint) {}
void glDepthMask(GLboolean) {}
void glDetachShader(GLuint, GLuint) {}
void glDisable(GLenum) {}
void glDisableVertexAttribArray(GLuint) {}
void glDrawElements(GLenum, GLsizei, GLenum, void const*) {}
void glEnable(GLenum) {}
void glEnableVertexAttribArray(GLuint) {}
void glFramebufferTexture2D(GLenum, GLenum, GLenum, GLuint, GLint) {}
void glGenerateMipmap(GLenum) {}
void glLinkProgram(GLuint) {}
void glPixelStorei(GLenum name, GLint value) {
    if (name == GL_UNPACK_ALIGNMENT) unpackAlignment = value;
}
void glScissor(GLint, GLint, GLsizei, GLsizei) {}
void glShaderSource(GLuint, GLsizei, GLchar const* const*, GLint const*) {}
void glTexImage2D(GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, void const*) {}
void glTexParameteri(GLenum, GLenum, GLint) {}
void glTexSubImage2D(GLenum, GLint, GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, void const*) {}
void glUniform1f(GLint, GLfloat) {}
void glUniform1i(GLint, GLint) {}
void glUniform2f(GLint, GLfloat, GLfloat) {}
void glUniform4f(GLint, GLfloat, GLfloat, GLfloat, GLfloat) {}
void glUniform4fv(GLint, GLsizei, GLfloat const*) {}
void glUniformMatrix2fv(GLint, GLsizei, GLboolean, GLfloat const*) {}
void glUniformMatrix3fv(GLint, GLsizei, GLboolean, GLfloat const*) {}
void glUniformMatrix4fv(GLint, GLsizei, GLboolean, GLfloat const*) {}
void glUseProgram(GLuint) {}
void glVertexAttribPointer(GLuint, GLint, GLenum, GLboolean, GLsizei, void const*) {}
void glViewport(GLint, GLint, GLsizei, GLsizei) {}
}
#pragma GCC visibility pop
