#pragma once

#include "host/filter/FilterRunner.h"
#include "host/view/LevelTile.h"

/// Tiles of a picture's levels on the GPU, not enhanced. GL thread only.
class RebuiltTiles {
public:
    virtual ~RebuiltTiles() = default;

    /// Of the pixels: RGBA texels where a sample has 8 bits, else three channels of 16.
    virtual SampleLayout layout() const = 0;
    /// Bits of a sample.
    virtual unsigned depth() const = 0;
    virtual bool has(LevelTile const& tile) const = 0;
    /// The pixels of leveltile::shownRegion(), in the target's upper left corner; null where the tile is not there.
    virtual OwnedTarget const* pixels(LevelTile const& tile) = 0;
};
