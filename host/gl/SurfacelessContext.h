#pragma once

#include "host/gl/EglContext.h"
#include "renderbackend/RenderContext.h"

/// An OpenGL ES 3 context without a window, as the backend's RenderContext. GL thread only: the thread that made it.
class SurfacelessContext final : public RenderContext {
public:
    /// Makes the context current. Throws HostError (no GL context).
    SurfacelessContext();
    ~SurfacelessContext() override;

    SurfacelessContext(SurfacelessContext const&) = delete;
    SurfacelessContext& operator=(SurfacelessContext const&) = delete;

    size_t width() const override;
    size_t height() const override;

private:
    EglContext egl_;
};
