#include "host/view/AlphaPlane.h"

#include <algorithm>

AlphaPlane::AlphaPlane(FilterRunner const& targets, LevelTiles& tiles, StoreInfo const& info)
    : targets_(targets), tiles_(tiles), info_(info) {}

void AlphaPlane::put(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles) {
    Region const shown = view.pixelsOf(info_);
    for (LevelTile const& tile : tiles)
        put(rgba, view, common(shown, leveltile::pixelRegion(info_, view.zoom, tile)),
            tiles_.plane(tile, info_.bands - 1));
}

// pixels: of the picture, within the view and the tile.
void AlphaPlane::put(std::vector<std::uint8_t>& rgba, View const& view, Region const& pixels,
                     PlanePart const& plane) const {
    Region const& region = plane.region;
    std::vector<unsigned char> const bytes =
        targets_.read(plane.target, SampleLayout::kOneChannel16, wholeOf(sizeOf(region)));
    auto const toX = static_cast<size_t>(static_cast<std::int64_t>(pixels.x) - view.x);
    auto const toY = static_cast<size_t>(static_cast<std::int64_t>(pixels.y) - view.y);
    for (size_t y = 0; y < pixels.height; ++y) {
        size_t const row = (view.zoom.sampleAt(pixels.y + y) - region.y) * region.width;
        for (size_t x = 0; x < pixels.width; ++x) {
            size_t const place = 2 * (row + view.zoom.sampleAt(pixels.x + x) - region.x);
            auto const sample = static_cast<std::int16_t>(bytes[place] | bytes[place + 1] << 8U);
            int const code = sample >> (tiles_.depth() - LevelTiles::kShownDepth);
            rgba[4 * ((toY + y) * view.width + toX + x) + 3] = static_cast<std::uint8_t>(std::clamp(code, 0, 255));
        }
    }
}
