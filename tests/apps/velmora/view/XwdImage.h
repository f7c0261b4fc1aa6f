#pragma once

#include "tests/support/TestImages.h"

#include <string>

/// The pixels of a window as the program xwd writes them: 32 bits per pixel, in one go.
/// Throws std::runtime_error for anything else.
testimages::Pixels readXwd(std::string const& path);
