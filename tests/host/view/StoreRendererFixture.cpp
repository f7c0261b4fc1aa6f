#include "tests/host/view/StoreRendererFixture.h"

#include "host/view/LevelTile.h"
#include "tests/host/store/LevelModel.h"

#include <cmath>

using testpictures::Picture;

namespace {

using Bytes = std::vector<std::uint8_t>;

Region wholeOf(StoreInfo const& info, std::size_t level) {
    Size const extent = leveltile::levelExtent(info, level);
    return {0, 0, extent.width, extent.height};
}

Bytes renderedBy(StoreRenderer& renderer, std::size_t level, Region const& region) {
    Bytes bytes;
    std::size_t const rowBytes = region.width * renderer.bands();
    Zoom const zoom = Zoom::nearest(std::ldexp(1.0, -static_cast<int>(level)), renderer.info().levels);
    renderer.render(
        zoom, false, region,
        [&](std::uint8_t const* rows, std::size_t count) { bytes.insert(bytes.end(), rows, rows + count * rowBytes); },
        [](std::size_t, std::size_t) {});
    return bytes;
}

} // namespace

StoreInfo StoreRendererFixture::import(Picture const& picture, std::size_t tileSize,
                                       std::optional<std::size_t> levels) const {
    ImportOptions options;
    options.tileSize = tileSize;
    options.levels = levels;
    options.replace = true;
    return testpictures::import(picture, path(), options);
}

StoreRendererFixture::Bytes StoreRendererFixture::rendered(std::size_t level, Region const& region,
                                                           std::vector<enhancement::Step> const& steps) const {
    StoreRenderer renderer(instance_, path(), steps);
    return renderedBy(renderer, level, region);
}

StoreRendererFixture::Bytes StoreRendererFixture::renderedWhole(StoreInfo const& info, std::size_t level) const {
    StoreRenderer renderer(instance_, path(), {});
    return renderedBy(renderer, level, wholeOf(info, level));
}

void StoreRendererFixture::expectEveryLevel(Picture const& picture, std::size_t tileSize,
                                            std::optional<std::size_t> levels) const {
    StoreInfo const info = import(picture, tileSize, levels);
    std::vector<Bytes> const expected = levelmodel::levelsOf(picture, info.levels);
    // One for all levels: its programs are what takes time.
    StoreRenderer renderer(instance_, path(), {});
    for (std::size_t level = 0; level <= info.levels; ++level)
        EXPECT_TRUE(renderedBy(renderer, level, wholeOf(info, level)) == expected[level])
            << picture.width << " x " << picture.height << ", " << picture.bands << " bands of " << picture.bits
            << " bits, level " << level;
}
