#include "host/store/StoreInfo.h"

#include <algorithm>

namespace {

size_t tilesAlong(size_t samples, size_t tileSize) {
    return (samples + tileSize - 1) / tileSize;
}

char const* nameOf(Band band) {
    switch (band) {
    case Band::LL:
        return "LL";
    case Band::HL:
        return "HL";
    case Band::LH:
        return "LH";
    case Band::HH:
        return "HH";
    case Band::Residual:
        return "the residual bits";
    }
    return "";
}

} // namespace

std::string toText(TileAddress const& address) {
    return "tile " + std::to_string(address.column) + "," + std::to_string(address.row) + " of " +
           nameOf(address.band) + ", plane " + std::to_string(address.plane) + ", level " +
           std::to_string(address.level);
}

size_t storegeometry::autoLevels(size_t width, size_t height, size_t tileSize) {
    size_t longer = wavelet53::bandSamples(std::max(width, height));
    size_t levels = 1;
    for (; longer > tileSize && levels < StoreInfo::kMaxLevels; ++levels)
        longer = wavelet53::bandSamples(longer);
    return levels;
}

Size storegeometry::bandExtent(StoreInfo const& info, size_t level) {
    Size extent{info.width, info.height};
    for (size_t i = 0; i < level; ++i)
        extent = {wavelet53::bandSamples(extent.width), wavelet53::bandSamples(extent.height)};
    return extent;
}

Size storegeometry::tileCount(StoreInfo const& info, size_t level) {
    Size const extent = bandExtent(info, level);
    return {tilesAlong(extent.width, info.tileSize), tilesAlong(extent.height, info.tileSize)};
}

bool storegeometry::contains(StoreInfo const& info, TileAddress const& address) {
    if (address.plane >= info.bands || address.level > info.levels) return false;
    bool const residual = address.band == Band::Residual;
    if (residual != (address.level == 0)) return false;
    if (residual && info.residualBits == 0) return false;
    if (address.band == Band::LL && address.level != info.levels) return false;
    Size const tiles = tileCount(info, address.level);
    return address.column < tiles.width && address.row < tiles.height;
}

Size storegeometry::filledPart(StoreInfo const& info, TileAddress const& address) {
    Size const extent = bandExtent(info, address.level);
    return {std::min(info.tileSize, extent.width - address.column * info.tileSize),
            std::min(info.tileSize, extent.height - address.row * info.tileSize)};
}

size_t storegeometry::totalTiles(StoreInfo const& info) {
    auto const tilesOf = [&](size_t level) {
        Size const tiles = tileCount(info, level);
        return tiles.width * tiles.height * info.bands;
    };
    size_t total = tilesOf(info.levels);
    if (info.residualBits > 0) total += tilesOf(0);
    for (size_t level = 1; level <= info.levels; ++level)
        total += 3 * tilesOf(level);
    return total;
}
