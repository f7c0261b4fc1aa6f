#pragma once

#include "host/Progress.h"
#include "host/output/OutputFile.h"
#include "host/output/TiffWriter.h"
#include "host/store/TileStore.h"

/// The TIFF file of a store's picture.
TiffWriter::Format tiffFormatOf(StoreInfo const& info);

/// Writes the picture that the store was made from into a TIFF file, sample for sample, in strips. The store counts as
/// the file's source. Throws what TileStore, TiffWriter and progress throw, and HostError (out of memory) before it
/// allocates anything; a failed export leaves no file behind.
void exportStore(TileStore& store, OutputFile file, Progress const& progress);
