#pragma once

#include "host/output/OutputFile.h"
#include "host/output/TiffWriter.h"
#include "host/store/TileStore.h"

#include <functional>

/// Rows written so far and rows in all. May throw to stop the export.
using ExportProgress = std::function<void(size_t doneRows, size_t allRows)>;

/// The TIFF file of a store's picture.
TiffWriter::Format tiffFormatOf(StoreInfo const& info);

/// Writes the picture that the store was made from into a TIFF file, sample for sample, in strips. The store counts as
/// the file's source. Throws what TileStore, TiffWriter and progress throw, and HostError (out of memory) before it has
/// taken any; a failed export leaves nothing behind.
void exportStore(TileStore& store, OutputFile file, ExportProgress const& progress);
