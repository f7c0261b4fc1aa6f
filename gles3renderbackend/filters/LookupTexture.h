#pragma once

#include "gles3renderbackend/resources/Gles3Texture.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Uploads lookup tables as textures and names the shader stages that read them.
namespace lookup {

/// The two programs: for 8-bit pixels, and from 9 bits on for pixels of three 16-bit channels.
std::string const& vertexSource(size_t bitDepth);
std::string const& fragmentSource(size_t bitDepth);

/// The largest input code, 2^bitDepth - 1.
GLfloat maxValue(size_t bitDepth);

/// The table as a texture of single bytes, sampled without interpolation. Up to 8 bits: one row. From 9 bits on: rows
/// of at most 2048 entries, three times over, one equal band per channel. Throws std::length_error if the table has not
/// 2^bitDepth entries.
Gles3Texture makeTexture(std::vector<std::uint8_t> const& table, size_t bitDepth);

} // namespace lookup
