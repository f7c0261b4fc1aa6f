#pragma once

#include "gles3renderbackend/resources/GlName.h"

#include <cstddef>

/// A vertex or index buffer. Copies share the GL buffer, the last one deletes it. GL thread only. Every operation binds
/// the buffer, GL_ELEMENT_ARRAY_BUFFER to its own target and anything else to GL_ARRAY_BUFFER, and leaves it bound.
class Gles3Buffer {
public:
    explicit Gles3Buffer(GLenum target, GLenum usage = GL_STATIC_DRAW);

    void bind() const;
    void unbind() const;
    /// Replaces the storage.
    void setData(void const* data, size_t size);
    /// Overwrites part of the storage.
    void setSubData(void const* data, size_t size, size_t offset);

    /// The GL name.
    GLuint buffer() const { return *buffer_; }

private:
    GLenum bindingPoint() const;

    GLenum target_;
    GLenum usage_;
    GlName buffer_;
};
