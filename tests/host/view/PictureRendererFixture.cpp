#include "tests/host/view/PictureRendererFixture.h"

#include "host/view/LevelTile.h"
#include "tests/host/store/LevelModel.h"

#include <cmath>

using testpictures::Picture;

namespace {

using Bytes = std::vector<std::uint8_t>;

Region wholeOf(StoreInfo const& info, size_t level) {
    Size const extent = leveltile::levelExtent(info, level);
    return {0, 0, extent.width, extent.height};
}

Bytes renderedBy(PictureRenderer& renderer, size_t level, Region const& region) {
    Bytes bytes;
    size_t const rowBytes = region.width * renderer.bands();
    Zoom const zoom = Zoom::nearest(std::ldexp(1.0, -static_cast<int>(level)), renderer.info().levels);
    renderer.render(
        zoom, false, region,
        [&](std::uint8_t const* rows, size_t count) { bytes.insert(bytes.end(), rows, rows + count * rowBytes); },
        [](size_t, size_t) {});
    return bytes;
}

} // namespace

StoreInfo PictureRendererFixture::import(Picture const& picture, size_t tileSize, std::optional<size_t> levels) const {
    ImportOptions options;
    options.tileSize = tileSize;
    options.levels = levels;
    options.replace = true;
    return testpictures::import(picture, path(), options);
}

PictureRendererFixture::Bytes PictureRendererFixture::rendered(size_t level, Region const& region,
                                                               std::vector<enhancement::Step> const& steps) const {
    PictureRenderer renderer(instance_, path(), steps);
    return renderedBy(renderer, level, region);
}

PictureRendererFixture::Bytes PictureRendererFixture::renderedWhole(StoreInfo const& info, size_t level) const {
    PictureRenderer renderer(instance_, path(), {});
    return renderedBy(renderer, level, wholeOf(info, level));
}

void PictureRendererFixture::expectEveryLevel(Picture const& picture, size_t tileSize,
                                              std::optional<size_t> levels) const {
    StoreInfo const info = import(picture, tileSize, levels);
    std::vector<Bytes> const expected = levelmodel::levelsOf(picture, info.levels);
    // One for all levels: its programs are what takes time.
    PictureRenderer renderer(instance_, path(), {});
    for (size_t level = 0; level <= info.levels; ++level)
        EXPECT_TRUE(renderedBy(renderer, level, wholeOf(info, level)) == expected[level])
            << picture.width << " x " << picture.height << ", " << picture.bands << " bands of " << picture.bits
            << " bits, level " << level;
}
