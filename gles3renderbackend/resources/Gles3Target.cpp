#include "gles3renderbackend/resources/Gles3Target.h"

#include "renderbackend/VelmoraException.h"

#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr char const* kConstructor =
    "Gles3Target::Gles3Target(size_t physicalWidth, size_t physicalHeight, std::vector<size_t> const& logicalSize, "
    "size_t logicalPerPhysical, size_t physicalPerLogical, RenderBackend::ImageFormatType format, "
    "RenderBackend::ImageFiltering filtering)";
constexpr char const* kBindTexture = "void Gles3Target::bindTextureToFrameBuffer() const";
constexpr char const* kClear = "void Gles3Target::clear(float r, float g, float b, float a) const";
// The blank after "Gles3Target::" belongs to the text that hosts match on.
constexpr char const* kGetPixelsBuffer =
    "size_t Gles3Target:: getPixels(void* buffer, size_t n, size_t x, size_t y, size_t width, size_t height) const";
constexpr char const* kGetPixelsVector =
    "void Gles3Target::getPixels(std::vector<GLubyte>& pixels, size_t x, size_t y, size_t width, size_t height) const";

class ScissorTest {
public:
    ScissorTest() { glEnable(GL_SCISSOR_TEST); }
    ScissorTest(ScissorTest const&) = delete;
    ScissorTest& operator=(ScissorTest const&) = delete;
    ~ScissorTest() { glDisable(GL_SCISSOR_TEST); }
};

struct ReadFormat {
    GLenum format;        // requested from glReadPixels
    size_t bytesRead;     // per texel, as GL delivers it
    size_t bytesReturned; // per texel, as the caller gets it
};

struct PreferredRead {
    GLint format = 0;
    GLint type = 0;
};

PreferredRead preferredRead() {
    PreferredRead preferred;
    glGetIntegerv(GL_IMPLEMENTATION_COLOR_READ_FORMAT, &preferred.format);
    glGetIntegerv(GL_IMPLEMENTATION_COLOR_READ_TYPE, &preferred.type);
    return preferred;
}

size_t bytesReturned(RenderBackend::ImageFormatType format, char const* location) {
    switch (format) {
    case RenderBackend::RGB24:
        return 3;
    case RenderBackend::RGBA32:
        return 4;
    case RenderBackend::GRAY8:
        return 1;
    case RenderBackend::UNDEFINED:
        break;
    }
    throw VelmoraException("invalid texture format", location);
}

// Queries GL's preferred read format, so the framebuffer must be bound.
ReadFormat readFormat(RenderBackend::ImageFormatType format) {
    size_t const returned = bytesReturned(format, kGetPixelsBuffer);
    if (format == RenderBackend::RGBA32) return {GL_RGBA, 4, returned};
    PreferredRead const preferred = preferredRead();
    // Deliberate: GL's answer is queried and ignored. A grey target is always read directly, as alpha.
    if (format == RenderBackend::GRAY8) return {GL_ALPHA, 1, returned};
    bool const direct = preferred.format == GL_RGB && preferred.type == GL_UNSIGNED_BYTE;
    return direct ? ReadFormat{GL_RGB, 3, returned} : ReadFormat{GL_RGBA, 4, returned};
}

// One load and one store per texel: each writes one byte too many, which the next store overwrites. The last texel has
// no next store.
void dropAlpha(GLubyte const* rgba, GLubyte* rgb, size_t texels) {
    if (texels == 0) return;
    for (; texels > 1; --texels, rgba += 4, rgb += 3)
        std::memcpy(rgb, rgba, 4);
    std::memcpy(rgb, rgba, 3);
}

} // namespace

Gles3Target::Gles3Target()
    : framebuffer_(defaultFramebufferName()),
      ownSurface_(0),
      logicalSize_({0, 0}),
      logicalPerPhysical_(1),
      physicalPerLogical_(1) {}

Gles3Target::Gles3Target(size_t physicalWidth, size_t physicalHeight, std::vector<size_t> const& logicalSize,
                         size_t logicalPerPhysical, size_t physicalPerLogical, RenderBackend::ImageFormatType format,
                         RenderBackend::ImageFiltering filtering)
    : Gles3Texture({}, {physicalWidth, physicalHeight}, format, filtering),
      ownSurface_(1),
      logicalSize_(logicalSize.empty() ? std::vector<size_t>{physicalWidth, physicalHeight} : logicalSize),
      logicalPerPhysical_(logicalPerPhysical),
      physicalPerLogical_(physicalPerLogical) {
    if (logicalSize_.size() < 2) throw VelmoraException("size vector is too short", kConstructor);
    framebuffer_ = makeFramebufferName(kConstructor);
    glBindFramebuffer(GL_FRAMEBUFFER, *framebuffer_);
    bindTextureToFrameBuffer();
}

