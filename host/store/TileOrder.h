#pragma once

#include "host/store/StoreInfo.h"

#include <array>

/// The tiles that a store must have, in the order of their keys.
namespace tileorder {

/// Visits the places of a level's grid, row by row.
template <class Visit>
void forEachPlace(StoreInfo const& info, size_t level, Visit const& visit) {
    Size const tiles = storegeometry::tileCount(info, level);
    for (size_t row = 0; row < tiles.height; ++row)
        for (size_t column = 0; column < tiles.width; ++column)
            visit(TileAddress{level, Band::LL, 0, column, row});
}

/// Visits the tiles of all bands and planes at a place.
template <class Visit>
void forEachTileAt(StoreInfo const& info, TileAddress const& place, Visit const& visit) {
    constexpr std::array<Band, 5> kBands{Band::LL, Band::HL, Band::LH, Band::HH, Band::Residual};
    TileAddress address = place;
    for (Band const band : kBands) {
        address.band = band;
        for (address.plane = 0; address.plane < info.bands; ++address.plane)
            if (storegeometry::contains(info, address)) visit(address);
    }
}

inline bool samePlace(TileAddress const& a, TileAddress const& b) {
    return a.column == b.column && a.row == b.row;
}

} // namespace tileorder
