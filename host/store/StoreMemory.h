#pragma once

#include "host/store/StoreInfo.h"

#include <cstdint>
#include <string>

/// The memory that imports and exports of a picture need at once, known before any is allocated: rows of each level and
/// rows of tiles of each band. It grows with the width and with the tile size; some megabytes that do not grow are not
/// counted.
namespace storememory {

std::uint64_t importBytes(StoreInfo const& info);
std::uint64_t exportBytes(StoreInfo const& info);

/// Throws HostError (unreadable image) if an import would exceed the memory budget of a picture.
void requireForImport(StoreInfo const& info);

/// Throws HostError (out of memory) if an export of the store would exceed the free memory: a wide picture of uniform
/// areas is a small file.
void requireForExport(StoreInfo const& info, std::string const& store);

} // namespace storememory
