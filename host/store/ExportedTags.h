#pragma once

#include "host/image/PictureMetadata.h"
#include "host/image/TiffTags.h"
#include "host/store/StoreInfo.h"

#include <vector>

/// A store's metadata as tags of a TIFF: its tags, its profile, and XMP, IPTC and properties where no tag has them.
///
/// The resolution is that of the tags if it says the size of a pixel that the store says, or if the store says none;
/// else it is left out here, for the writer to state that size. Items that no writer makes are passed over.
std::vector<TiffTag> exportedTags(std::vector<MetadataItem> const& metadata, StoreInfo const& info);
