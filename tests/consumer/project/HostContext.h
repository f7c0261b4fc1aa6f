#pragma once

#include "renderbackend/RenderContext.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstdio>
#include <cstdlib>

/// CTest's exit code for a skipped test.
constexpr int kSkipped = 77;

/// An OpenGL ES 3 context without a surface, current on this thread while the object lives.
class HostGl {
public:
    HostGl() : display_(eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr)) {
        if (eglInitialize(display_, nullptr, nullptr) == EGL_FALSE) return;
        EGLint const wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_ES3_BIT, EGL_SURFACE_TYPE, 0, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        eglChooseConfig(display_, wanted, &config, 1, &count);
        eglBindAPI(EGL_OPENGL_ES_API);
        EGLint const version[] = {EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};
        context_ = eglCreateContext(display_, config, EGL_NO_CONTEXT, version);
        current_ = eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_) == EGL_TRUE;
    }

    HostGl(HostGl const&) = delete;
    HostGl& operator=(HostGl const&) = delete;

    /// The display is not terminated: that would unload the driver, whose allocations would then look like leaks.
    ~HostGl() {
        eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (context_ != EGL_NO_CONTEXT) eglDestroyContext(display_, context_);
    }

    bool current() const { return current_; }

private:
    EGLDisplay display_;
    EGLContext context_ = EGL_NO_CONTEXT;
    bool current_ = false;
};

/// A host's window, 640 by 480.
class HostSurface : public RenderContext {
public:
    size_t width() const override { return 640; }
    size_t height() const override { return 480; }
};

/// Exit code of a program that found no context: a failure if one is required.
inline int withoutContext() {
    char const* const required = std::getenv("VELMORA_REQUIRE_GL");
    bool const fatal = required != nullptr && *required == '1';
    std::fprintf(stderr, "%s: no OpenGL ES 3 context without a surface\n", fatal ? "failed" : "skipped");
    return fatal ? EXIT_FAILURE : kSkipped;
}

/// Counts the checks that fail.
class Checks {
public:
    void expect(bool holds, char const* what) {
        if (holds) return;
        std::fprintf(stderr, "failed: %s\n", what);
        failed_ = true;
    }

    int exitCode() const { return failed_ ? EXIT_FAILURE : EXIT_SUCCESS; }

private:
    bool failed_ = false;
};
