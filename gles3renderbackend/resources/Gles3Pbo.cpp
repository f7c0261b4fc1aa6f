#include "gles3renderbackend/resources/Gles3Pbo.h"

#include "renderbackend/VelmoraException.h"

namespace {

constexpr char const* kConstructor = "Gles3Pbo::Gles3Pbo(GLenum target, GLenum usage, size_t size)";
constexpr char const* kMapFailed = "could not map PBO range";
constexpr char const* kMapLocation = "void* Gles3Pbo::mapRange(size_t offset, size_t size)";
constexpr char const* kUnmapFailed = "could not unmap PBO range";
// Deliberate: the two cases of unmap carry different locations, the first with a trailing blank; hosts match on them.
constexpr char const* kUnmapInvalidLocation = "void* Gles3Pbo::unmap() ";
constexpr char const* kUnmapUnknownLocation = "void* Gles3Pbo::unmap()";
constexpr char const* kUnknownError = "unknown error";

[[noreturn]] void throwMapFailure(GLenum error) {
    switch (error) {
    case GL_INVALID_VALUE:
        throw VelmoraException(kMapFailed, kMapLocation, "invalid access flags, offset or length");
    case GL_INVALID_OPERATION:
        throw VelmoraException(kMapFailed, kMapLocation,
                               "invalid operation: buffer already mapped or illegal access flags");
    case GL_OUT_OF_MEMORY:
        throw VelmoraException(kMapFailed, kMapLocation, "out of memory");
    default:
        throw VelmoraException(kMapFailed, kMapLocation, kUnknownError, static_cast<std::int32_t>(error));
    }
}

[[noreturn]] void throwUnmapFailure(GLenum error) {
    if (error == GL_INVALID_OPERATION)
        throw VelmoraException(kUnmapFailed, kUnmapInvalidLocation,
                               "invalid operation: buffer not mapped or does not exist");
    throw VelmoraException(kUnmapFailed, kUnmapUnknownLocation, kUnknownError, static_cast<std::int32_t>(error));
}

} // namespace

Gles3Pbo::Gles3Pbo(GLenum target, GLenum usage, size_t size) : target_(target), usage_(usage), size_(size) {
    buffer_ = usable() ? makeBufferName(kConstructor) : noBufferName();
    setData(nullptr, size);
}

bool Gles3Pbo::usable() const {
    return target_ == GL_PIXEL_UNPACK_BUFFER || target_ == GL_PIXEL_PACK_BUFFER;
}

void Gles3Pbo::bind() const {
    if (usable()) glBindBuffer(target_, *buffer_);
}

void Gles3Pbo::unbind() const {
    if (usable()) glBindBuffer(target_, 0);
}

void Gles3Pbo::setData(void const* data, size_t size) {
    if (!usable()) return;
    bind();
    glBufferData(target_, static_cast<GLsizeiptr>(size), data, usage_);
    unbind();
}

void Gles3Pbo::setSubData(void const* data, size_t size, size_t offset) {
    if (!usable()) return;
    bind();
    glBufferSubData(target_, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(size), data);
    unbind();
}

// Deliberate: the arguments do not select the range. Every buffer is mapped whole, and all have the same size.
void* Gles3Pbo::mapRange(size_t /*offset*/, size_t /*size*/) {
    mapped_ = nullptr;
    if (!usable()) return nullptr;
    GLbitfield const access = target_ == GL_PIXEL_PACK_BUFFER
                                  ? GLbitfield{GL_MAP_READ_BIT}
                                  : GLbitfield{GL_MAP_WRITE_BIT} | GLbitfield{GL_MAP_INVALIDATE_BUFFER_BIT};
    bind();
    mapped_ = glMapBufferRange(target_, 0, static_cast<GLsizeiptr>(kMappedBytes), access);
    if (mapped_ == nullptr) throwMapFailure(glGetError());
    unbind();
    return mapped_;
}

void* Gles3Pbo::unmap() {
    if (!usable()) return nullptr;
    bind();
    if (glUnmapBuffer(target_) != GL_TRUE) throwUnmapFailure(glGetError());
    mapped_ = nullptr;
    unbind();
    return nullptr;
}
