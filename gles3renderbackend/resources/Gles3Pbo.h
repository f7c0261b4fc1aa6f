#pragma once

#include "gles3renderbackend/resources/GlName.h"

#include <cstddef>

/// A pixel buffer object. Copies share the GL buffer, the last one deletes it. GL thread only; the mapped memory may
/// be written on any thread.
///
/// With a target other than GL_PIXEL_UNPACK_BUFFER and GL_PIXEL_PACK_BUFFER every operation does nothing.
class Gles3Pbo {
public:
    /// Bytes that mapRange maps, and the size of every buffer of the upload ring.
    static constexpr size_t kMappedBytes = 4194304;

    /// Allocates `size` bytes of uninitialised storage.
    Gles3Pbo(GLenum target, GLenum usage, size_t size);

    /// Binds or unbinds the buffer's target.
    void bind() const;
    void unbind() const;

    /// Replaces the storage. data may be null. Leaves the target unbound.
    void setData(void const* data, size_t size);
    /// Overwrites part of the storage. Leaves the target unbound.
    void setSubData(void const* data, size_t size, size_t offset);

    /// Maps the first kMappedBytes bytes, for writing (an unpack buffer) or reading (a pack buffer), and returns their
    /// address. The arguments do not change the range. Throws VelmoraException with GL's error in words; the buffer
    /// then stays bound and mapped() is null. Returns null without throwing for a target with which it does nothing.
    void* mapRange(size_t offset, size_t size);
    /// Ends the mapping; returns null. Throws VelmoraException if GL refuses; the buffer then stays bound.
    void* unmap();

    size_t size() const { return size_; }
    /// The address of the last mapping, null when there is none.
    void* mapped() const { return mapped_; }
    /// The GL name.
    GLuint buffer() const { return *buffer_; }

private:
    bool usable() const;

    GLenum target_;
    GLenum usage_;
    size_t size_;
    void* mapped_ = nullptr;
    GlName buffer_;
};
