#pragma once

#include "host/view/LevelTiles.h"
#include "host/view/View.h"

#include <cstdint>
#include <vector>

/// Alpha of frames that are read back: neither enhanced nor weighed, the upper byte of what is stored.
class AlphaPlane {
public:
    /// All of them outlive it. The picture has alpha.
    AlphaPlane(FilterRunner const& targets, LevelTiles& tiles, StoreInfo const& info);

    /// Puts the alpha of tiles of the view's level, which are rebuilt, into the view's RGBA texels.
    void put(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles);

private:
    void put(std::vector<std::uint8_t>& rgba, View const& view, Region const& pixels, PlanePart const& plane) const;

    FilterRunner const& targets_;
    LevelTiles& tiles_;
    StoreInfo info_;
};
