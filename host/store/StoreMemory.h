#pragma once

#include "host/store/StoreInfo.h"

#include <cstddef>

/// What a store's picture takes, before it is taken.
namespace storememory {

/// The most that an export holds at once: the rows of all levels that the inverse transform works on, and a row of tiles of
/// each band.
std::size_t exportBytes(StoreInfo const& info);

/// The machine's memory, or what the process may take of it where that is less.
std::size_t availableBytes();

} // namespace storememory
