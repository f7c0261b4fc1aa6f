#include "gles3renderbackend/filters/Gles3FilterCLAHE.h"

#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "gles3renderbackend/filters/CLAHE.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/FilterParameters.h"
#include "renderbackend/VelmoraException.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr char const* kDraw =
    "void Gles3FilterCLAHE::draw(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t "
    "destination, size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom, SingleFilterParameters const& "
    "params, std::vector<size_t> const& offset, Gles3RenderBackendInstance& instance, Filter const& filter)";
constexpr size_t kTexelsPerPixel = 2;

void requireFourComponents(Gles3Target const& target) {
    bool const twoTexels = target.physicalPerLogical() == kTexelsPerPixel && target.logicalPerPhysical() == 1;
    if (target.format() != RenderBackend::RGBA32 || !twoTexels)
        throw VelmoraException("CLAHE needs targets of 48 or 64 bits per pixel in RGBA32", kDraw);
}

// Whether GL has as many texels as the target says: of larger numbers it took the lower 32 bits.
bool isAsLargeAsItSays(Gles3Target const& target) {
    constexpr size_t kMost = std::numeric_limits<GLsizei>::max();
    return target.width() <= kMost && target.height() <= kMost;
}

// Before memory is taken for it.
void requireInside(Gles3Target const& source, size_t width, size_t height) {
    if (!isAsLargeAsItSays(source) || width > source.width() / kTexelsPerPixel || height > source.height())
        throw VelmoraException("CLAHE's input area is larger than its source", kDraw);
}

// Rows of `width` pixels, four components each, 16-bit numbers in the machine's byte order.
using Pixels = std::vector<std::int16_t>;

Pixels readPixels(Gles3Target const& source, size_t x, size_t y, size_t width, size_t height) {
    Pixels pixels(width * height * CLAHE::kComponents);
    source.getPixels(pixels.data(), pixels.size() * sizeof(std::int16_t), x * kTexelsPerPixel, y, width, height);
    return pixels;
}

void equalise(Pixels& pixels, size_t width, size_t height, double clipLimit, Filter const& filter) {
    if (width <= CLAHE::kRegionSize || height <= CLAHE::kRegionSize) return;
    CLAHE clahe(clipLimit);
    clahe.buildTables(pixels.data(), width, height, width);
    size_t const x0 = filter.invalidLeft() >= CLAHE::kRegionSize ? CLAHE::kRegionSize : 0;
    size_t const y0 = filter.invalidTop() >= CLAHE::kRegionSize ? CLAHE::kRegionSize : 0;
    clahe.apply(pixels.data(), x0, y0);
}

// The rest of an extent after both ends are cut; 0 if they exceed it.
size_t remaining(size_t extent, size_t before, size_t after) {
    return before < extent && after < extent - before ? extent - before - after : 0;
}

} // namespace

Gles3FilterCLAHE::Gles3FilterCLAHE(Filter& filter) : Gles3Shader(filter) {
    offerParameters<FilterClaheParams>();
}

void Gles3FilterCLAHE::draw(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t destination,
                            size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                            SingleFilterParameters const& params, std::vector<size_t> const& offset,
                            Gles3RenderBackendInstance& instance, Filter const& filter) {
    // Rounded to single precision, like a uniform.
    auto const clipLimit = static_cast<double>(static_cast<float>(params.as<FilterClaheParams>().value));
    if (sources.empty()) throw VelmoraException("CLAHE needs one source", kDraw);
    Gles3Target const& target = instance.target(destination);
    Gles3Target const& source = instance.target(sources[0].target);
    requireFourComponents(target);
    requireFourComponents(source);
    requireInside(source, inputW, inputH);
    size_t const x = sources[0].wholeTexture ? 0 : sources[0].x;
    size_t const y = sources[0].wholeTexture ? 0 : sources[0].y;
    Pixels pixels = readPixels(source, x, y, inputW, inputH);
    equalise(pixels, inputW, inputH, clipLimit, filter);

    // Clipped to the destination, as a draw would be.
    size_t const left = filter.invalidLeft() + clipLeft;
    size_t const top = filter.invalidTop() + clipTop;
    size_t const outputW = kTexelsPerPixel * remaining(inputW, left, filter.invalidRight() + clipRight);
    size_t const outputH = remaining(inputH, top, filter.invalidBottom() + clipBottom);
    size_t const widthTexels = std::min(outputW, remaining(target.width(), offset[0], 0));
    size_t const heightTexels = std::min(outputH, remaining(target.height(), offset[1], 0));
    if (widthTexels == 0 || heightTexels == 0) return;
    glBindTexture(GL_TEXTURE_2D, target.texture());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(inputW * kTexelsPerPixel));
    glTexSubImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(offset[0]), static_cast<GLint>(offset[1]),
                    static_cast<GLsizei>(widthTexels), static_cast<GLsizei>(heightTexels), GL_RGBA, GL_UNSIGNED_BYTE,
                    pixels.data() + (top * inputW + left) * CLAHE::kComponents);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
}
