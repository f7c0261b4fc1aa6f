#pragma once

#include "host/Progress.h"
#include "host/store/TileStore.h"

#include <string>
#include <vector>

struct StoreCheckResult {
    static constexpr size_t kMaxDescribed = 20;

    size_t tiles = 0;   ///< tiles read
    size_t damages = 0; ///< missing tiles, tiles that do not match their checksum, surplus tiles, a wrong index
    std::vector<std::string> descriptions; ///< of the first kMaxDescribed damages, one line each
};

/// Reads every tile that the store must have. Throws what TileStore throws, except for damaged tiles, which are
/// counted.
StoreCheckResult checkStore(TileStore& store, Progress const& progress);
