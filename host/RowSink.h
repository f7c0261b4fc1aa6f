#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

/// Takes `count` finished rows of a picture, the next from the top: samples interleaved, tightly packed; those of 16
/// bits in the machine's byte order.
using RowSink = std::function<void(std::uint8_t const* rows, size_t count)>;
