#pragma once

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <array>
#include <stdexcept>
#include <string>

/// An OpenGL ES 3 context without a window, current on this thread while the object lives: the examples' substitute for
/// a host's own. The backend works with any current context.
class GlContext {
public:
    /// Throws std::runtime_error.
    GlContext() {
        if (eglBindAPI(EGL_OPENGL_ES_API) == EGL_FALSE) throw std::runtime_error("no OpenGL ES here");
        std::array<EGLint, 5> const wanted{EGL_RENDERABLE_TYPE, EGL_OPENGL_ES3_BIT, EGL_SURFACE_TYPE, 0, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        eglChooseConfig(display_, wanted.data(), &config, 1, &count);
        std::array<EGLint, 3> const version{EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};
        if (count > 0) context_ = eglCreateContext(display_, config, EGL_NO_CONTEXT, version.data());
        if (eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_) == EGL_FALSE || count == 0)
            throw std::runtime_error("no OpenGL ES 3 context without a surface");
    }
    GlContext(GlContext const&) = delete;
    GlContext& operator=(GlContext const&) = delete;

    /// The display is not terminated: other parts of the process may use it.
    ~GlContext() {
        eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(display_, context_);
    }

private:
    static bool clientHas(std::string const& extension) {
        char const* const list = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
        return list != nullptr && (" " + std::string(list) + " ").find(" " + extension + " ") != std::string::npos;
    }

    // The constants are in ANGLE's own header, which other implementations do not install.
    static EGLDisplay angleDisplay() {
        constexpr EGLenum kPlatformAngle = 0x3202;
        // Platform type Vulkan, device SwiftShader.
        constexpr std::array<EGLAttrib, 5> kAttributes{0x3203, 0x3450, 0x3209, 0x3487, EGL_NONE};
        return eglGetPlatformDisplay(kPlatformAngle, nullptr, kAttributes.data());
    }

    static EGLDisplay displayWithoutWindows() {
        if (clientHas("EGL_ANGLE_platform_angle")) return angleDisplay();
        if (clientHas("EGL_MESA_platform_surfaceless"))
            return eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
        return eglGetDisplay(EGL_DEFAULT_DISPLAY);
    }

    static EGLDisplay initialised() {
        auto* const display = displayWithoutWindows();
        if (eglInitialize(display, nullptr, nullptr) == EGL_FALSE) throw std::runtime_error("EGL does not start");
        return display;
    }

    EGLDisplay display_ = initialised();
    EGLContext context_ = EGL_NO_CONTEXT;
};
