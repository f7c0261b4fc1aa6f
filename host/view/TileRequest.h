#pragma once

#include "host/PictureInfo.h"
#include "host/view/LevelTile.h"
#include "host/view/View.h"

#include <map>
#include <set>
#include <vector>

/// The rebuilt tiles that a tile is enhanced from.
struct TileSources {
    std::vector<LevelTile> rebuilt;   ///< itself and, where an enhancement reads around a pixel, its neighbours
    std::vector<LevelTile> residuals; ///< those of them whose residual bits are needed besides
};

/// The tiles that a view needs. In the lists coarser levels come first, in a level those tiles that are nearest to the
/// frame's middle.
struct TileRequest {
    std::vector<LevelTile> rebuilt;           ///< also what those of a store are rebuilt from
    std::vector<LevelTile> shown;             ///< of the view's level
    std::vector<LevelTile> coarser;           ///< fallbacks, shown until those are there
    std::map<LevelTile, TileSources> sources; ///< of the shown ones and their fallbacks
    std::set<LevelTile> needed;               ///< the rebuilt ones
    std::set<LevelTile> residuals;            ///< those of them whose residual bits are needed too
    std::set<LevelTile> pinnedShown;          ///< the shown ones and their fallbacks
};

class TileStages;

/// withCoarser: with fallbacks.
TileRequest requestFor(PictureInfo const& info, View const& view, TileStages& stages, bool withCoarser);
