#include "gles3renderbackend/resources/Gles3Buffer.h"

Gles3Buffer::Gles3Buffer(GLenum target, GLenum usage)
    : target_(target),
      usage_(usage),
      buffer_(makeBufferName("Gles3Buffer::Gles3Buffer(GLenum target, GLenum usage)")) {}

GLenum Gles3Buffer::bindingPoint() const {
    return target_ == GL_ELEMENT_ARRAY_BUFFER ? GL_ELEMENT_ARRAY_BUFFER : GL_ARRAY_BUFFER;
}

void Gles3Buffer::bind() const {
    glBindBuffer(bindingPoint(), *buffer_);
}

void Gles3Buffer::unbind() const {
    glBindBuffer(bindingPoint(), 0);
}

void Gles3Buffer::setData(void const* data, size_t size) {
    bind();
    glBufferData(bindingPoint(), static_cast<GLsizeiptr>(size), data, usage_);
}

void Gles3Buffer::setSubData(void const* data, size_t size, size_t offset) {
    bind();
    glBufferSubData(bindingPoint(), static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(size), data);
}
