#pragma once

#include "host/store/TileCodec.h"

#include <random>

/// Tiles of 16 x 16 samples, for tests.
namespace testtiles {

using Samples = std::vector<std::int16_t>;

/// A square picture of such tiles.
inline StoreInfo infoOf(size_t side) {
    StoreInfo info;
    info.width = info.height = side;
    info.bands = 1;
    info.tileSize = 16;
    return info;
}

inline Samples noise(unsigned number) {
    std::mt19937 random(number);
    Samples samples(16 * 16);
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(random());
    return samples;
}

/// Of band HL at level 1.
inline RawTile tileOf(size_t column, Samples const& samples) {
    return {{1, Band::HL, 0, column, 0}, {16, 16}, samples};
}

} // namespace testtiles
