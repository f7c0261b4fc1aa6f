// Textures, pixel transfer and framebuffers of the recording GL.
#include "tests/support/RecordingGlState.h"

#include <algorithm>
#include <iterator>

using recording::Enum;
using recording::Pointer;
using recording::record;
using recording::state;

namespace {

size_t bytesPerPixel(GLenum format, GLenum type) {
    if (type == GL_UNSIGNED_SHORT_5_6_5) return 2;
    if (type != GL_UNSIGNED_BYTE) return 0;
    switch (format) {
    case GL_RGBA:
        return 4;
    case GL_RGB:
        return 3;
    case GL_RG:
    case GL_LUMINANCE_ALPHA:
        return 2;
    case GL_RED:
    case GL_ALPHA:
    case GL_LUMINANCE:
        return 1;
    default:
        return 0;
    }
}

// The layout of a rectangle's rows in memory, from the pixel store state of one direction.
struct Layout {
    size_t rowBytes;    // of the rectangle
    size_t strideBytes; // stride
    size_t skipBytes;   // before the first row
    size_t size;        // from the pointer to the end of the last row

    size_t row(size_t index) const { return skipBytes + index * strideBytes; }
};

Layout layout(size_t width, size_t height, size_t pixelBytes, std::vector<GLenum> const& names) {
    auto const setting = [&](size_t index) { return static_cast<size_t>(state().pixelStore.at(names[index])); };
    auto const alignment = setting(0);
    auto const rowLength = setting(1) == 0 ? width : setting(1);
    auto const stride = (rowLength * pixelBytes + alignment - 1) / alignment * alignment;
    auto const skip = setting(2) * pixelBytes + setting(3) * stride;
    auto const size = width == 0 || height == 0 ? 0 : skip + (height - 1) * stride + width * pixelBytes;
    return {width * pixelBytes, stride, skip, size};
}

Layout unpackLayout(size_t width, size_t height, size_t pixelBytes) {
    return layout(width, height, pixelBytes,
                  {GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_PIXELS, GL_UNPACK_SKIP_ROWS});
}

Layout packLayout(size_t width, size_t height, size_t pixelBytes) {
    return layout(width, height, pixelBytes,
                  {GL_PACK_ALIGNMENT, GL_PACK_ROW_LENGTH, GL_PACK_SKIP_PIXELS, GL_PACK_SKIP_ROWS});
}

bool offsetInto(GLenum target) {
    return state().boundBuffer(target) != 0;
}

RecordingGl::Texture* boundTexture() {
    auto const found = state().textures.find(state().boundTexture());
    if (found != state().textures.end()) return &found->second;
    state().raise(GL_INVALID_OPERATION, "no texture of ours is bound");
    return nullptr;
}

bool negative(GLsizei width, GLsizei height) {
    if (width >= 0 && height >= 0) return false;
    state().raise(GL_INVALID_VALUE, "negative size");
    return true;
}

GLuint& framebufferBinding(GLenum target) {
    return target == GL_READ_FRAMEBUFFER ? state().readFramebuffer : state().drawFramebuffer;
}

} // namespace

std::uint8_t* recording::pixelMemory(GLenum target, void const* pointer, size_t size) {
    auto const found = state().buffers.find(state().boundBuffer(target));
    if (found == state().buffers.end()) return static_cast<std::uint8_t*>(const_cast<void*>(pointer));
    auto& buffer = found->second;
    auto const offset = reinterpret_cast<std::uintptr_t>(pointer);
    if (buffer.mapped) {
        state().raise(GL_INVALID_OPERATION, "the bound buffer is mapped");
        return nullptr;
    }
    if (offset > buffer.bytes.size() || size > buffer.bytes.size() - offset) {
        state().raise(GL_INVALID_OPERATION, "reaches behind the end of the bound buffer");
        return nullptr;
    }
    return buffer.bytes.data() + offset;
}

