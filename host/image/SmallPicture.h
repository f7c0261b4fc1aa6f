#pragma once

#include "host/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// A picture of 8 bits that lies in memory as a whole: the label of a slide.
struct SmallPicture {
    Size size;
    size_t bands = 3;                  ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
    std::vector<std::uint8_t> samples; ///< interleaved, rows from the top
};

/// Any thread.
namespace smallpicture {

constexpr size_t kMostPixels = size_t{1} << 26;

/// The bytes of a PNG file. Throws std::bad_alloc.
std::vector<std::uint8_t> toPng(SmallPicture const& picture);

/// Nothing for bytes that are no such file, or one of more pixels.
std::optional<SmallPicture> fromPng(std::vector<std::uint8_t> const& bytes, size_t mostPixels = kMostPixels);

/// Of four bands: where a side is longer than `longestSide` each pixel is the mean of a square, as small as that takes.
SmallPicture shrunk(SmallPicture const& picture, size_t longestSide);

} // namespace smallpicture
