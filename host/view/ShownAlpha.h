#pragma once

#include "host/view/LevelTiles.h"
#include "host/view/View.h"

#include <cstdint>
#include <vector>

/// Alpha of frames that are read back: neither enhanced nor weighed, the upper byte of what is stored.
namespace shownalpha {

/// The pixels of the whole picture at a zoom that show samples of the zoom's level.
Region pixelsOf(Zoom const& zoom, Region const& samples);

/// Puts the alpha of pixels of the picture, which lie in the view, into the view's RGBA texels, out of a tile that is
/// there.
void put(std::vector<std::uint8_t>& rgba, View const& view, Region const& pixels, FilterRunner const& targets,
         PlanePart const& plane, unsigned depth);

} // namespace shownalpha
