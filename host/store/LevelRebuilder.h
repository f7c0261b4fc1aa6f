#pragma once

#include "host/PictureTargets.h"
#include "host/Region.h"
#include "host/store/TileStore.h"

#include <cstddef>

/// A part of a plane of a level in a target of one 16-bit channel: its first column is region.x, its first row region.y.
struct PlanePart {
    OwnedTarget target;
    Region region;
};

/// Rebuilds parts of a store's levels on the GPU, from the coarsest level down to the one that is asked for:
///
///     level 2   LL HL LH HH tiles, drawn side by side
///                |  |  |  |
///               columns, then rows          M x N samples of each band give (2M - 4) x (2N - 4)
///                    |
///     level 1       LL HL LH HH
///                    |  |  |  |
///                   columns, then rows
///                        |
///     level 0         samples of the picture
///
/// Level 0 is the picture, level k the low band that level k + 1 of the store was made into. What comes out is exact: the
/// store continues the bands beyond the picture's edge, so no edge is a case of its own. GL thread only. Throws what
/// TileStore throws, and VelmoraException.
class LevelRebuilder {
public:
    LevelRebuilder(PictureTargets& targets, TileStore& store);

    /// Samples of a level: those of the picture at level 0, half as many at each further one.
    static Extent levelExtent(StoreInfo const& info, std::size_t level);

    /// At least `region`, which lies in the level's band, from a corner on whose coordinates are multiples of 4.
    PlanePart rebuild(std::size_t level, std::size_t plane, Region const& region);

private:
    PlanePart bandPart(std::size_t level, Band band, std::size_t plane, Region const& cells);
    void drawTile(TileAddress const& address, PlanePart const& part);
    OwnedTarget step(Filter const& description, PlanePart const& low, PlanePart const& high, Region const& bands,
                     PictureTargets::Size const& output);

    PictureTargets& targets_;
    TileStore& store_;
};
