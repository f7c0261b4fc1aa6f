#pragma once

#include "host/view/ShownTiles.h"
#include "host/view/View.h"

#include <set>
#include <vector>

/// The tiles that a view needs, coarser levels first, in a level those first that are nearest to the frame's middle.
struct TileRequest {
    std::vector<LevelTile> rebuilt; ///< also what finer ones are rebuilt from
    std::vector<LevelTile> shown;   ///< of the view's level
    std::vector<LevelTile> coarser; ///< shown until those are there; the coarsest level first
    std::set<LevelTile> needed;     ///< rebuilt ones
    std::set<LevelTile> residuals;  ///< those of them whose residual bits are needed too
    std::set<LevelTile> pinnedShown;
};

/// enhanceCoarserLevels: with `coarser`.
TileRequest requestFor(StoreInfo const& info, View const& view, ShownTiles& tiles, bool enhanceCoarserLevels);
