#pragma once

#include "host/image/SampleType.h"
#include "host/view/Camera.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the panel says of the pixel under the cursor.
namespace pixeltext {

/// "450, 350: 203 11 95": the file's samples; floats as the shortest text that identifies them.
std::string ofSamples(PicturePixel const& pixel, std::vector<double> const& samples, SampleType type);

/// The same for the colour that is shown.
std::string ofColour(PicturePixel const& pixel, std::array<std::uint8_t, 3> const& colour);

/// "450, 350: ...", before the samples have been read.
std::string before(PicturePixel const& pixel);

} // namespace pixeltext
