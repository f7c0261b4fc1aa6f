#pragma once

#include "gles3renderbackend/LruMap.h"
#include "host/store/StoreInfo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

/// Decompressed tiles of a store, up to a budget in bytes: those used last are kept. Any thread.
class SampleCache {
public:
    using Samples = std::shared_ptr<std::vector<std::int16_t> const>;

    /// bytes: of the samples that are kept.
    explicit SampleCache(size_t bytes) : tiles_(bytes) {}

    /// Empty where the tile is not kept.
    Samples find(TileAddress const& address);
    void keep(TileAddress const& address, Samples const& samples);
    size_t bytes() const;

private:
    using Key = std::array<size_t, 5>;
    static Key keyOf(TileAddress const& address);

    mutable std::mutex mutex_;
    LruMap<Key, Samples> tiles_;
};