void glGenTextures(GLsizei n, GLuint* textures) {
    auto const recorded = record("glGenTextures", n, Pointer{textures});
    auto const failed = state().fails("glGenTextures");
    for (GLsizei i = 0; i < n; ++i) {
        textures[i] = failed ? 0 : state().nextName++;
        if (!failed) state().textures[textures[i]] = {};
    }
}

void glDeleteTextures(GLsizei n, GLuint const* textures) {
    auto const recorded = record("glDeleteTextures", n, recording::NameList{n, textures});
    for (GLsizei i = 0; i < n; ++i) {
        auto const name = textures[i];
        if (name == 0) continue;
        if (state().textures.erase(name) == 0) state().raise(GL_NO_ERROR, "not a living texture");
        for (auto& [unit, bound] : state().boundTextures)
            if (bound == name) bound = 0;
    }
}

GLboolean glIsTexture(GLuint texture) {
    auto const recorded = record("glIsTexture", texture);
    return state().textures.count(texture) != 0 ? GL_TRUE : GL_FALSE;
}

void glActiveTexture(GLenum unit) {
    auto const recorded = record("glActiveTexture", Enum{unit});
    auto const units = static_cast<GLuint>(state().integers.at(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS).front());
    if (unit < GL_TEXTURE0 || unit - GL_TEXTURE0 >= units)
        return state().raise(GL_INVALID_ENUM, "no such texture unit");
    state().activeUnit = unit - GL_TEXTURE0;
}

void glBindTexture(GLenum target, GLuint texture) {
    auto const recorded = record("glBindTexture", Enum{target}, texture);
    if (target != GL_TEXTURE_2D) return state().raise(GL_INVALID_ENUM, "only GL_TEXTURE_2D is recorded");
    if (texture != 0 && state().textures.count(texture) == 0) return state().raise(GL_NO_ERROR, "not a living texture");
    state().boundTextures[state().activeUnit] = texture;
}

void glBindSampler(GLuint unit, GLuint sampler) {
    auto const recorded = record("glBindSampler", unit, sampler);
    state().boundSamplers[unit] = sampler;
}

void glTexParameteri(GLenum target, GLenum name, GLint value) {
    auto const recorded = record("glTexParameteri", Enum{target}, Enum{name}, Enum{static_cast<GLenum>(value)});
    if (auto* const texture = boundTexture()) texture->parameters[name] = value;
}

void glGenerateMipmap(GLenum target) {
    auto const recorded = record("glGenerateMipmap", Enum{target});
    if (state().fails("glGenerateMipmap")) return;
    auto* const texture = boundTexture();
    if (texture == nullptr) return;
    if (texture->levels.count(0) == 0) return state().raise(GL_INVALID_OPERATION, "the texture has no image");
    texture->mipmapsGenerated = true;
}

void glPixelStorei(GLenum name, GLint value) {
    auto const recorded = record("glPixelStorei", Enum{name}, value);
    if (state().pixelStore.count(name) == 0) return state().raise(GL_INVALID_ENUM, "no such setting");
    auto const alignment = name == GL_PACK_ALIGNMENT || name == GL_UNPACK_ALIGNMENT;
    auto const allowed = alignment ? value == 1 || value == 2 || value == 4 || value == 8 : value >= 0;
    if (!allowed) return state().raise(GL_INVALID_VALUE, "no such value");
    state().pixelStore[name] = value;
}

