#pragma once

#include <cstdint>
#include <string>

/// FNV-1a (Fowler, Noll, Vo) of 64 bits: short names for long ones, without security.
constexpr std::uint64_t kFnvOffset = 0xcbf29ce484222325u;
constexpr std::uint64_t kFnvPrime = 0x100000001b3u;

inline std::uint64_t fnv1a(std::string const& text) {
    std::uint64_t hash = kFnvOffset;
    for (char const c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * kFnvPrime;
    return hash;
}
