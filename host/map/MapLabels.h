#pragma once

#include <cstdint>
#include <string>

/// Short texts in a bitmap font: digits, the comma and the blank, six pixels wide and seven high, at whole scales.
namespace maplabels {

constexpr std::int64_t kAdvance = 6;
constexpr std::int64_t kHeight = 7;

/// Whether the text covers pixel (x, y), counted from its upper left corner, when each font pixel is scale x scale.
bool covers(std::string const& text, std::int64_t x, std::int64_t y, std::int64_t scale);

/// Width of the text in pixels.
std::int64_t width(std::string const& text, std::int64_t scale);

} // namespace maplabels
