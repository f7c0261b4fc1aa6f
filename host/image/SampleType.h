#pragma once

#include <cstddef>
#include <string>

/// The type of an image file's samples, in the machine's byte order.
enum class SampleType { Unsigned8, Signed8, Unsigned16, Signed16, Unsigned32, Signed32, Float32, Float64 };

size_t bytesOf(SampleType type);

/// "16-bit unsigned", "32-bit float"
std::string toText(SampleType type);

/// Whether a store keeps such samples unchanged.
constexpr bool isKept(SampleType type) {
    return type == SampleType::Unsigned8 || type == SampleType::Unsigned16;
}