void glTexImage2D(GLenum target, GLint level, GLint internalFormat, GLsizei width, GLsizei height, GLint border,
                  GLenum format, GLenum type, void const* pixels) {
    auto const recorded =
        record("glTexImage2D", Enum{target}, level, Enum{static_cast<GLenum>(internalFormat)}, width, height, border,
               Enum{format}, Enum{type}, Pointer{pixels, offsetInto(GL_PIXEL_UNPACK_BUFFER)});
    if (state().fails("glTexImage2D")) return;
    auto const pixelBytes = bytesPerPixel(format, type);
    if (pixelBytes == 0) return state().raise(GL_INVALID_ENUM, "no such format and type");
    if (negative(width, height)) return;
    auto const limit = state().integers.at(GL_MAX_TEXTURE_SIZE).front();
    if (width > limit || height > limit || border != 0)
        return state().raise(GL_INVALID_VALUE, "larger than GL_MAX_TEXTURE_SIZE");
    auto* const texture = boundTexture();
    if (texture == nullptr) return;

    RecordingGl::Image image{
        static_cast<size_t>(width), static_cast<size_t>(height), static_cast<GLenum>(internalFormat), format, type, {}};
    image.pixels.resize(image.width * image.height * pixelBytes);
    if (pixels != nullptr || offsetInto(GL_PIXEL_UNPACK_BUFFER)) {
        auto const rows = unpackLayout(image.width, image.height, pixelBytes);
        auto const* const memory = recording::pixelMemory(GL_PIXEL_UNPACK_BUFFER, pixels, rows.size);
        if (memory == nullptr) return;
        for (size_t y = 0; y < image.height; ++y)
            std::copy_n(memory + rows.row(y), rows.rowBytes, image.pixels.data() + y * rows.rowBytes);
    }
    texture->levels[level] = image;
}

void glTexSubImage2D(GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height, GLenum format,
                     GLenum type, void const* pixels) {
    auto const recorded = record("glTexSubImage2D", Enum{target}, level, x, y, width, height, Enum{format}, Enum{type},
                                 Pointer{pixels, offsetInto(GL_PIXEL_UNPACK_BUFFER)});
    if (state().fails("glTexSubImage2D")) return;
    auto* const texture = boundTexture();
    if (texture == nullptr) return;
    if (texture->levels.count(level) == 0)
        return state().raise(GL_INVALID_OPERATION, "the texture has no image of this level");
    auto& image = texture->levels[level];
    if (format != image.format || type != image.type)
        return state().raise(GL_INVALID_OPERATION, "another format than the texture's");
    if (negative(width, height)) return;
    if (x < 0 || y < 0 || static_cast<size_t>(x) + static_cast<size_t>(width) > image.width ||
        static_cast<size_t>(y) + static_cast<size_t>(height) > image.height)
        return state().raise(GL_INVALID_VALUE, "reaches out of the texture");

    auto const pixelBytes = bytesPerPixel(format, type);
    auto const rows = unpackLayout(static_cast<size_t>(width), static_cast<size_t>(height), pixelBytes);
    auto const* const memory = recording::pixelMemory(GL_PIXEL_UNPACK_BUFFER, pixels, rows.size);
    if (memory == nullptr) return;
    for (size_t row = 0; row < static_cast<size_t>(height); ++row) {
        auto const target0 = ((static_cast<size_t>(y) + row) * image.width + static_cast<size_t>(x)) * pixelBytes;
        std::copy_n(memory + rows.row(row), rows.rowBytes, image.pixels.data() + target0);
    }
}

void glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels) {
    auto const recorded = record("glReadPixels", x, y, width, height, Enum{format}, Enum{type},
                                 Pointer{pixels, offsetInto(GL_PIXEL_PACK_BUFFER)});
    if (state().fails("glReadPixels")) return;
    auto const own = format == GL_RGBA && type == GL_UNSIGNED_BYTE;
    auto const offered =
        static_cast<GLint>(format) == state().integers.at(GL_IMPLEMENTATION_COLOR_READ_FORMAT).front() &&
        static_cast<GLint>(type) == state().integers.at(GL_IMPLEMENTATION_COLOR_READ_TYPE).front();
    if (!own && !offered)
        return state().raise(GL_INVALID_OPERATION, "neither GL_RGBA bytes nor the implementation's own format");
    if (negative(width, height)) return;

    auto const pixelBytes = bytesPerPixel(format, type);
    auto const rows = packLayout(static_cast<size_t>(width), static_cast<size_t>(height), pixelBytes);
    auto* const memory = recording::pixelMemory(GL_PIXEL_PACK_BUFFER, pixels, rows.size);
    if (memory == nullptr) return;
    if (state().digests) {
        for (size_t row = 0; row < static_cast<size_t>(height); ++row)
            for (size_t column = 0; column < static_cast<size_t>(width); ++column) {
                auto const texel =
                    recording::digestedTexel(static_cast<size_t>(x) + column, static_cast<size_t>(y) + row);
                std::copy_n(texel.begin(), pixelBytes, memory + rows.row(row) + column * pixelBytes);
            }
        return;
    }
    auto const& scripted = state().readPixels;
    for (size_t row = 0; row < static_cast<size_t>(height); ++row) {
        auto const first = std::min(row * rows.rowBytes, scripted.size());
        auto const there = std::min(rows.rowBytes, scripted.size() - first);
        auto const rest = std::copy_n(scripted.data() + first, there, memory + rows.row(row));
        std::fill_n(rest, rows.rowBytes - there, std::uint8_t{0});
    }
}

