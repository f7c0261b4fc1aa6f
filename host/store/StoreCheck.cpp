#include "host/store/StoreCheck.h"

#include "host/HostError.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<Band, 5> kBands{Band::LL, Band::HL, Band::LH, Band::HH, Band::Residual};

// In the order in which the tiles lie in the file.
template <class Visit>
void forEachCell(StoreInfo const& info, size_t level, Visit const& visit) {
    Extent const tiles = storegeometry::tileCount(info, level);
    for (size_t row = 0; row < tiles.height; ++row)
        for (size_t column = 0; column < tiles.width; ++column)
            visit(TileAddress{level, Band::LL, 0, column, row});
}

template <class Visit>
void forEachTile(StoreInfo const& info, TileAddress address, Visit const& visit) {
    for (Band const band : kBands) {
        address.band = band;
        for (address.plane = 0; address.plane < info.bands; ++address.plane)
            if (storegeometry::contains(info, address)) visit(address);
    }
}

bool samePlace(TileAddress const& a, TileAddress const& b) {
    return a.column == b.column && a.row == b.row;
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

bool hasData(TileStore& store, TileAddress const& cell) {
    bool data = false;
    forEachTile(store.info(), cell,
                [&](TileAddress const& address) { data = data || store.uniformValue(address) != std::int16_t{0}; });
    return data;
}

// Readers pass over the places that are not in the index.
void checkIndex(TileStore& store, size_t level, StoreCheckResult& result) {
    auto const indexed = store.cellsWithData(level);
    std::vector<TileAddress> cells;
    forEachCell(store.info(), level, [&](TileAddress const& cell) {
        if (hasData(store, cell)) cells.push_back(cell);
    });
    if (!std::equal(cells.begin(), cells.end(), indexed.begin(), indexed.end(), samePlace))
        note(result, "the tile store '" + store.path() + "' is damaged: the index of level " + std::to_string(level) +
                         " does not fit its tiles");
}

} // namespace

StoreCheckResult checkStore(TileStore& store, CheckProgress const& progress) {
    size_t const expected = storegeometry::totalTiles(store.info());
    StoreCheckResult result;
    for (size_t level = 0; level <= store.info().levels; ++level) {
        forEachCell(store.info(), level, [&](TileAddress const& cell) {
            forEachTile(store.info(), cell, [&](TileAddress const& address) {
                progress(result.tiles, expected);
                checkTile(store, address, result);
                ++result.tiles;
            });
        });
        // What is missing or damaged is not in the index either, and need not be told twice.
        if (result.damages == 0) checkIndex(store, level, result);
    }
    progress(expected, expected);
    size_t const stored = store.storedTiles();
    if (stored > expected)
        note(result, "the tile store '" + store.path() + "' holds " + std::to_string(stored) + " tiles instead of " +
                         std::to_string(expected));
    return result;
}
