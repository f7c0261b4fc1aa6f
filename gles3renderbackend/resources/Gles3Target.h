#pragma once

#include "gles3renderbackend/resources/Gles3Texture.h"

#include <cstddef>
#include <vector>

/// A texture that can be rendered into: the colour attachment of a framebuffer of its own. Copies share both; the last
/// one deletes them. GL thread only; docs/GL_STATE.md lists the state that clearing and reading expect.
///
/// The host counts in logical pixels, GL in texels. Along x several logical pixels may share a texel, or one may take
/// several texels:
///
///     texels = ceil(logical * physicalPerLogical / logicalPerPhysical)
///
/// Rows convert by physical height / logical height. Both ratio numbers are at least 1.
class Gles3Target : public Gles3Texture {
public:
    /// The host's own surface: framebuffer 0 of the context, an empty texture, ratios 1, logical size 0 by 0.
    Gles3Target();

    /// An empty logicalSize means the physical size. Leaves the new framebuffer bound. Throws "Failed to setup render
    /// to texture" if GL cannot render to the format, which holds for every GRAY8 texture on OpenGL ES 3.
    Gles3Target(size_t physicalWidth, size_t physicalHeight, std::vector<size_t> const& logicalSize,
                size_t logicalPerPhysical, size_t physicalPerLogical, RenderBackend::ImageFormatType format,
                RenderBackend::ImageFiltering filtering);

    Gles3Target(Gles3Target const&) = default;
    Gles3Target& operator=(Gles3Target const&) = default;
    Gles3Target(Gles3Target&&) = default;
    Gles3Target& operator=(Gles3Target&&) = default;
    ~Gles3Target() override;

    size_t width() const override { return Gles3Texture::width(); }
    size_t height() const override { return Gles3Texture::height(); }

    /// Attaches the texture again, to the currently bound framebuffer: after the texture was resized or uploaded anew.
    void bindTextureToFrameBuffer() const;

    /// Gives a recycled target another packing. Texture and pixels stay.
    void repack(std::vector<size_t> logicalSize, size_t logicalPerPhysical, size_t physicalPerLogical) noexcept;

    /// Fills the target; 1.0 is full. A packed target can only be cleared to black, with any alpha: other colours throw
    /// "Cannot clear buffer". Leaves the framebuffer bound.
    void clear(float r, float g, float b, float a) const;
    /// Fills a rectangle, in logical pixels; on the host's own surface the rectangle counts texels. Leaves the scissor
    /// test off, also if it throws.
    void clearRect(float r, float g, float b, float a, size_t x, size_t y, size_t width, size_t height) const;

    /// Reads a rectangle into `buffer`, of n bytes, and returns the bytes written, rows in GL's order. x and y count
    /// texels, width logical pixels. The capacity is checked with 3 bytes per texel whatever the format: an RGBA32
    /// target writes 4, which the caller must provide. Leaves the framebuffer bound and the pack alignment changed.
    size_t getPixels(void* buffer, size_t n, size_t x, size_t y, size_t width, size_t height) const;
    /// The same into a vector, which grows if it is too small and is then cut to the bytes written. The capacity check
    /// holds here too: an exactly grown GRAY8 vector is refused.
    void getPixels(std::vector<GLubyte>& pixels, size_t x, size_t y, size_t width, size_t height) const;

    /// The GL name of the framebuffer.
    GLuint framebuffer() const { return *framebuffer_; }
    /// 0 marks the host's own surface, 1 a target of the full constructor.
    unsigned ownSurface() const { return ownSurface_; }
    /// {width, height} in logical pixels.
    std::vector<size_t> const& logicalSize() const { return logicalSize_; }
    size_t logicalPerPhysical() const { return logicalPerPhysical_; }
    size_t physicalPerLogical() const { return physicalPerLogical_; }

    /// Texels of a logical width, rounded up.
    size_t texelWidth(size_t logicalWidth) const;

private:
    size_t texelColumn(size_t logicalX) const;
    size_t texelRows(size_t logicalRows) const;

    GlName framebuffer_;
    unsigned ownSurface_;
    std::vector<size_t> logicalSize_;
    size_t logicalPerPhysical_;
    size_t physicalPerLogical_;
};
