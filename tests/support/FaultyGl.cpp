// A GL library in front of the real one, for programs that link the backend as a shared library: each call goes through
// the GlFaultPlan, and on to the real one unless it is to fail. It has every function that the backend imports, which a
// test compares. Linked before the GL library, so that the dynamic linker finds it first.
#pragma GCC visibility push(default)
#include "gles3renderbackend/Gl.h"
#pragma GCC visibility pop

#include "tests/support/GlFaultPlan.h"

#include <dlfcn.h>

#include <algorithm>
#include <utility>

namespace {

using Verdict = GlFaultPlan::Verdict;

template <class Function>
Function* next(char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// What glGetError owes, besides what the real one does.
GLenum& pendingError() {
    static GLenum error = GL_NO_ERROR;
    return error;
}

// The verdict on a call; raises the error that comes with it.
Verdict judged(char const* function) {
    Verdict const verdict = GlFaultPlan::instance().next(function);
    if (verdict == Verdict::OutOfMemory || verdict == Verdict::PendingError) pendingError() = GL_OUT_OF_MEMORY;
    return verdict;
}

bool carriedOut(Verdict verdict) {
    return verdict == Verdict::Right || verdict == Verdict::PendingError;
}

// A query that is refused answers 0; one that is out of memory leaves what is there.
template <class Query>
void answer(Verdict verdict, GLint refused, GLint* value, Query const& query) {
    if (carriedOut(verdict)) return query();
    if (verdict == Verdict::Refused) *value = refused;
}

// Only checked builds of the backend ask for others, to look at the host's state.
bool isTheBackends(GLenum integer) {
    return integer == GL_MAX_TEXTURE_SIZE || integer == GL_IMPLEMENTATION_COLOR_READ_FORMAT ||
           integer == GL_IMPLEMENTATION_COLOR_READ_TYPE;
}

} // namespace

// A line per function. Refused: what it answers then.
// NOLINTBEGIN(bugprone-macro-parentheses,readability-identifier-naming)
#define VELMORA_REAL(Result, Function, Parameters) static auto* const real = next<Result Parameters>("gl" #Function)

#define VELMORA_CALL(Function, Parameters, Arguments)                                                                  \
    void gl##Function Parameters {                                                                                     \
        VELMORA_REAL(void, Function, Parameters);                                                                      \
        if (carriedOut(judged("gl" #Function))) real Arguments;                                                        \
    }

#define VELMORA_ANSWER(Result, Function, Parameters, Arguments, Refused)                                               \
    Result gl##Function Parameters {                                                                                   \
        VELMORA_REAL(Result, Function, Parameters);                                                                    \
        return carriedOut(judged("gl" #Function)) ? real Arguments : Refused;                                          \
    }

#define VELMORA_NAMES(Function)                                                                                        \
    void gl##Function(GLsizei n, GLuint* names) {                                                                      \
        VELMORA_REAL(void, Function, (GLsizei, GLuint*));                                                              \
        if (carriedOut(judged("gl" #Function))) return real(n, names);                                                 \
        std::fill_n(names, n, 0U);                                                                                     \
    }

#define VELMORA_STATUS(Function)                                                                                       \
    void gl##Function(GLuint object, GLenum name, GLint* value) {                                                      \
        VELMORA_REAL(void, Function, (GLuint, GLenum, GLint*));                                                        \
        answer(judged("gl" #Function), 0, value, [&] { real(object, name, value); });                                  \
    }

#pragma GCC visibility push(default)
extern "C" {

VELMORA_NAMES(GenTextures)
VELMORA_NAMES(GenBuffers)
VELMORA_NAMES(GenFramebuffers)
VELMORA_STATUS(GetShaderiv)
VELMORA_STATUS(GetProgramiv)
VELMORA_ANSWER(GLuint, CreateShader, (GLenum type), (type), 0)
VELMORA_ANSWER(GLuint, CreateProgram, (), (), 0)
VELMORA_ANSWER(GLenum, CheckFramebufferStatus, (GLenum target), (target), GL_FRAMEBUFFER_UNSUPPORTED)
VELMORA_ANSWER(GLint, GetAttribLocation, (GLuint program, GLchar const* name), (program, name), -1)
VELMORA_ANSWER(GLint, GetUniformLocation, (GLuint program, GLchar const* name), (program, name), -1)
VELMORA_ANSWER(GLboolean, IsEnabled, (GLenum capability), (capability), GL_FALSE)
VELMORA_ANSWER(void*, MapBufferRange, (GLenum target, GLintptr offset, GLsizeiptr length, GLbitfield access),
               (target, offset, length, access), nullptr)
VELMORA_CALL(ActiveTexture, (GLenum unit), (unit))
VELMORA_CALL(AttachShader, (GLuint program, GLuint shader), (program, shader))
VELMORA_CALL(BindBuffer, (GLenum target, GLuint buffer), (target, buffer))
VELMORA_CALL(BindFramebuffer, (GLenum target, GLuint framebuffer), (target, framebuffer))
VELMORA_CALL(BindTexture, (GLenum target, GLuint texture), (target, texture))
VELMORA_CALL(BufferData, (GLenum target, GLsizeiptr size, void const* data, GLenum usage), (target, size, data, usage))
VELMORA_CALL(BufferSubData, (GLenum target, GLintptr offset, GLsizeiptr size, void const* data),
             (target, offset, size, data))
VELMORA_CALL(Clear, (GLbitfield mask), (mask))
VELMORA_CALL(ClearColor, (GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha), (red, green, blue, alpha))
VELMORA_CALL(CompileShader, (GLuint shader), (shader))
VELMORA_CALL(DeleteBuffers, (GLsizei n, GLuint const* names), (n, names))
VELMORA_CALL(DeleteFramebuffers, (GLsizei n, GLuint const* names), (n, names))
VELMORA_CALL(DeleteProgram, (GLuint program), (program))
VELMORA_CALL(DeleteShader, (GLuint shader), (shader))
VELMORA_CALL(DeleteTextures, (GLsizei n, GLuint const* names), (n, names))
VELMORA_CALL(DepthMask, (GLboolean flag), (flag))
VELMORA_CALL(DetachShader, (GLuint program, GLuint shader), (program, shader))
VELMORA_CALL(Disable, (GLenum capability), (capability))
VELMORA_CALL(DisableVertexAttribArray, (GLuint index), (index))
VELMORA_CALL(DrawElements, (GLenum mode, GLsizei count, GLenum type, void const* indices), (mode, count, type, indices))
VELMORA_CALL(Enable, (GLenum capability), (capability))
VELMORA_CALL(EnableVertexAttribArray, (GLuint index), (index))
VELMORA_CALL(FramebufferTexture2D,
             (GLenum target, GLenum attachment, GLenum textureTarget, GLuint texture, GLint level),
             (target, attachment, textureTarget, texture, level))
VELMORA_CALL(GenerateMipmap, (GLenum target), (target))
VELMORA_CALL(GetActiveAttrib,
             (GLuint program, GLuint index, GLsizei room, GLsizei* length, GLint* size, GLenum* type, GLchar* name),
             (program, index, room, length, size, type, name))
VELMORA_CALL(GetActiveUniform,
             (GLuint program, GLuint index, GLsizei room, GLsizei* length, GLint* size, GLenum* type, GLchar* name),
             (program, index, room, length, size, type, name))
VELMORA_CALL(GetBooleanv, (GLenum name, GLboolean* values), (name, values))
VELMORA_CALL(GetProgramInfoLog, (GLuint program, GLsizei size, GLsizei* length, GLchar* log),
             (program, size, length, log))
VELMORA_CALL(GetShaderInfoLog, (GLuint shader, GLsizei size, GLsizei* length, GLchar* log), (shader, size, length, log))
VELMORA_CALL(GetVertexAttribiv, (GLuint index, GLenum name, GLint* values), (index, name, values))
VELMORA_CALL(LinkProgram, (GLuint program), (program))
VELMORA_CALL(PixelStorei, (GLenum name, GLint value), (name, value))
VELMORA_CALL(ReadPixels, (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels),
             (x, y, width, height, format, type, pixels))
VELMORA_CALL(Scissor, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))
VELMORA_CALL(ShaderSource, (GLuint shader, GLsizei count, GLchar const* const* strings, GLint const* lengths),
             (shader, count, strings, lengths))
VELMORA_CALL(TexImage2D,
             (GLenum target, GLint level, GLint internalFormat, GLsizei width, GLsizei height, GLint border,
              GLenum format, GLenum type, void const* pixels),
             (target, level, internalFormat, width, height, border, format, type, pixels))
VELMORA_CALL(TexParameteri, (GLenum target, GLenum name, GLint value), (target, name, value))
VELMORA_CALL(TexSubImage2D,
             (GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
              void const* pixels),
             (target, level, x, y, width, height, format, type, pixels))
VELMORA_CALL(Uniform1f, (GLint location, GLfloat x), (location, x))
VELMORA_CALL(Uniform1i, (GLint location, GLint x), (location, x))
VELMORA_CALL(Uniform2f, (GLint location, GLfloat x, GLfloat y), (location, x, y))
VELMORA_CALL(Uniform4f, (GLint location, GLfloat x, GLfloat y, GLfloat z, GLfloat w), (location, x, y, z, w))
VELMORA_CALL(Uniform4fv, (GLint location, GLsizei count, GLfloat const* values), (location, count, values))
VELMORA_CALL(UniformMatrix2fv, (GLint location, GLsizei count, GLboolean transposed, GLfloat const* values),
             (location, count, transposed, values))
VELMORA_CALL(UniformMatrix3fv, (GLint location, GLsizei count, GLboolean transposed, GLfloat const* values),
             (location, count, transposed, values))
VELMORA_CALL(UniformMatrix4fv, (GLint location, GLsizei count, GLboolean transposed, GLfloat const* values),
             (location, count, transposed, values))
VELMORA_CALL(UseProgram, (GLuint program), (program))
VELMORA_CALL(VertexAttribPointer,
             (GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride, void const* pointer),
             (index, size, type, normalized, stride, pointer))
VELMORA_CALL(Viewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))

void glGetIntegerv(GLenum name, GLint* values) {
    VELMORA_REAL(void, GetIntegerv, (GLenum, GLint*));
    if (!isTheBackends(name) && !GlFaultPlan::instance().isContextLost()) return real(name, values);
    GLint const refused = name == GL_MAX_TEXTURE_SIZE ? GlFaultPlan::kSmallTexture : 0;
    answer(judged("glGetIntegerv"), refused, values, [&] { real(name, values); });
}

// Refused, the contents are lost and the mapping is gone.
GLboolean glUnmapBuffer(GLenum target) {
    VELMORA_REAL(GLboolean, UnmapBuffer, (GLenum));
    Verdict const verdict = judged("glUnmapBuffer");
    if (verdict == Verdict::OutOfMemory || verdict == Verdict::Lost) return GL_FALSE;
    GLboolean const unmapped = real(target);
    return verdict == Verdict::Refused ? GL_FALSE : unmapped;
}

GLenum glGetError() {
    VELMORA_REAL(GLenum, GetError, ());
    if (judged("glGetError") == Verdict::Lost) return GlFaultPlan::kContextLost;
    GLenum const pending = std::exchange(pendingError(), GL_NO_ERROR);
    return pending != GL_NO_ERROR ? pending : real();
}
}
#pragma GCC visibility pop
// NOLINTEND(bugprone-macro-parentheses,readability-identifier-naming)
