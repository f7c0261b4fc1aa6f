#pragma once

#include "host/image/SampleType.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The sample that means that there is none.
namespace nodatasample {

/// From the text of TIFF's tag GDAL_NODATA: "-9999", "nan". Empty if it is no number.
std::optional<double> parse(std::string const& text);

/// The bytes of this sample; empty if the type has no such sample. A 32-bit float is the one nearest to the number.
std::optional<std::vector<std::uint8_t>> bytesOf(double number, SampleType type);
/// The value of this sample; empty if the type has no such sample.
std::optional<double> valueOf(double number, SampleType type);

} // namespace nodatasample
