#pragma once

#include "host/view/RebuiltTiles.h"
#include "host/view/View.h"

#include <cstdint>
#include <vector>

/// Alpha of tiles whose pixels are RGBA texels, as a view shows it.
namespace alphatexels {

/// Puts that of the view's tiles, which are there, into its pixels.
void put(std::vector<std::uint8_t>& rgba, View const& view, std::vector<LevelTile> const& tiles,
         PictureInfo const& info, FilterRunner const& targets, RebuiltTiles& pixels);

} // namespace alphatexels
