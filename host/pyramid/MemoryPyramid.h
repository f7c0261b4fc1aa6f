#pragma once

#include "host/image/SampleSource.h"
#include "host/pyramid/LevelReader.h"

#include <memory>
#include <string>
#include <vector>

/// Files whose decoders read from the top, or know of no levels: a level is decoded as a whole into memory, once, by
/// the reader that first needs it; others that need it wait meanwhile.
namespace memorypyramid {

/// `sizes`: of the levels that the decoder gives, from the full one.
std::unique_ptr<PyramidFile> open(std::string const& path, SampleRequest const& request, ImageFacts const& facts,
                                  std::vector<Size> const& sizes);

} // namespace memorypyramid
