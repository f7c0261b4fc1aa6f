#pragma once

#include "host/view/ShownTiles.h"
#include "host/view/Zoom.h"

#include <set>
#include <vector>

/// The tiles that a view needs, coarser levels first, in a level those first that are nearest to the frame's middle.
struct Wanted {
    std::vector<PictureTile> rebuilt; ///< also what finer ones are rebuilt from
    std::vector<PictureTile> shown;   ///< of the view's level
    std::vector<PictureTile> coarser; ///< shown until those are there; the coarsest level first
    std::set<PictureTile> needed;     ///< rebuilt ones
    std::set<PictureTile> residuals;  ///< those of them whose residual bits are needed too
    std::set<PictureTile> neededShown;
};

/// coarserFirst: with `coarser`.
Wanted wantedFor(StoreInfo const& info, View const& view, ShownTiles& tiles, bool coarserFirst);
