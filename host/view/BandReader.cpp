#include "host/view/BandReader.h"

#include "host/Threads.h"

#include <algorithm>

namespace {

size_t bandLevel(StoreInfo const& info, LevelTile const& tile) {
    return std::min(tile.level + 1, info.levels);
}

void putSample(std::uint8_t* to, std::int16_t sample) {
    auto const bits = static_cast<std::uint16_t>(sample);
    to[0] = static_cast<std::uint8_t>(bits & 0xFFU);
    to[1] = static_cast<std::uint8_t>(bits >> 8U);
}

} // namespace

std::vector<Band> const& bandsFor(StoreInfo const& info, LevelTile const& tile) {
    static std::vector<Band> const coarsest = {Band::LL};
    static std::vector<Band> const others = {Band::HL, Band::LH, Band::HH};
    return tile.level == info.levels ? coarsest : others;
}

Region partRegion(StoreInfo const& info, LevelTile const& tile) {
    if (tile.level < info.levels) return leveltile::bandRegion(info, tile);
    Region region = leveltile::planeRegion(info, tile);
    region.width += region.width % 2;
    return region;
}

BandReader::BandReader(std::string const& storePath, std::shared_ptr<SampleCache> cache)
    : store_(storePath), cache_(std::move(cache)) {}

void BandReader::read(LoadedTile& tile) {
    StoreInfo const& info = store_.info();
    TileJob const& job = tile.job;
    std::vector<BandPart>& parts = tile.parts;
    for (size_t plane = 0; plane < info.bands; ++plane) {
        if (job.what == TileJob::What::Residuals) {
            parts.push_back(part({0, Band::Residual, plane, 0, 0}, leveltile::shownRegion(info, job.tile)));
            continue;
        }
        for (Band const band : bandsFor(info, job.tile))
            parts.push_back(part({bandLevel(info, job.tile), band, plane, 0, 0}, partRegion(info, job.tile)));
    }
}

// A region of a band; of the address column and row do not count.
BandPart BandReader::part(TileAddress const& of, Region const& region) {
    StoreInfo const& info = store_.info();
    BandPart part = {of.band, of.plane, region, std::nullopt, {}};
    size_t const side = info.tileSize;
    Size const tiles = storegeometry::tileCount(info, of.level);
    std::vector<TileAddress> addresses;
    std::vector<std::optional<std::int16_t>> values;
    Region const& cells = part.region;
    for (size_t row = cells.y / side; row < tiles.height && row * side < cells.y + cells.height; ++row) {
        for (size_t column = cells.x / side; column < tiles.width && column * side < cells.x + cells.width; ++column) {
            addresses.push_back({of.level, of.band, of.plane, column, row});
            values.push_back(store_.uniformValue(addresses.back()));
        }
    }
    bool const uniform = std::all_of(values.begin(), values.end(),
                                     [&](auto const& value) { return value && *value == *values.front(); });
    if (uniform) {
        part.value = values.front();
        return part;
    }
    part.bytes.resize(2 * cells.width * cells.height);
    for (size_t i = 0; i < addresses.size(); ++i)
        put(part, addresses[i], values[i]);
    return part;
}

void BandReader::put(BandPart& part, TileAddress const& address, std::optional<std::int16_t> value) {
    size_t const side = store_.info().tileSize;
    Region const tile = {address.column * side, address.row * side, side, side};
    Region const shared = common(tile, part.region);
    SampleCache::Samples const tileSamples = value ? nullptr : samples(address);
    for (size_t y = shared.y; y < shared.y + shared.height; ++y) {
        std::uint8_t* to = &part.bytes[2 * ((y - part.region.y) * part.region.width + shared.x - part.region.x)];
        size_t from = (y - tile.y) * side + shared.x - tile.x;
        for (size_t x = 0; x < shared.width; ++x, to += 2, ++from)
            putSample(to, value ? *value : (*tileSamples)[from]);
    }
}

SampleCache::Samples BandReader::samples(TileAddress const& address) {
    if (auto kept = cache_->find(address)) return kept;
    SampleCache::Samples read = std::make_shared<std::vector<std::int16_t> const>(store_.tile(address));
    cache_->keep(address, read);
    return read;
}

std::vector<std::unique_ptr<TileReader>> bandReaders(std::string const& storePath, size_t wanted,
                                                     std::shared_ptr<SampleCache> const& cache) {
    std::vector<std::unique_ptr<TileReader>> readers;
    for (size_t i = 0; i < threadsFor(wanted); ++i)
        readers.push_back(std::make_unique<BandReader>(storePath, cache));
    return readers;
}
