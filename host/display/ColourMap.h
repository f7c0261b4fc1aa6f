#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using Colour = std::array<std::uint8_t, 3>; ///< red, green, blue

/// The colour of each brightness.
using ColourMap = std::array<Colour, 256>;

/// Colour maps for pictures of one channel, and the ramps of coloured channels.
namespace colourmap {

/// "grey", "viridis", "magma", "inferno", "turbo".
std::vector<std::string> const& names();

/// `viridis`, `magma` and `inferno` are those of Smith and van der Walt (2015), `turbo` is that of Mikhailov (2019):
/// the published 256 colours, times 255, rounded. Throws std::invalid_argument with a sentence for the user.
ColourMap named(std::string const& name);

/// From black to the colour: brightness b shows round(colour * b / 255).
ColourMap rampTo(Colour const& colour);

/// From the last colour to the first.
ColourMap inverted(ColourMap const& map);

/// From "FF8000" or "#ff8000". Throws std::invalid_argument with a sentence for the user.
Colour parseColour(std::string const& text);

} // namespace colourmap
