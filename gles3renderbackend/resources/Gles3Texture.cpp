#include "gles3renderbackend/resources/Gles3Texture.h"

#include "gles3renderbackend/resources/GlFormats.h"
#include "gles3renderbackend/resources/Gles3Pbo.h"
#include "renderbackend/VelmoraException.h"

#include <limits>

namespace {

constexpr char const* kConstructor =
    "Gles3Texture::Gles3Texture(std::vector<uint8_t> const& pixels, std::vector<size_t> const& size, "
    "RenderBackend::ImageFormatType textureFormat, RenderBackend::ImageFiltering filtering)";
constexpr char const* kResize = "void Gles3Texture::resize(size_t width, size_t height)";
constexpr char const* kSetPixels =
    "void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, std::vector<size_t> const& size)";
constexpr char const* kSetPixelsAt =
    "void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, std::vector<size_t> const& size, "
    "size_t offset=0)";
constexpr char const* kInvalidFormat = "invalid texture format";

bool isPowerOfTwo(size_t n) {
    return n != 0 && (n & (n - 1)) == 0;
}

void requireSize(std::vector<size_t> const& size, size_t values, char const* location) {
    if (size.size() < values) throw VelmoraException("size vector is too short", location);
}

size_t maxTextureTexels() {
    GLint texels = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &texels);
    return static_cast<size_t>(texels);
}

// Compares as GL does, as signed 32-bit numbers.
bool withinLimit(size_t width, size_t height, size_t maxTexels) {
    auto const limit = static_cast<GLint>(maxTexels);
    return static_cast<GLint>(width) <= limit && static_cast<GLint>(height) <= limit;
}

// Throws beyond GL_MAX_TEXTURE_SIZE.
void requireSupportedSize(size_t width, size_t height, char const* location) {
    size_t const maxTexels = maxTextureTexels();
    if (withinLimit(width, height, maxTexels)) return;
    throw VelmoraRangeException("requested buffer size exceeds maximum supported size", location, maxTexels);
}

// Number of bytes that GL reads for an image; SIZE_MAX if it overflows.
size_t bytesRead(size_t width, size_t height, size_t bytesPerTexel, std::optional<size_t> rowLength) {
    if (width == 0 || height == 0) return 0;
    size_t texels = 0;
    size_t bytes = 0;
    // A row length of 0 means to GL that the stride is the image's width.
    size_t const stride = rowLength.value_or(0) != 0 ? *rowLength : width;
    bool const overflow = __builtin_mul_overflow(stride, height - 1, &texels) ||
                          __builtin_add_overflow(texels, width, &texels) ||
                          __builtin_mul_overflow(texels, bytesPerTexel, &bytes);
    return overflow ? std::numeric_limits<size_t>::max() : bytes;
}

bool holds(size_t available, size_t offset, size_t needed) {
    return offset <= available && available - offset >= needed;
}

bool trilinearSides(size_t width, size_t height) {
    return isPowerOfTwo(width) && isPowerOfTwo(height);
}

// Whether an image of this size would be refused for another reason than its pixels.
bool refusedAnyway(std::vector<size_t> const& size, RenderBackend::ImageFiltering filtering) {
    bool const noFiltering =
        !samplingFilters(filtering) || (filtering == RenderBackend::TRILINEAR && !trilinearSides(size[0], size[1]));
    return !formatOfBytes(size[2]) || noFiltering || !withinLimit(size[0], size[1], maxTextureTexels());
}

void setSampling(size_t width, size_t height, RenderBackend::ImageFiltering filtering) {
    if (filtering == RenderBackend::TRILINEAR && !trilinearSides(width, height))
        throw VelmoraException("TRILINEAR filtering is only allowed for power-of-two dimensions", kSetPixelsAt);
    auto const filters = samplingFilters(filtering);
    if (!filters) throw VelmoraException("invalid texture filtering type", kSetPixelsAt);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filters->minifying);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filters->magnifying);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

} // namespace

Gles3Texture::Gles3Texture() : texture_(makeTextureName("Gles3Texture::Gles3Texture()")) {}

Gles3Texture::Gles3Texture(std::vector<std::uint8_t> const& pixels, std::vector<size_t> const& size,
                           RenderBackend::ImageFormatType textureFormat, RenderBackend::ImageFiltering filtering)
    : format_(textureFormat), filtering_(filtering), texture_(makeTextureName(kConstructor)) {
    requireSize(size, 2, kConstructor);
    if (size[0] == 0 || size[1] == 0) return;
    bind();
    auto const texels = texelFormat(format_);
    if (!texels) throw VelmoraException("Gles3Texture::Gles3Texture: invalid texture format", kConstructor);
    setPixels(pixels, {size[0], size[1], texels->bytes});
}

