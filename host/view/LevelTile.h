#pragma once

#include "host/Geometry.h"
#include "host/store/StoreInfo.h"
#include "host/view/Zoom.h"

#include <cstddef>
#include <tuple>
#include <vector>

/// A square of a level's samples, the unit in which levels are rebuilt. Tile (i, j) of level k is made of one tile of
/// level k + 1 and of the high bands of that level, so no tile needs its neighbours:
///
///     level k + 1    |      tile p       |+6        2 * p and 2 * p + 1 take one half each, and 6 samples more
///     level k        | tile 2p | tile 2p+1 |
///
/// For that each has kMargin samples of its right and its lower neighbour.
struct LevelTile {
    size_t level = 0; ///< 0: the picture's own samples
    size_t column = 0;
    size_t row = 0;

    bool operator<(LevelTile const& other) const {
        return std::tie(level, row, column) < std::tie(other.level, other.row, other.column);
    }
    bool operator==(LevelTile const& other) const { return !(*this < other) && !(other < *this); }
};

namespace leveltile {

constexpr size_t kSide = 512;
constexpr size_t kMargin = 6;

/// Samples of a level that show the picture: half as many at each further one.
Size levelExtent(PictureInfo const& info, size_t level);
/// Pixels of the whole picture at a zoom.
Size pixelExtent(PictureInfo const& info, Zoom const& zoom);

/// The tile's samples without the margin, as far as they show the picture.
Region shownRegion(PictureInfo const& info, LevelTile const& tile);
/// The pixels of the whole picture at a zoom of the tile's level that show those samples.
Region pixelRegion(PictureInfo const& info, Zoom const& zoom, LevelTile const& tile);
/// With the margin, as far as the level has samples.
Region planeRegion(StoreInfo const& info, LevelTile const& tile);
/// What the tile is rebuilt from: this region of each band of the next level, even in width. Not for tiles of the
/// coarsest.
Region bandRegion(StoreInfo const& info, LevelTile const& tile);

LevelTile parent(LevelTile const& tile);
/// The tiles that meet a region of a level, row by row.
std::vector<LevelTile> over(size_t level, Region const& region);

} // namespace leveltile
