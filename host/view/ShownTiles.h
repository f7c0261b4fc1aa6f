#pragma once

#include "host/filter/EnhancementChain.h"
#include "host/view/LevelSamples.h"
#include "host/view/LevelTiles.h"
#include "host/view/TileRequest.h"

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <vector>

/// Picture tiles as they are shown: enhanced, 8 bits. Each is that part of its whole level enhanced. GL thread only.
/// Throws VelmoraException.
class ShownTiles {
public:
    /// All of them outlive it. samples: of tiles of 16 bits.
    ShownTiles(std::shared_ptr<RenderBackendInstance> instance, FilterRunner& targets, RebuiltTiles& tiles,
               LevelSamples* samples, PictureInfo const& info);

    /// The enhancements from now on; drops all tiles. Throws HostError (usage) where they read too much around a pixel.
    void enhance(std::vector<enhancement::Step> const& steps);

    TileSources sourcesOf(LevelTile const& tile);
    bool has(LevelTile const& tile) const;
    /// Its sources are there, and their residual bits.
    void build(LevelTile const& tile);
    /// RGBA texels of leveltile::shownRegion(), in the target's upper left corner; null where the tile is not there.
    OwnedTarget const* texels(LevelTile const& tile);

    /// Drops all tiles: what they are made of has changed.
    void renew() { tiles_.clear(); }
    size_t trim(size_t bytes, std::set<LevelTile> const& needed) { return tiles_.trim(bytes, needed); }
    size_t bytes() const { return tiles_.bytes(); }

private:
    bool asRebuilt() const;
    EnhancementChain& chain(size_t level);
    std::vector<Region> pieces(LevelTile const& tile) const;
    OwnedTarget drawn(LevelTile const& tile, Region const& piece);
    OwnedTarget input(size_t level, Region const& region);

    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner& targets_;
    RebuiltTiles& rebuilt_;
    LevelSamples* samples_;
    PictureInfo info_;
    std::vector<enhancement::Step> steps_;
    size_t pieceSide_;
    std::map<size_t, std::unique_ptr<EnhancementChain>> chains_; // a picture's size belongs to a chain
    KeptTiles<OwnedTarget> tiles_;
};
