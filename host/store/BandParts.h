#pragma once

#include "host/store/SampleCache.h"
#include "host/store/TileStore.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// The samples of a region of a band.
struct BandSamples {
    std::optional<std::int16_t> value; ///< of all, where they have only one
    std::vector<std::int16_t> samples; ///< else all of them, rows tightly packed from the top
};

/// Cuts regions of bands out of a store's tiles, which it reads and decompresses where the cache does not have them.
/// One thread at a time; the cache may be shared. Throws what TileStore throws.
class BandParts {
public:
    BandParts(TileStore& store, std::shared_ptr<SampleCache> cache);

    /// A region of a band, not empty; of the address column and row do not count.
    BandSamples part(TileAddress const& of, Region const& region);

private:
    void put(BandSamples& part, Region const& region, TileAddress const& address, std::optional<std::int16_t> value);
    SampleCache::Samples samples(TileAddress const& address);

    TileStore& store_;
    std::shared_ptr<SampleCache> cache_;
};
