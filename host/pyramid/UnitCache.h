#pragma once

#include "gles3renderbackend/LruMap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

/// Decoded tiles and strips of a file, up to a budget in bytes: those used last are kept. Any thread; the lock is held
/// for a look-up, never while a tile is decoded.
class UnitCache {
public:
    using Key = std::array<size_t, 3>; ///< level, plane, number of the unit
    using Samples = std::shared_ptr<std::vector<std::uint8_t> const>;

    /// bytes: of the samples that are kept. A single unit may exceed it.
    explicit UnitCache(size_t bytes) : units_(bytes) {}

    /// Empty where the unit is not kept.
    Samples find(Key const& key);
    void keep(Key const& key, Samples const& samples);
    size_t bytes() const;

private:
    mutable std::mutex mutex_;
    LruMap<Key, Samples> units_;
};
