#include "tests/support/OwnContexts.h"

#include "gles3renderbackend/Gl.h"

#include <EGL/eglext.h>
#include <GLES2/gl2ext.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr EGLint kSurfaceTexels = 16; // as the programs' own

bool hasExtension(char const* list, std::string const& name) {
    return list != nullptr && (" " + std::string(list) + " ").find(" " + name + " ") != std::string::npos;
}

EGLConfig configOf(EGLDisplay display, EGLContext context) {
    EGLint id = 0;
    eglQueryContext(display, context, EGL_CONFIG_ID, &id);
    std::vector<EGLint> const wanted{EGL_CONFIG_ID, id, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    eglChooseConfig(display, wanted.data(), &config, 1, &count);
    return count == 0 ? nullptr : config;
}

} // namespace

OwnContexts::OwnContexts()
    : display_(eglGetCurrentDisplay()),
      programs_(eglGetCurrentContext()),
      programsSurface_(eglGetCurrentSurface(EGL_DRAW)) {
    anew();
}

OwnContexts::~OwnContexts() {
    destroy();
    eglMakeCurrent(display_, programsSurface_, programsSurface_, programs_);
}

void OwnContexts::anew() {
    destroy();
    auto* const config = configOf(display_, programs_);
    std::vector<EGLint> const size{EGL_WIDTH, kSurfaceTexels, EGL_HEIGHT, kSurfaceTexels, EGL_NONE};
    surface_ = eglCreatePbufferSurface(display_, config, size.data());
    std::vector<EGLint> attributes{EGL_CONTEXT_CLIENT_VERSION, 3};
    // Only a context that asks for it is lost with a reset.
    if (hasExtension(eglQueryString(display_, EGL_EXTENSIONS), "EGL_EXT_create_context_robustness"))
        attributes.insert(attributes.end(),
                          {EGL_CONTEXT_OPENGL_RESET_NOTIFICATION_STRATEGY_EXT, EGL_LOSE_CONTEXT_ON_RESET_EXT});
    attributes.push_back(EGL_NONE);
    context_ = eglCreateContext(display_, config, EGL_NO_CONTEXT, attributes.data());
    if (surface_ == EGL_NO_SURFACE || context_ == EGL_NO_CONTEXT) throw std::runtime_error("no further GL context");
    setCurrent(true);
}

void OwnContexts::setCurrent(bool current) const {
    auto* const surface = current ? surface_ : EGL_NO_SURFACE;
    if (eglMakeCurrent(display_, surface, surface, current ? context_ : EGL_NO_CONTEXT) == EGL_FALSE)
        throw std::runtime_error("eglMakeCurrent failed");
}

void OwnContexts::destroy() {
    if (context_ == EGL_NO_CONTEXT) return;
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroySurface(display_, surface_);
    eglDestroyContext(display_, context_);
    context_ = EGL_NO_CONTEXT;
}

// ANGLE has it, for tests like these.
bool OwnContexts::canBeLost() const {
    return hasExtension(reinterpret_cast<char const*>(glGetString(GL_EXTENSIONS)), "GL_CHROMIUM_lose_context");
}

void OwnContexts::lose() {
    auto const reset = reinterpret_cast<void(GL_APIENTRY*)(GLenum, GLenum)>(eglGetProcAddress("glLoseContextCHROMIUM"));
    reset(GL_GUILTY_CONTEXT_RESET_EXT, GL_INNOCENT_CONTEXT_RESET_EXT);
}
