#pragma once

#include "renderbackend/Export.h"

#include <cstddef>

/// The host's drawing surface: the size of target 0. Implemented by the host, which keeps it alive as long as an
/// instance made with it. The backend queries the size whenever it needs it, so a resized window takes effect at once;
/// a minimised one may report 0.
class VELMORA_EXPORT RenderContext {
public:
    RenderContext() = default;
    RenderContext(RenderContext const&) = default;
    RenderContext& operator=(RenderContext const&) = default;
    virtual ~RenderContext();

    /// Width of the surface in physical texels.
    virtual size_t width() const = 0;
    /// Height of the surface in physical texels.
    virtual size_t height() const = 0;
};
