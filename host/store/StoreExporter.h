#pragma once

#include "host/Progress.h"
#include "host/output/OutputFile.h"
#include "host/output/TiffWriter.h"
#include "host/store/TileStore.h"

/// The TIFF file of a store's picture with its metadata. Images that are no PNG are left out, and those that would make
/// all of them more than smallpicture::kMostPixels.
TiffWriter::Format tiffFormatOf(StoreInfo const& info, std::vector<MetadataItem> const& metadata = {});

/// Writes the picture that the store was made from into a TIFF file, sample for sample, in strips, and its metadata
/// byte for byte. `jobs` threads compress, 0: one per core; the bytes do not depend on them. Returns the number of
/// images that are left out. The store counts as the file's source. Throws what TileStore, TiffWriter and progress
/// throw, and HostError (out of memory) before it allocates anything; a failed export leaves no file behind.
size_t exportStore(TileStore& store, OutputFile file, Progress const& progress, size_t jobs = 0);
