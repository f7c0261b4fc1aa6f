#pragma once

#include <cstddef>
#include <string>

/// What a sample of an image file is: numbers as the machine has them.
enum class SampleType { Unsigned8, Signed8, Unsigned16, Signed16, Unsigned32, Signed32, Float32, Float64 };

size_t bytesOf(SampleType type);

/// "16-bit unsigned", "32-bit float"
std::string toText(SampleType type);

/// Whether a store keeps such samples as they are.
constexpr bool isKept(SampleType type) {
    return type == SampleType::Unsigned8 || type == SampleType::Unsigned16;
}
