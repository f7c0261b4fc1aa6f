#pragma once

#include "host/image/PictureMetadata.h"
#include "host/image/SampleSource.h"

/// What a picture file holds beside its samples.
namespace imagemetadata {

/// What of the picture is taken.
struct Taken {
    std::optional<size_t> page; ///< from 1
    bool hasAllBands = true;    ///< in the order of the file
    bool hasFileSamples = true; ///< neither colours nor samples are converted
};

/// facts: of the picture as it is taken. Throws HostError: missing file, unreadable image, and what the file's check
/// throws.
PictureMetadata of(InputFile& file, ImageFacts const& facts, Taken const& taken);

} // namespace imagemetadata