void glGenFramebuffers(GLsizei n, GLuint* framebuffers) {
    auto const recorded = record("glGenFramebuffers", n, Pointer{framebuffers});
    auto const failed = state().fails("glGenFramebuffers");
    for (GLsizei i = 0; i < n; ++i) {
        framebuffers[i] = failed ? 0 : state().nextName++;
        if (!failed) state().framebuffers[framebuffers[i]] = {};
    }
}

void glDeleteFramebuffers(GLsizei n, GLuint const* framebuffers) {
    auto const recorded = record("glDeleteFramebuffers", n, recording::NameList{n, framebuffers});
    for (GLsizei i = 0; i < n; ++i) {
        auto const name = framebuffers[i];
        if (name == 0) continue;
        if (state().framebuffers.erase(name) == 0) state().raise(GL_NO_ERROR, "not a living framebuffer");
        if (state().readFramebuffer == name) state().readFramebuffer = 0;
        if (state().drawFramebuffer == name) state().drawFramebuffer = 0;
    }
}

GLboolean glIsFramebuffer(GLuint framebuffer) {
    auto const recorded = record("glIsFramebuffer", framebuffer);
    return state().framebuffers.count(framebuffer) != 0 ? GL_TRUE : GL_FALSE;
}

void glBindFramebuffer(GLenum target, GLuint framebuffer) {
    auto const recorded = record("glBindFramebuffer", Enum{target}, framebuffer);
    if (framebuffer != 0 && state().framebuffers.count(framebuffer) == 0)
        return state().raise(GL_NO_ERROR, "not a living framebuffer");
    if (target != GL_READ_FRAMEBUFFER) state().drawFramebuffer = framebuffer;
    if (target != GL_DRAW_FRAMEBUFFER) state().readFramebuffer = framebuffer;
}

void glFramebufferTexture2D(GLenum target, GLenum attachment, GLenum textureTarget, GLuint texture, GLint level) {
    auto const recorded =
        record("glFramebufferTexture2D", Enum{target}, Enum{attachment}, Enum{textureTarget}, texture, level);
    if (state().fails("glFramebufferTexture2D")) return;
    if (texture != 0 && state().textures.count(texture) == 0)
        return state().raise(GL_INVALID_OPERATION, "not a living texture");
    auto const name = framebufferBinding(target);
    if (name == 0) return state().raise(GL_INVALID_OPERATION, "framebuffer 0 takes no texture");
    if (attachment != GL_COLOR_ATTACHMENT0) return;
    state().framebuffers.at(name) = {texture, level};
}

GLenum glCheckFramebufferStatus(GLenum target) {
    auto const recorded = record("glCheckFramebufferStatus", Enum{target});
    if (state().fails("glCheckFramebufferStatus")) return GL_FRAMEBUFFER_UNSUPPORTED;
    auto const name = framebufferBinding(target);
    if (name != 0 && state().framebuffers.at(name).colorTexture == 0)
        return GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT;
    return state().framebufferStatus;
}

void glBlitFramebuffer(GLint x0, GLint y0, GLint x1, GLint y1, GLint toX0, GLint toY0, GLint toX1, GLint toY1,
                       GLbitfield mask, GLenum filter) {
    auto const recorded =
        record("glBlitFramebuffer", x0, y0, x1, y1, toX0, toY0, toX1, toY1, recording::ClearMask{mask}, Enum{filter});
}
