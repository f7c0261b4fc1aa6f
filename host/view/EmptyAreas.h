#pragma once

#include "host/filter/TileNumbers.h"
#include "host/store/TileStore.h"
#include "host/view/LevelTile.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/RenderBackendInstance.h"

#include <map>
#include <memory>
#include <vector>

/// Where the levels of a store have coefficients other than 0, as data envelopes of the backend: one set a level, its
/// cells the store's tiles. What lies outside needs no reading. GL thread only.
class EmptyAreas {
public:
    /// The store outlives it.
    EmptyAreas(std::shared_ptr<RenderBackendInstance> instance, TileStore& store);
    ~EmptyAreas();
    EmptyAreas(EmptyAreas const&) = delete;
    EmptyAreas& operator=(EmptyAreas const&) = delete;

    /// Whether all high bands that a tile is rebuilt from are 0. Tiles of the coarsest level are never empty.
    bool empty(LevelTile const& tile);
    /// The parts of a level's samples, at most the coarsest's, that have data: rectangles that do not overlap.
    std::vector<Region> withData(size_t level, Region const& region);

private:
    using Id = std::vector<unsigned char>;

    struct Level {
        Id id;
        std::shared_ptr<DataEnvelopes const> envelopes; // empty: not read yet
    };

    DataEnvelopes const& envelopes(size_t bandLevel);
    Id idOf(size_t bandLevel) const;

    std::shared_ptr<RenderBackendInstance> instance_;
    TileStore& store_;
    TileNumbers numbers_;            // of no tiles: they tell this view's sets from others'
    std::map<size_t, Level> levels_; // by the level of the bands
};
