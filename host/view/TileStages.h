#pragma once

#include "host/view/TileReader.h"
#include "host/view/TileRequest.h"

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

/// The stages of a tile, on its way from a file to the screen. TilePipeline decides which tile passes which one next;
/// PictureStages do the work, and tests have stages that only take notes.
///
///     load, takeLoaded --> rebuilt, out of what was loaded, out of the backend's cache or out of nothing --> enhanced
///                          residual bits, of stores of 16 bits --------------------------------------------^
class TileStages {
public:
    virtual ~TileStages() = default;

    /// Whether a tile is rebuilt out of its parent, which has to be there first.
    virtual bool needsParents() const = 0;
    /// Whether tiles of the level are shown until finer ones are there; those of the coarsest always are.
    virtual bool standsIn(size_t level) const = 0;
    /// Whether samples of the level have bits besides those that its tiles are rebuilt with.
    virtual bool hasResidualBits(size_t level) const = 0;

    /// Whether the tile's bands are all 0 and need no loading. Throws HostError where that cannot be read.
    virtual bool isEmpty(LevelTile const& tile) = 0;
    /// What is to be loaded, the first job first, in place of jobs that are not begun.
    virtual void load(std::vector<TileJob> const& jobs) = 0;
    /// A tile that is loaded, or has failed to; null where there is none.
    virtual std::unique_ptr<LoadedTile> takeLoaded() = 0;
    /// Jobs that are not taken yet.
    virtual size_t loading() const = 0;

    virtual bool isRebuilt(LevelTile const& tile) const = 0;
    /// Whether the backend's cache still has what the tile was built from before.
    virtual bool hasBands(LevelTile const& tile) const = 0;
    virtual void buildFromLoaded(LoadedTile const& loaded) = 0;
    virtual void buildFromCache(LevelTile const& tile) = 0;
    virtual void buildEmpty(LevelTile const& tile) = 0;

    virtual bool hasResiduals(LevelTile const& tile) const = 0;
    virtual void keepResiduals(LoadedTile&& loaded) = 0;
    /// Drops the residual bits of all other tiles.
    virtual void keepResidualsOf(std::set<LevelTile> const& tiles) = 0;

    /// What a tile is enhanced from.
    virtual TileSources sourcesOf(LevelTile const& tile) = 0;
    virtual bool isEnhanced(LevelTile const& tile) const = 0;
    virtual void enhance(LevelTile const& tile) = 0;

    /// Drop tiles that are not needed, those used longest ago first, down to so many bytes. Return the bytes that went.
    virtual size_t trimRebuilt(size_t bytes, std::set<LevelTile> const& needed) = 0;
    virtual size_t trimEnhanced(size_t bytes, std::set<LevelTile> const& needed) = 0;
    virtual size_t enhancedBytes() const = 0;
    /// Frees the memory of what went, which the backend keeps for the next tiles.
    virtual void freeTrimmed() = 0;
};
