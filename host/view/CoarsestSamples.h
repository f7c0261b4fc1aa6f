#pragma once

#include "host/pyramid/Pyramid.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class TileStore;

/// Pixels of a picture's coarsest level, samples of all bands interleaved: automatic ranges and histograms are made of
/// them.
namespace coarsestsamples {

/// Of a picture file, in the file's own type. Throws what the pyramid's readers throw.
std::vector<std::uint8_t> of(Pyramid const& pyramid, size_t level, StackPosition const& position);

/// Of a store: samples of its bits, on the picture's own scale, whose ends are taken where the wavelet leaves it; of a
/// level of many millions of pixels some tiles, evenly spread. None if the level is damaged. Throws what TileStore
/// throws otherwise.
std::vector<std::uint8_t> of(TileStore& store);

} // namespace coarsestsamples
