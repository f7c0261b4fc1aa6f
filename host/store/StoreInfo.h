#pragma once

#include "host/Geometry.h"
#include "host/store/Wavelet53.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// What a tile store holds, and how it is cut into tiles. docs/STORE.md draws it.
struct StoreInfo {
    static constexpr size_t kMaxLevels = 12;
    static constexpr size_t kMinTileSize = 16;
    static constexpr size_t kMaxTileSize = 2048;
    static constexpr size_t kMaxBands = 4;
    static constexpr size_t kMaxSide = size_t{1} << 27;
    static constexpr double kMaxMicronsPerPixel = 1e12;

    size_t width = 0;            ///< pixels
    size_t height = 0;           ///< pixels
    size_t bands = 0;            ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
    size_t bits = 8;             ///< of a sample: 8 or 16
    size_t residualBits = 0;     ///< lowest bits of each sample that stay outside the wavelet
    size_t levels = 1;           ///< of the wavelet, 1 to kMaxLevels
    size_t tileSize = 256;       ///< samples per side, even
    double micronsPerPixelX = 0; ///< 0: unknown
    double micronsPerPixelY = 0;
    std::string sourceName;     ///< file name of the picture, without folders
    std::string interpretation; ///< of the bands, for a person: "RGB"
    std::string selection;      ///< which part of the file, and what was done to its samples; empty: all, as they are
    double rangeLow = 0;        ///< of the file's samples: what has become 0
    double rangeHigh = 0;       ///< and what has become the highest; both 0: samples are the file's
};

/// First letter: along x. HL is high along x and low along y. Residual: the lowest bits of the picture's own samples.
enum class Band { LL, HL, LH, HH, Residual };

/// A tile: levels count from 1, the finest, to StoreInfo::levels; residual tiles are at level 0. LL exists at the
/// coarsest level only. Planes of residual tiles are the picture's bands; of the others luma, Co, Cg, alpha, or grey,
/// alpha.
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

/// Samples of each band of a level. At level 0 the picture itself. LL of level k is what level k + 1 was made from.
Size bandExtent(StoreInfo const& info, size_t level);

/// Tiles of each band of a level.
Size tileCount(StoreInfo const& info, size_t level);

/// Whether the store has such a tile.
bool contains(StoreInfo const& info, TileAddress const& address);

/// The samples of a tile that lie in its band, from its upper left corner; those beyond are 0.
Size filledPart(StoreInfo const& info, TileAddress const& address);

/// All tiles that the store has.
size_t totalTiles(StoreInfo const& info);

} // namespace storegeometry
