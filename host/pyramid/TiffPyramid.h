#pragma once

#include "host/image/SampleSource.h"
#include "host/pyramid/LevelReader.h"

#include <cstddef>
#include <memory>

/// TIFF files whose samples libtiff decodes: tile by tile, with a handle of its own per reader and level.
///
/// The levels of a page are its sub-directories, the reduced-size copies that follow it, and tiled pages of decreasing
/// size that follow it. A copy counts if its samples have the same layout, and if its sides have the same ratio but for
/// rounding.
namespace tiffpyramid {

/// Null if libtiff does not decode the page's samples here. `cacheBytes`: of decoded tiles, for all readers. Throws
/// HostError (unreadable image; usage), and what the file's check throws.
std::unique_ptr<PyramidFile> open(InputFile& file, SampleRequest const& request, size_t cacheBytes);

} // namespace tiffpyramid
