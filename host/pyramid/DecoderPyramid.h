#pragma once

#include "host/image/SampleSource.h"
#include "host/pyramid/LevelReader.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// Slides and JPEG 2000: each reader has a decoder of its own per level, and reads squares.
namespace decoderpyramid {

/// `sizes`: of the levels that the decoder gives, from the full one. `cacheBytes`: of decoded squares, for all readers.
std::unique_ptr<PyramidFile> open(std::string const& path, SampleRequest const& request, ImageFacts const& facts,
                                  std::vector<Size> const& sizes, size_t cacheBytes);

} // namespace decoderpyramid
