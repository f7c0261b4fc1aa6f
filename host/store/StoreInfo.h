#pragma once

#include "host/Geometry.h"
#include "host/PictureInfo.h"
#include "host/store/Wavelet53.h"

#include <cstddef>
#include <string>

/// The contents of a tile store, and how it is cut into tiles. Its levels are those of the wavelet, 1 to kMaxLevels.
/// docs/STORE.md draws it.
struct StoreInfo : PictureInfo {
    static constexpr size_t kMaxLevels = 12;
    static constexpr size_t kMinTileSize = 16;
    static constexpr size_t kMaxTileSize = 2048;
    static constexpr size_t kMaxBands = 4;
    static constexpr size_t kMaxSide = size_t{1} << 27;
    static constexpr double kMaxMicronsPerPixel = 1e12;

    size_t residualBits = 0; ///< lowest bits of each sample that stay outside the wavelet
    size_t tileSize = 256;   ///< samples per side, even
    std::string selection;   ///< human-readable: the part of the file, and conversions; empty: the whole, unchanged
    double rangeLow = 0;     ///< sample of the file that became 0
    double rangeHigh = 0;    ///< sample of the file that became the highest; both 0: samples are the file's
};

/// First letter: along x. HL is high along x and low along y. Residual: the lowest bits of the picture's own samples.
enum class Band { LL, HL, LH, HH, Residual };

/// A tile: levels count from 1, the finest, to StoreInfo::levels; residual tiles are at level 0. LL exists at the
/// coarsest level only. Planes of residual tiles are the picture's bands; planes of the others are luma, Co, Cg, alpha,
/// or grey, alpha.
struct TileAddress {
    size_t level = 0;
    Band band = Band::LL;
    size_t plane = 0;
    size_t column = 0;
    size_t row = 0;
};

/// "tile 3,4 of HL, plane 0, level 2"
std::string toText(TileAddress const& address);

namespace storegeometry {

/// Levels until the longer side of the coarsest low band fits in one tile; at least 1, at most StoreInfo::kMaxLevels.
size_t autoLevels(size_t width, size_t height, size_t tileSize);

/// Size of each band of a level in samples; at level 0 that of the picture. LL of level k is the input of level k + 1.
Size bandExtent(StoreInfo const& info, size_t level);

/// Tiles of each band of a level.
Size tileCount(StoreInfo const& info, size_t level);

/// Whether the store has such a tile.
bool contains(StoreInfo const& info, TileAddress const& address);

/// Size of the part of a tile that lies in its band, from the upper left corner; samples beyond are 0.
Size filledPart(StoreInfo const& info, TileAddress const& address);

/// Number of tiles of the store.
size_t totalTiles(StoreInfo const& info);

} // namespace storegeometry
