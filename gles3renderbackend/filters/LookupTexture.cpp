#include "gles3renderbackend/filters/LookupTexture.h"

#include "gles3renderbackend/filters/ToneTable.h"

#include "GlslSources.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

constexpr size_t kLowDepth = 8;      // the largest depth of the 8-bit program
constexpr size_t kRowEntries = 2048; // every OpenGL ES 3 implementation has textures of this width
constexpr size_t kBands = 3;         // one per channel

} // namespace

std::string const& lookup::vertexSource(size_t bitDepth) {
    return bitDepth <= kLowDepth ? glsl::copy_vert : glsl::lookup16_vert;
}

std::string const& lookup::fragmentSource(size_t bitDepth) {
    return bitDepth <= kLowDepth ? glsl::lookup8_frag : glsl::lookup16_frag;
}

GLfloat lookup::maxValue(size_t bitDepth) {
    return static_cast<GLfloat>(std::ldexp(1.0, static_cast<int>(std::min<size_t>(bitDepth, 127))) - 1.0);
}

Gles3Texture lookup::makeTexture(std::vector<std::uint8_t> const& table, size_t bitDepth) {
    if (bitDepth > toneTable::kMaxBitDepth || table.size() != size_t{1} << bitDepth)
        throw std::length_error("lookup table: its length is not 2^bitDepthIn");
    size_t const width = std::min(table.size(), kRowEntries);
    size_t const bands = bitDepth <= kLowDepth ? 1 : kBands;
    std::vector<std::uint8_t> pixels;
    for (size_t band = 0; band < bands; ++band)
        pixels.insert(pixels.end(), table.begin(), table.end());
    Gles3Texture texture;
    texture.setPixels(pixels, {width, pixels.size() / width, 1});
    return texture;
}
