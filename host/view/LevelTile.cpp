#include "host/view/LevelTile.h"

#include "host/filter/FilterDescriptions.h"

#include <algorithm>

namespace {

// `length` samples from the tile's corner on, up to the level's last.
Region fromCorner(LevelTile const& tile, size_t length, Size const& extent) {
    size_t const x = tile.column * leveltile::kSide;
    size_t const y = tile.row * leveltile::kSide;
    return {x, y, std::min(length, extent.width - x), std::min(length, extent.height - y)};
}

// {x0, x1, y0, y1}, ends inclusive.
std::vector<size_t> toRange(Region const& region) {
    return {region.x, region.x + region.width - 1, region.y, region.y + region.height - 1};
}

Region fromRange(std::vector<size_t> const& range) {
    return {range[0], range[2], range[1] + 1 - range[0], range[3] + 1 - range[2]};
}

} // namespace

Size leveltile::levelExtent(PictureInfo const& info, size_t level) {
    return halved({info.width, info.height}, level);
}

Size leveltile::pixelExtent(PictureInfo const& info, Zoom const& zoom) {
    Size const level = levelExtent(info, zoom.level());
    return {zoom.pixelsOf(level.width), zoom.pixelsOf(level.height)};
}

Region leveltile::shownRegion(PictureInfo const& info, LevelTile const& tile) {
    return fromCorner(tile, kSide, levelExtent(info, tile.level));
}

Region leveltile::pixelRegion(PictureInfo const& info, Zoom const& zoom, LevelTile const& tile) {
    Region const samples = shownRegion(info, tile);
    size_t const x = zoom.pixelsOf(samples.x);
    size_t const y = zoom.pixelsOf(samples.y);
    return {x, y, zoom.pixelsOf(samples.x + samples.width) - x, zoom.pixelsOf(samples.y + samples.height) - y};
}

Region leveltile::planeRegion(StoreInfo const& info, LevelTile const& tile) {
    return fromCorner(tile, kSide + kMargin, storegeometry::bandExtent(info, tile.level));
}

Region leveltile::bandRegion(StoreInfo const& info, LevelTile const& tile) {
    Region const bands = fromRange(description::filterFirIV53LeGall16().inputRange(
        description::filterFirIH53LeGall16().inputRange(toRange(planeRegion(info, tile)))));
    // Filters count whole steps of their grid, so they ask for a sample more than they read; two samples share a texel.
    Size const extent = storegeometry::bandExtent(info, tile.level + 1);
    return {bands.x, bands.y, std::min(bands.width + bands.width % 2, extent.width - bands.x),
            std::min(bands.height, extent.height - bands.y)};
}

LevelTile leveltile::parent(LevelTile const& tile) {
    return {tile.level + 1, tile.column / 2, tile.row / 2};
}

std::vector<LevelTile> leveltile::over(size_t level, Region const& region) {
    std::vector<LevelTile> tiles;
    if (region.width == 0 || region.height == 0) return tiles;
    for (size_t row = region.y / kSide; row * kSide < region.y + region.height; ++row) {
        for (size_t column = region.x / kSide; column * kSide < region.x + region.width; ++column)
            tiles.push_back({level, column, row});
    }
    return tiles;
}
