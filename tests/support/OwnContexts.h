#pragma once

#include <EGL/egl.h>

/// GL contexts that a test makes and ends, one at a time, in place of the one that the program has; the destructor
/// makes that one current again. GL thread only.
class OwnContexts {
public:
    /// The first of them is there, and current.
    OwnContexts();
    ~OwnContexts();
    OwnContexts(OwnContexts const&) = delete;
    OwnContexts& operator=(OwnContexts const&) = delete;

    /// Another one in place of the one there is, current.
    void anew();
    /// None is there, and none current.
    void destroy();
    /// It is there, but not current; or is current again.
    void setCurrent(bool current) const;
    /// Whether GL offers a way to reset it.
    bool canBeLost() const;
    /// Resets it, so that it is lost: nothing is drawn or answered any more.
    void lose();

private:
    EGLDisplay display_;
    EGLContext programs_;
    EGLSurface programsSurface_;
    EGLSurface surface_ = EGL_NO_SURFACE;
    EGLContext context_ = EGL_NO_CONTEXT;
};
