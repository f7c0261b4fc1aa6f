#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Bytes without a pattern that a wrong stride or order could meet by accident; others from another start.
inline std::vector<unsigned char> noiseBytes(size_t count, std::uint32_t start) {
    std::vector<unsigned char> bytes(count);
    for (auto& byte : bytes) {
        start = start * 1664525U + 1013904223U;
        byte = static_cast<unsigned char>(start >> 24U);
    }
    return bytes;
}
