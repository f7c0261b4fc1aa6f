#include "host/view/CoarsestSamples.h"

#include "host/HostError.h"
#include "host/pyramid/PyramidTiles.h"
#include "host/store/ColourPlanes.h"
#include "host/store/TileStore.h"
#include "host/view/LevelTile.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr size_t kMostPixels = 1 << 22; // of a store: who made it may have chosen few levels

// Pixels of a place in the coarsest level's grid of tiles, as far as they show the picture.
void append(TileStore& store, size_t column, size_t row, std::vector<std::uint8_t>& samples) {
    StoreInfo const& info = store.info();
    Size const shown = leveltile::levelExtent(info, info.levels);
    StoreInfo part = info;
    part.width = std::min(info.tileSize, shown.width - column * info.tileSize);
    part.height = std::min(info.tileSize, shown.height - row * info.tileSize);
    std::vector<std::vector<std::int16_t>> planes;
    for (size_t plane = 0; plane < info.bands; ++plane)
        planes.push_back(store.tile({info.levels, Band::LL, plane, column, row}));
    ColourPlanes colours(part);
    std::vector<std::uint8_t> pixels(part.width * info.bands * info.bits / 8);
    for (size_t y = 0; y < part.height; ++y) {
        for (size_t plane = 0; plane < info.bands; ++plane)
            std::copy_n(&planes[plane][y * info.tileSize], part.width, colours.plane(plane));
        colours.join(pixels.data());
        samples.insert(samples.end(), pixels.begin(), pixels.end());
    }
}

// Of every n-th place along each axis, so that they are not too many.
std::vector<std::uint8_t> readOf(TileStore& store) {
    StoreInfo const& info = store.info();
    Size const shown = leveltile::levelExtent(info, info.levels);
    auto const partsOf = [](size_t length, size_t part) { return (length - 1) / part + 1; };
    Size const tiles = {partsOf(shown.width, info.tileSize), partsOf(shown.height, info.tileSize)};
    size_t const mostTiles = std::max<size_t>(kMostPixels / (info.tileSize * info.tileSize), 1);
    size_t step = 1;
    while (partsOf(tiles.width, step) * partsOf(tiles.height, step) > mostTiles)
        ++step;
    std::vector<std::uint8_t> samples;
    for (size_t row = 0; row < tiles.height; row += step)
        for (size_t column = 0; column < tiles.width; column += step)
            append(store, column, row, samples);
    return samples;
}

} // namespace

std::vector<std::uint8_t> coarsestsamples::of(Pyramid const& pyramid, size_t level, StackPosition const& position) {
    PyramidTiles levels(pyramid.reader());
    std::vector<size_t> bands(pyramid.facts().image.layout.bands);
    std::iota(bands.begin(), bands.end(), size_t{0});
    levels.take(bands, position);
    Size const size = levels.size(level);
    std::vector<std::uint8_t> samples(size.width * size.height * levels.facts().image.layout.pixelBytes());
    levels.read(level, wholeOf(size), samples.data());
    return samples;
}

std::vector<std::uint8_t> coarsestsamples::of(TileStore& store) {
    try {
        return readOf(store);
    } catch (HostError const& error) {
        if (error.kind() != HostError::Kind::DamagedStore) throw;
        return {};
    }
}
