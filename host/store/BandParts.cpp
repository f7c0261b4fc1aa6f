#include "host/store/BandParts.h"

#include <algorithm>
#include <utility>

BandParts::BandParts(TileStore& store, std::shared_ptr<SampleCache> cache) : store_(store), cache_(std::move(cache)) {}

BandSamples BandParts::part(TileAddress const& of, Region const& region) {
    StoreInfo const& info = store_.info();
    size_t const side = info.tileSize;
    Size const tiles = storegeometry::tileCount(info, of.level);
    std::vector<TileAddress> addresses;
    std::vector<std::optional<std::int16_t>> values;
    for (size_t row = region.y / side; row < tiles.height && row * side < region.y + region.height; ++row) {
        for (size_t column = region.x / side; column < tiles.width && column * side < region.x + region.width;
             ++column) {
            addresses.push_back({of.level, of.band, of.plane, column, row});
            values.push_back(store_.uniformValue(addresses.back()));
        }
    }
    bool const uniform = std::all_of(values.begin(), values.end(),
                                     [&](auto const& value) { return value && *value == *values.front(); });
    if (uniform) return {values.front(), {}};
    BandSamples part = {std::nullopt, std::vector<std::int16_t>(region.width * region.height)};
    for (size_t i = 0; i < addresses.size(); ++i)
        put(part, region, addresses[i], values[i]);
    return part;
}

void BandParts::put(BandSamples& part, Region const& region, TileAddress const& address,
                    std::optional<std::int16_t> value) {
    size_t const side = store_.info().tileSize;
    Region const tile = {address.column * side, address.row * side, side, side};
    Region const shared = common(tile, region);
    SampleCache::Samples const tileSamples = value ? nullptr : samples(address);
    for (size_t y = shared.y; y < shared.y + shared.height; ++y) {
        std::int16_t* const to = &part.samples[(y - region.y) * region.width + shared.x - region.x];
        if (value)
            std::fill_n(to, shared.width, *value);
        else
            std::copy_n(&(*tileSamples)[(y - tile.y) * side + shared.x - tile.x], shared.width, to);
    }
}

SampleCache::Samples BandParts::samples(TileAddress const& address) {
    if (auto kept = cache_->find(address)) return kept;
    SampleCache::Samples read = std::make_shared<std::vector<std::int16_t> const>(store_.tile(address));
    cache_->keep(address, read);
    return read;
}
