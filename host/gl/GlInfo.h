#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// One precision of one kind of number in a shader stage, as GL reports it.
struct GlPrecision {
    std::string stage;                 ///< "vertex" or "fragment"
    std::string type;                  ///< "lowp float" ... "highp int"
    std::array<std::int32_t, 2> range; ///< log2 of the largest magnitudes below and above 0
    std::int32_t bits;                 ///< log2 of the relative accuracy; 0 for whole numbers
};

/// Name, version, limits and precisions of the current GL implementation.
struct GlInfo {
    std::string vendor;
    std::string renderer;
    std::string version;
    std::string shadingLanguageVersion;
    std::int32_t maxTextureSize;
    std::array<std::int32_t, 2> maxViewport;
    std::int32_t fragmentTextureUnits;
    std::int32_t combinedTextureUnits;
    std::vector<GlPrecision> precisions;
};

/// GL thread, with a context current.
GlInfo queryGlInfo();
