#pragma once

#include "host/store/TileStore.h"

#include <functional>
#include <string>

/// Rows written so far and rows in all. May throw to stop the export.
using ExportProgress = std::function<void(size_t doneRows, size_t allRows)>;

/// Writes the picture that the store was made from into a TIFF file, sample for sample, in strips. Throws what TileStore,
/// TiffWriter and progress throw, and HostError (out of memory) before it has taken any; a failed export leaves nothing behind.
void exportStore(TileStore& store, std::string const& path, ExportProgress const& progress);
