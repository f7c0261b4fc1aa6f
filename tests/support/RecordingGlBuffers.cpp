// Buffer objects of the recording GL. Mapped memory is the buffer's own storage.
#include "tests/support/RecordingGlState.h"

#include <algorithm>

using recording::Enum;
using recording::MapAccess;
using recording::Pointer;
using recording::record;
using recording::state;

namespace {

RecordingGl::Buffer* boundBuffer(GLenum target) {
    auto const found = state().buffers.find(state().boundBuffer(target));
    if (found != state().buffers.end()) return &found->second;
    state().raise(GL_INVALID_OPERATION, "no buffer is bound");
    return nullptr;
}

bool outside(RecordingGl::Buffer const& buffer, GLintptr offset, GLsizeiptr size) {
    auto const end = static_cast<GLsizeiptr>(buffer.bytes.size());
    if (offset >= 0 && size >= 0 && offset <= end && size <= end - offset) return false;
    state().raise(GL_INVALID_VALUE, "reaches out of the buffer");
    return true;
}

} // namespace

void glGenBuffers(GLsizei n, GLuint* buffers) {
    auto const recorded = record("glGenBuffers", n, Pointer{buffers});
    auto const failed = state().fails("glGenBuffers");
    for (GLsizei i = 0; i < n; ++i) {
        buffers[i] = failed ? 0 : state().nextName++;
        if (!failed) state().buffers[buffers[i]] = {};
    }
}

void glDeleteBuffers(GLsizei n, GLuint const* buffers) {
    auto const recorded = record("glDeleteBuffers", n, recording::NameList{n, buffers});
    for (GLsizei i = 0; i < n; ++i) {
        auto const name = buffers[i];
        if (name == 0) continue;
        if (state().buffers.erase(name) == 0) state().raise(GL_NO_ERROR, "not a living buffer");
        for (auto& [target, bound] : state().boundBuffers)
            if (bound == name) bound = 0;
    }
}

GLboolean glIsBuffer(GLuint buffer) {
    auto const recorded = record("glIsBuffer", buffer);
    return state().buffers.count(buffer) != 0 ? GL_TRUE : GL_FALSE;
}

void glBindBuffer(GLenum target, GLuint buffer) {
    auto const recorded = record("glBindBuffer", Enum{target}, buffer);
    if (buffer != 0 && state().buffers.count(buffer) == 0) return state().raise(GL_NO_ERROR, "not a living buffer");
    state().boundBuffers[target] = buffer;
}

void glBufferData(GLenum target, GLsizeiptr size, void const* data, GLenum usage) {
    auto const recorded = record("glBufferData", Enum{target}, size, Pointer{data}, Enum{usage});
    if (state().fails("glBufferData")) return;
    if (size < 0) return state().raise(GL_INVALID_VALUE, "negative size");
    auto* const buffer = boundBuffer(target);
    if (buffer == nullptr) return;
    buffer->usage = usage;
    buffer->mapped = false; // new storage unmaps the old one
    buffer->bytes.assign(static_cast<size_t>(size), 0);
    if (data != nullptr) std::copy_n(static_cast<std::uint8_t const*>(data), size, buffer->bytes.begin());
}

void glBufferSubData(GLenum target, GLintptr offset, GLsizeiptr size, void const* data) {
    auto const recorded = record("glBufferSubData", Enum{target}, offset, size, Pointer{data});
    if (state().fails("glBufferSubData")) return;
    auto* const buffer = boundBuffer(target);
    if (buffer == nullptr || outside(*buffer, offset, size)) return;
    if (buffer->mapped) return state().raise(GL_INVALID_OPERATION, "the buffer is mapped");
    std::copy_n(static_cast<std::uint8_t const*>(data), size, buffer->bytes.begin() + offset);
}

void* glMapBufferRange(GLenum target, GLintptr offset, GLsizeiptr length, GLbitfield access) {
    auto const recorded = record("glMapBufferRange", Enum{target}, offset, length, MapAccess{access});
    if (state().fails("glMapBufferRange")) return nullptr;
    auto* const buffer = boundBuffer(target);
    if (buffer == nullptr || outside(*buffer, offset, length)) return nullptr;
    if (buffer->mapped || (access & (GL_MAP_READ_BIT | GL_MAP_WRITE_BIT)) == 0) {
        state().raise(GL_INVALID_OPERATION,
                      buffer->mapped ? "the buffer is mapped already" : "neither read nor write access");
        return nullptr;
    }
    buffer->mapped = true;
    return buffer->bytes.data() + offset;
}

GLboolean glUnmapBuffer(GLenum target) {
    auto const recorded = record("glUnmapBuffer", Enum{target});
    auto const lost = state().verdict == recording::Verdict::Refused; // GL has lost the contents
    if (state().fails("glUnmapBuffer") && !lost) return GL_FALSE;
    auto* const buffer = boundBuffer(target);
    if (buffer == nullptr) return GL_FALSE;
    if (!buffer->mapped) {
        state().raise(GL_INVALID_OPERATION, "the buffer is not mapped");
        return GL_FALSE;
    }
    buffer->mapped = false;
    return lost ? GL_FALSE : GL_TRUE;
}

void glFlushMappedBufferRange(GLenum target, GLintptr offset, GLsizeiptr length) {
    auto const recorded = record("glFlushMappedBufferRange", Enum{target}, offset, length);
    auto* const buffer = boundBuffer(target);
    if (buffer != nullptr && !buffer->mapped) state().raise(GL_INVALID_OPERATION, "the buffer is not mapped");
}
