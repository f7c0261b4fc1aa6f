#pragma once

#include "host/store/TileStore.h"

#include <functional>
#include <string>
#include <vector>

struct StoreCheckResult {
    static constexpr size_t kMaxDescribed = 20;

    size_t tiles = 0;   ///< that were read
    size_t damages = 0; ///< tiles that are missing or do not match their checksum, surplus ones, a wrong index
    std::vector<std::string> descriptions; ///< of the first kMaxDescribed, one line each
};

/// Tiles read so far and tiles in all. May throw to stop the check.
using CheckProgress = std::function<void(size_t doneTiles, size_t allTiles)>;

/// Reads every tile that the store must have. Throws what TileStore throws, but for damaged tiles, which are counted.
StoreCheckResult checkStore(TileStore& store, CheckProgress const& progress);
