#pragma once

#include "host/image/SampleSource.h"
#include "host/store/TileStore.h"

#include <string>
#include <vector>

/// What a store has kept of the file that it was made of.
struct KeptMetadata {
    ImageFacts facts; ///< the store's samples, and the file's profile, orientation, density and properties
    std::vector<std::string> otherImages;
    std::string summary; ///< "ICC profile, label, 5 tags"; empty: nothing
};

/// Throws what TileStore throws.
KeptMetadata keptIn(TileStore& store);
