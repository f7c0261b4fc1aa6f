#pragma once

#include "gles3renderbackend/resources/GlName.h"
#include "renderbackend/Canvas.h"
#include "renderbackend/RenderBackend.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class Gles3Pbo;

/// A 2D texture of 8-bit channels. Copies share the GL texture, the last one deletes it. GL thread only.
///
/// Size vectors are {width, height, bytes per texel}, in texels. Every operation binds the texture to GL_TEXTURE_2D of
/// the active unit and leaves it bound. Unpack alignment is 1 from the first upload on: the buffer form of setPixels
/// relies on it, as rows in an upload buffer are tightly packed. docs/GL_STATE.md lists the other state that matters.
class Gles3Texture : public virtual Canvas {
public:
    /// A GL name without an image: size 0 by 0, RGBA32, NEAREST.
    Gles3Texture();

    /// size needs {width, height}; the bytes per texel follow from the format. A size of 0 in either direction makes a
    /// texture without an image; an empty pixel vector allocates an image that is not filled.
    Gles3Texture(std::vector<std::uint8_t> const& pixels, std::vector<size_t> const& size,
                 RenderBackend::ImageFormatType textureFormat, RenderBackend::ImageFiltering filtering);

    Gles3Texture(Gles3Texture const&) = default;
    Gles3Texture& operator=(Gles3Texture const&) = default;
    Gles3Texture(Gles3Texture&&) = default;
    Gles3Texture& operator=(Gles3Texture&&) = default;
    ~Gles3Texture() override;

    size_t width() const override { return width_; }
    size_t height() const override { return height_; }

    /// Allocates a new, unfilled image. Throws VelmoraRangeException beyond GL_MAX_TEXTURE_SIZE; width() and height()
    /// then report the rejected size.
    void resize(size_t width, size_t height);

    /// Uploads from host memory, starting at byte `offset`; rowLength: stride in texels, if rows are longer than the
    /// image.
    ///
    /// An image smaller than the present one in BOTH directions is written into its top left corner, as RGBA whatever
    /// the format: on RGB24 and GRAY8 textures GL refuses it (GL_INVALID_OPERATION) and the old pixels stay. Any other
    /// size makes a new image, of the format that size[2] names. A vector that ends inside the image is refused and the
    /// texture is unchanged; one that ends at or before `offset` allocates without filling. If a new image is refused
    /// for its format, its filtering or its size, width() and height() report the new size all the same, and a row
    /// length stays set.
    void setPixels(std::vector<std::uint8_t> const& pixels, std::vector<size_t> const& size, size_t offset = 0,
                   std::optional<size_t> rowLength = std::nullopt);

    /// Uploads from a pixel buffer, starting at byte `offset`: always a new image, without a check of the size. The
    /// buffer must be an unpack buffer and not mapped; with another one GL would take the offset for an address.
    void setPixels(std::vector<size_t> const& size, Gles3Pbo const& pbo, size_t offset);

    /// For TRILINEAR textures: uploads never make mipmaps by themselves.
    void generateMipmaps();

    RenderBackend::ImageFormatType format() const { return format_; }
    RenderBackend::ImageFiltering filtering() const { return filtering_; }
    /// The GL name.
    GLuint texture() const { return *texture_; }

private:
    void bind() const;
    void defineImage(std::vector<size_t> const& size);
    bool fitsInPlace(std::vector<size_t> const& size) const;
    bool endsInside(size_t pixelBytes, std::vector<size_t> const& size, size_t offset,
                    std::optional<size_t> rowLength) const;
    void uploadImage(void const* data) const;
    void uploadFromMemory(void const* data) const;

    size_t width_ = 0;
    size_t height_ = 0;
    RenderBackend::ImageFormatType format_ = RenderBackend::RGBA32;
    RenderBackend::ImageFiltering filtering_ = RenderBackend::NEAREST;
    GlName texture_;
    // Whether GL's image may be of RGBA texels, which copies share. format_ does not tell it after an upload that was
    // refused, or that another copy made.
    std::shared_ptr<bool> mayBeRgba_ = std::make_shared<bool>(false);
};
