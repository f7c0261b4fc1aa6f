#include "host/store/StoreCheck.h"

#include "host/HostError.h"
#include "host/store/TileOrder.h"

#include <algorithm>
#include <optional>

namespace {

void note(StoreCheckResult& result, std::string const& description) {
    if (result.damages++ < StoreCheckResult::kMaxDescribed) result.descriptions.push_back(description);
}

// Nothing if `read` throws what damage throws.
template <class Read>
auto noted(StoreCheckResult& result, Read const& read) -> std::optional<decltype(read())> {
    try {
        return read();
    } catch (HostError const& error) {
        if (error.kind() != HostError::Kind::DamagedStore) throw;
        note(result, error.what());
        return std::nullopt;
    }
}

// Whether the tile has data; nothing where it is damaged.
std::optional<bool> checkTile(TileStore& store, TileAddress const& address, StoreCheckResult& result) {
    return noted(result, [&] {
        auto const value = store.uniformValue(address);
        if (!value) store.tile(address);
        return value != std::int16_t{0};
    });
}

// Readers pass over places that are not in the index, and older readers do not check the index.
void checkIndex(TileStore& store, size_t level, std::vector<TileAddress> const& places, StoreCheckResult& result) {
    auto const read = noted(result, [&] { return store.cellsInIndex(level); });
    if (!read || !*read) return;
    auto const& indexed = **read;
    if (!std::equal(places.begin(), places.end(), indexed.begin(), indexed.end(), tileorder::samePlace))
        note(result, "the tile store '" + store.path() + "' is damaged: the index of level " + std::to_string(level) +
                         " does not fit its tiles");
}

} // namespace

StoreCheckResult checkStore(TileStore& store, Progress const& progress) {
    size_t const expected = storegeometry::totalTiles(store.info());
    StoreCheckResult result;
    for (size_t level = 0; level <= store.info().levels; ++level) {
        std::vector<TileAddress> places; // with data
        tileorder::forEachPlace(store.info(), level, [&](TileAddress const& place) {
            bool hasData = false;
            tileorder::forEachTileAt(store.info(), place, [&](TileAddress const& address) {
                progress(result.tiles, expected);
                hasData = checkTile(store, address, result).value_or(true) || hasData;
                ++result.tiles;
            });
            if (hasData) places.push_back(place);
        });
        // Missing and damaged tiles are absent from the index too, and would be reported twice.
        if (result.damages == 0) checkIndex(store, level, places, result);
    }
    noted(result, [&] { return store.allMetadata().size(); });
    progress(expected, expected);
    auto const stored = noted(result, [&] { return store.storedTiles(); });
    if (stored && *stored > expected)
        note(result, "the tile store '" + store.path() + "' is damaged: it holds " + std::to_string(*stored) +
                         " tiles instead of " + std::to_string(expected));
    return result;
}
