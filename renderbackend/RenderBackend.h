#pragma once

#include "renderbackend/Export.h"

#include <cstddef>
#include <cstdint>
#include <memory>

class RenderBackendInstance;
class RenderContext;

/// A factory of working instances, and the enumerations that every layer shares.
class VELMORA_EXPORT RenderBackend {
public:
    /// Texel layout of a texture or target.
    enum ImageFormatType : std::uint32_t {
        RGB24 = 0,     ///< three bytes per texel: red, green, blue
        RGBA32 = 1,    ///< four bytes per texel; also the carrier of packed 16-bit samples
        GRAY8 = 2,     ///< one byte per texel, a luminance texture: cannot be rendered to on OpenGL ES 3
        UNDEFINED = 3, ///< the format that the backend was constructed with
    };

    /// The filtering with which a texture is sampled.
    enum ImageFiltering : std::uint32_t {
        NEAREST = 0,
        LINEAR = 1,
        TRILINEAR = 2, ///< both sides must be powers of two; needs mipmaps, which no operation of an instance makes
    };

    /// The meaning of a concurrent staging buffer's id. Stored, without effect.
    enum BufferType : std::uint32_t {
        TARGET = 0,
        TILE = 1,
    };

    RenderBackend() = default;
    /// Copies and moves take the instance counter along.
    RenderBackend(RenderBackend const&) = default;
    RenderBackend(RenderBackend&&) = default;
    RenderBackend& operator=(RenderBackend const&) = default;
    RenderBackend& operator=(RenderBackend&&) = default;
    virtual ~RenderBackend();

    /// GL thread, with the host's context current. The context object must outlive the instance.
    virtual std::shared_ptr<RenderBackendInstance> createInstance(RenderContext const& context) = 0;

protected:
    std::uint64_t nextInstanceId_ = 0; ///< instances created so far: the id of the next one
};
