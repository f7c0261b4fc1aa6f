#include "host/view/AlphaTexels.h"

void alphatexels::put(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles,
                      PictureInfo const& info, FilterRunner const& targets, RebuiltTiles& pixels) {
    Region const shown = view.pixelsOf(info);
    for (LevelTile const& tile : tiles) {
        Region const samples = leveltile::shownRegion(info, tile);
        Region const part = common(shown, leveltile::pixelRegion(info, view.zoom, tile));
        auto const texels = targets.read(*pixels.pixels(tile), SampleLayout::kRgba8, wholeOf(sizeOf(samples)));
        auto const toX = static_cast<size_t>(static_cast<std::int64_t>(part.x) - view.x);
        auto const toY = static_cast<size_t>(static_cast<std::int64_t>(part.y) - view.y);
        for (size_t y = 0; y < part.height; ++y) {
            size_t const row = (view.zoom.sampleAt(part.y + y) - samples.y) * samples.width;
            for (size_t x = 0; x < part.width; ++x)
                rgba[4 * ((toY + y) * view.width + toX + x) + 3] =
                    texels[4 * (row + view.zoom.sampleAt(part.x + x) - samples.x) + 3];
        }
    }
}
