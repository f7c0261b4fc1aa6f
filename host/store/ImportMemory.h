#pragma once

#include "host/store/StoreInfo.h"

#include <cstdint>

/// What an import of such a picture holds at once: rows of each level and rows of tiles of each band, which grow with the
/// width and with the size of tiles; beside some megabytes that do not.
std::uint64_t importBytes(StoreInfo const& info);

/// Throws HostError (unreadable image) where that is more than a picture may take.
void requireImportMemory(StoreInfo const& info);
