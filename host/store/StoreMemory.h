#pragma once

#include "host/store/StoreInfo.h"

#include <cstdint>
#include <string>

/// What imports and exports of a picture hold at once, known before any of it is taken: rows of each level and rows of
/// tiles of each band. They grow with the width and with the size of tiles; beside them are some megabytes that do not.
namespace storememory {

std::uint64_t importBytes(StoreInfo const& info);
std::uint64_t exportBytes(StoreInfo const& info);

/// Throws HostError (unreadable image) where an import takes more than a picture may.
void requireForImport(StoreInfo const& info);

/// Throws HostError (out of memory) where an export of the store takes more than there is: a wide picture of flat parts
/// is a small file.
void requireForExport(StoreInfo const& info, std::string const& store);

} // namespace storememory
