#pragma once

#include "host/image/InputFile.h"
#include "host/pyramid/LevelReader.h"

#include <cstddef>
#include <memory>
#include <string>

/// Tile stores, by the levels of their wavelet: samples are rebuilt without GL.
namespace storepyramid {

/// `cacheBytes`: of rebuilt squares, and as many of decompressed tiles, for all readers. Throws what TileStore throws.
std::unique_ptr<PyramidFile> open(std::string const& path, size_t cacheBytes, InputFile::Check const& check);

} // namespace storepyramid
