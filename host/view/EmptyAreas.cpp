#include "host/view/EmptyAreas.h"

#include "host/Quietly.h"

#include <algorithm>

namespace {

DataEnvelopes::Corner corner(size_t x, size_t y) {
    return {static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
}

} // namespace

EmptyAreas::EmptyAreas(std::shared_ptr<RenderBackendInstance> instance, TileStore& store)
    : instance_(std::move(instance)), store_(store), numbers_(instance_) {}

EmptyAreas::~EmptyAreas() {
    for (auto const& level : levels_)
        quietly([&] { instance_->unlockDataEnvelopes(level.second.id); });
}

bool EmptyAreas::empty(LevelTile const& tile) {
    StoreInfo const& info = store_.info();
    if (tile.level == info.levels) return false;
    Region const bands = leveltile::bandRegion(info, tile);
    size_t const side = info.tileSize;
    return envelopes(tile.level + 1)
               .coverage(corner(bands.x / side, bands.y / side),
                         corner((bands.x + bands.width - 1) / side, (bands.y + bands.height - 1) / side)) == 0;
}

std::vector<Region> EmptyAreas::withData(size_t level, Region const& region) {
    StoreInfo const& info = store_.info();
    bool const coarsest = level == info.levels;
    size_t const cell = coarsest ? info.tileSize : 2 * info.tileSize; // samples of the level
    auto const found =
        envelopes(coarsest ? level : level + 1)
            .envelopes(corner(region.x / cell, region.y / cell),
                       corner((region.x + region.width - 1) / cell, (region.y + region.height - 1) / cell));
    std::vector<Region> areas;
    for (auto const& rectangle : found) { // min x, max x, min y, max y
        Region const area = {rectangle[0] * cell, rectangle[2] * cell, (rectangle[1] - rectangle[0] + 1) * cell,
                             (rectangle[3] - rectangle[2] + 1) * cell};
        areas.push_back(common(area, region));
    }
    return areas;
}

// Read when a level is needed first: the finest of a large picture has many tiles.
DataEnvelopes const& EmptyAreas::envelopes(size_t bandLevel) {
    Level& level = levels_.try_emplace(bandLevel, Level{idOf(bandLevel), nullptr}).first->second;
    if (level.envelopes) return *level.envelopes;
    std::vector<std::vector<unsigned int>> cells;
    for (auto const& cell : store_.cellsWithData(bandLevel))
        cells.push_back({static_cast<unsigned int>(cell.column), static_cast<unsigned int>(cell.row)});
    instance_->dataEnvelopes(level.id, {{{}, cells}});
    instance_->lockDataEnvelopes(level.id);
    level.envelopes = instance_->dataEnvelopes(level.id);
    return *level.envelopes;
}

// Several views may share an instance, and none can erase its sets there: those of a view that has gone are replaced by
// the next one's.
EmptyAreas::Id EmptyAreas::idOf(size_t bandLevel) const {
    Id id = {'l', static_cast<unsigned char>(bandLevel)};
    for (unsigned shift = 0; shift < 64; shift += 8)
        id.push_back(static_cast<unsigned char>(numbers_.id(0) >> shift & 0xFFU));
    return id;
}
