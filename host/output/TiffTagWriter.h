#pragma once

#include "host/image/TiffTags.h"

#include <cstddef>
#include <vector>

class TemporaryOutput;

/// Adds tags to the first directory of a little-endian TIFF file that is whole, byte for byte. libtiff writes only tags
/// that it knows, and fractions as it rounds them.
namespace tifftagwriter {

/// What the tags add to the file at most.
size_t bytesOf(std::vector<TiffTag> const& tags);

/// Tags of the same number that the directory has are replaced. The new directory lies at the end of the file. Throws
/// HostError (unwritable output).
void add(TemporaryOutput const& file, std::vector<TiffTag> const& tags);

} // namespace tifftagwriter
