// Interposes between a host's tests and the libraries of GL and EGL. The backend is a shared library there, whose calls
// the linker cannot wrap: the dynamic linker finds these functions first.
#pragma GCC visibility push(default)
#include "gles3renderbackend/Gl.h"

#include <EGL/egl.h>
#pragma GCC visibility pop

#include "tests/support/ContextFindings.h"
#include "tests/support/GlErrors.h"

#include <dlfcn.h>

namespace {

template <class Function>
Function* next(char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// LivingGlObjects.cpp counts in __wrap_glX and calls __real_glX.
// NOLINTBEGIN(bugprone-reserved-identifier,bugprone-macro-parentheses,readability-identifier-naming)
#define VELMORA_NAMES(Function, Names)                                                                                 \
    void __wrap_gl##Function(GLsizei n, Names names);                                                                  \
    void __real_gl##Function(GLsizei n, Names names) {                                                                 \
        static auto* const real = next<void(GLsizei, Names)>("gl" #Function);                                          \
        real(n, names);                                                                                                \
    }                                                                                                                  \
    void gl##Function(GLsizei n, Names names) {                                                                        \
        __wrap_gl##Function(n, names);                                                                                 \
    }

#define VELMORA_ONE(Result, Function, Argument)                                                                        \
    Result __wrap_gl##Function(Argument argument);                                                                     \
    Result __real_gl##Function(Argument argument) {                                                                    \
        static auto* const real = next<Result(Argument)>("gl" #Function);                                              \
        return real(argument);                                                                                         \
    }                                                                                                                  \
    Result gl##Function(Argument argument) {                                                                           \
        return __wrap_gl##Function(argument);                                                                          \
    }

#define VELMORA_KIND(Kind)                                                                                             \
    VELMORA_NAMES(Gen##Kind, GLuint*)                                                                                  \
    VELMORA_NAMES(Delete##Kind, GLuint const*)

#pragma GCC visibility push(default)
extern "C" {

VELMORA_KIND(Textures)
VELMORA_KIND(Buffers)
VELMORA_KIND(Framebuffers)
VELMORA_KIND(Renderbuffers)
VELMORA_KIND(Samplers)
VELMORA_KIND(VertexArrays)
VELMORA_KIND(Queries)
VELMORA_ONE(GLuint, CreateShader, GLenum)
VELMORA_ONE(void, DeleteShader, GLuint)
VELMORA_ONE(void, DeleteProgram, GLuint)
VELMORA_ONE(void, DeleteSync, GLsync)

GLuint __wrap_glCreateProgram();
GLuint __real_glCreateProgram() {
    static auto* const real = next<GLuint()>("glCreateProgram");
    return real();
}
GLuint glCreateProgram() {
    return __wrap_glCreateProgram();
}

GLsync __wrap_glFenceSync(GLenum condition, GLbitfield flags);
GLsync __real_glFenceSync(GLenum condition, GLbitfield flags) {
    static auto* const real = next<GLsync(GLenum, GLbitfield)>("glFenceSync");
    return real(condition, flags);
}
GLsync glFenceSync(GLenum condition, GLbitfield flags) {
    return __wrap_glFenceSync(condition, flags);
}

EGLBoolean eglMakeCurrent(EGLDisplay display, EGLSurface draw, EGLSurface read, EGLContext context) {
    static auto* const real = next<EGLBoolean(EGLDisplay, EGLSurface, EGLSurface, EGLContext)>("eglMakeCurrent");
    context_findings::look();
    EGLBoolean const done = real(display, draw, read, context);
    if (done == EGL_TRUE && context != EGL_NO_CONTEXT) gl_errors::installDebugCallback();
    return done;
}
}
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier,bugprone-macro-parentheses,readability-identifier-naming)
