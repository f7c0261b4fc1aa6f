#include "host/store/StoreCheck.h"

#include "host/HostError.h"

namespace {

// In the order in which the tiles lie in the file.
template <class Visit>
void forEachTile(StoreInfo const& info, Visit const& visit) {
    for (size_t level = 0; level <= info.levels; ++level) {
        Extent const tiles = storegeometry::tileCount(info, level);
        for (size_t row = 0; row < tiles.height; ++row)
            for (size_t column = 0; column < tiles.width; ++column)
                for (Band const band : {Band::LL, Band::HL, Band::LH, Band::HH, Band::Residual})
                    for (size_t plane = 0; plane < info.bands; ++plane) {
                        TileAddress const address{level, band, plane, column, row};
                        if (storegeometry::contains(info, address)) visit(address);
                    }
    }
}

void note(StoreCheckResult& result, std::string const& description) {
    if (result.damages++ < StoreCheckResult::kMaxDescribed) result.descriptions.push_back(description);
}

void checkTile(TileStore& store, TileAddress const& address, StoreCheckResult& result) {
    try {
        store.tile(address);
    } catch (HostError const& error) {
        if (error.kind() != HostError::Kind::DamagedStore) throw;
        note(result, error.what());
    }
}

} // namespace

StoreCheckResult checkStore(TileStore& store, CheckProgress const& progress) {
    size_t const expected = storegeometry::totalTiles(store.info());
    StoreCheckResult result;
    forEachTile(store.info(), [&](TileAddress const& address) {
        progress(result.tiles, expected);
        checkTile(store, address, result);
        ++result.tiles;
    });
    progress(expected, expected);
    size_t const stored = store.storedTiles();
    if (stored > expected)
        note(result, "the tile store '" + store.path() + "' holds " + std::to_string(stored) + " tiles instead of " +
                         std::to_string(expected));
    return result;
}