Gles3Texture::~Gles3Texture() = default;

void Gles3Texture::bind() const {
    glBindTexture(GL_TEXTURE_2D, *texture_);
}

void Gles3Texture::resize(size_t width, size_t height) {
    // Deliberate: the new size is stored first and stays when the request is refused; hosts read it from there.
    width_ = width;
    height_ = height;
    bind();
    if (!texelFormat(format_)) throw VelmoraException(kInvalidFormat, kResize);
    requireSupportedSize(width, height, kResize);
    uploadFromMemory(nullptr);
}

bool Gles3Texture::fitsInPlace(std::vector<size_t> const& size) const {
    return width_ > size[0] && height_ > size[1];
}

void Gles3Texture::setPixels(std::vector<std::uint8_t> const& pixels, std::vector<size_t> const& size, size_t offset,
                             std::optional<size_t> rowLength) {
    requireSize(size, 3, kSetPixels);
    bool const inPlace = fitsInPlace(size);
    if (endsInside(pixels.size(), size, offset, rowLength) && (inPlace || !refusedAnyway(size, filtering_)))
        throw VelmoraException("pixel vector is shorter than its size says", kSetPixelsAt);
    void const* const data = pixels.size() > offset ? pixels.data() + offset : nullptr;

    bind();
    if (rowLength) glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(*rowLength));
    if (inPlace) {
        // Deliberate: GL_RGBA whatever the format, and neither size nor sampling change.
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(size[0]), static_cast<GLsizei>(size[1]), GL_RGBA,
                        GL_UNSIGNED_BYTE, data);
    } else {
        defineImage(size);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        requireSupportedSize(width_, height_, kSetPixels);
        uploadFromMemory(data);
    }
    if (rowLength) glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
}

// Whether GL would read past the end of the pixels.
bool Gles3Texture::endsInside(size_t pixelBytes, std::vector<size_t> const& size, size_t offset,
                              std::optional<size_t> rowLength) const {
    if (fitsInPlace(size)) {
        // Read as RGBA; if GL's image has another format GL refuses the call and reads nothing.
        size_t const bytes = bytesRead(size[0], size[1], 4, rowLength);
        return *mayBeRgba_ && !holds(pixelBytes, offset, bytes);
    }
    // Without pixels from the offset on, a new image is allocated and not filled.
    return pixelBytes > offset && !holds(pixelBytes, offset, bytesRead(size[0], size[1], size[2], rowLength));
}

void Gles3Texture::setPixels(std::vector<size_t> const& size, Gles3Pbo const& pbo, size_t offset) {
    requireSize(size, 3, kSetPixels);
    bind();
    defineImage(size);
    pbo.bind();
    // With a buffer bound, GL takes the pointer as a byte offset into it.
    uploadImage(reinterpret_cast<void const*>(offset));
    pbo.unbind();
}

// Sets size, format and sampling of a new image, which the caller uploads next.
void Gles3Texture::defineImage(std::vector<size_t> const& size) {
    width_ = size[0];
    height_ = size[1];
    auto const format = formatOfBytes(size[2]);
    if (!format) throw VelmoraException(kInvalidFormat, kSetPixels);
    format_ = *format;
    setSampling(width_, height_, filtering_);
}

// GL may refuse it, for the size or for a mapped buffer, and keep the image before.
void Gles3Texture::uploadImage(void const* data) const {
    auto const texels = *texelFormat(format_);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(texels.format), static_cast<GLsizei>(width_),
                 static_cast<GLsizei>(height_), 0, texels.format, texels.type, data);
    *mayBeRgba_ = *mayBeRgba_ || format_ == RenderBackend::RGBA32;
}

// Of a size within GL's limit, which GL takes unless its lower 32 bits are a negative number.
void Gles3Texture::uploadFromMemory(void const* data) const {
    uploadImage(data);
    if (static_cast<GLsizei>(width_) >= 0 && static_cast<GLsizei>(height_) >= 0)
        *mayBeRgba_ = format_ == RenderBackend::RGBA32;
}

void Gles3Texture::generateMipmaps() {
    bind();
    glGenerateMipmap(GL_TEXTURE_2D);
}
