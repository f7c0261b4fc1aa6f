#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

/// Takes the next `count` finished rows of a picture from the top: samples interleaved, tightly packed; 16-bit samples
/// in the machine's byte order.
using RowSink = std::function<void(std::uint8_t const* rows, size_t count)>;