Gles3Target::~Gles3Target() = default;

void Gles3Target::bindTextureToFrameBuffer() const {
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture(), 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        throw VelmoraException("Failed to setup render to texture", kBindTexture);
}

void Gles3Target::repack(std::vector<size_t> logicalSize, size_t logicalPerPhysical,
                         size_t physicalPerLogical) noexcept {
    logicalSize_ = std::move(logicalSize);
    logicalPerPhysical_ = logicalPerPhysical;
    physicalPerLogical_ = physicalPerLogical;
}

size_t Gles3Target::texelWidth(size_t logicalWidth) const {
    return (logicalWidth * physicalPerLogical_ + logicalPerPhysical_ - 1) / logicalPerPhysical_;
}

size_t Gles3Target::texelColumn(size_t logicalX) const {
    return logicalX * physicalPerLogical_ / logicalPerPhysical_;
}

// The host's own surface has no logical height: its rows count texels already.
size_t Gles3Target::texelRows(size_t logicalRows) const {
    return logicalSize_[1] == 0 ? logicalRows : logicalRows * height() / logicalSize_[1];
}

void Gles3Target::clear(float r, float g, float b, float a) const {
    // Zero bytes are samples of 0 in any packing; other colours have no meaning there.
    bool const packed = physicalPerLogical_ / logicalPerPhysical_ != 1;
    bool const black = r == 0.0F && g == 0.0F && b == 0.0F;
    if (packed && !black) throw VelmoraException("Cannot clear buffer", kClear);
    glBindFramebuffer(GL_FRAMEBUFFER, *framebuffer_);
    glClearColor(r, g, b, a);
    glClear(GL_COLOR_BUFFER_BIT);
}

void Gles3Target::clearRect(float r, float g, float b, float a, size_t x, size_t y, size_t width, size_t height) const {
    ScissorTest const scissorTest;
    glScissor(static_cast<GLint>(texelColumn(x)), static_cast<GLint>(texelRows(y)),
              static_cast<GLsizei>(texelWidth(width)), static_cast<GLsizei>(texelRows(height)));
    clear(r, g, b, a);
}

size_t Gles3Target::getPixels(void* buffer, size_t n, size_t x, size_t y, size_t width, size_t height) const {
    size_t const texels = texelWidth(width);
    // Deliberate: 3 bytes per texel for every format. Hosts size their buffers by it; it must not be tightened.
    size_t const required = height * texels * 3;
    if (n < required)
        throw VelmoraException("buffer too small provided " + std::to_string(n) +
                                   " required : " + std::to_string(required),
                               kGetPixelsBuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, *framebuffer_);
    ReadFormat const read = readFormat(format());
    bool const converts = read.bytesRead != read.bytesReturned;
    // No vector, which would write zeros first.
    std::unique_ptr<GLubyte[]> const rgba(converts ? new GLubyte[height * texels * read.bytesRead] : nullptr);

    bool const alignedRows = texels % 4 == 0 && read.format != GL_RGB;
    glPixelStorei(GL_PACK_ALIGNMENT, alignedRows ? 4 : 1);
    glReadPixels(static_cast<GLint>(x), static_cast<GLint>(y), static_cast<GLsizei>(texels),
                 static_cast<GLsizei>(height), read.format, GL_UNSIGNED_BYTE, converts ? rgba.get() : buffer);
    if (converts) dropAlpha(rgba.get(), static_cast<GLubyte*>(buffer), height * texels);
    return height * read.bytesReturned * texels;
}

void Gles3Target::getPixels(std::vector<GLubyte>& pixels, size_t x, size_t y, size_t width, size_t height) const {
    size_t const needed = texelWidth(width) * bytesReturned(format(), kGetPixelsVector) * height;
    if (pixels.size() < needed) pixels.resize(needed);
    pixels.resize(getPixels(pixels.data(), pixels.capacity(), x, y, width, height));
}
