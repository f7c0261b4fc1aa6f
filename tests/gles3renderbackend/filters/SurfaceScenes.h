#pragma once

#include "tests/gles3renderbackend/filters/FilterRig.h"

#include <string>

/// Filters drawn onto the host's surface, target 0. There a logical pixel is a texel whatever the layout, so the
/// sources are sampled whole, and the output has just as many texels as they make.
namespace filtertest {

enum class OnSurface {
    kMirrored, ///< y is turned round: the first row comes out at the top, the last one of GL's rows
    kUpright,  ///< rows stay in GL's order: the first row comes out at the bottom
    kRefused   ///< the filter needs a texture to write into
};

/// Orientation of a filter's output there, by its name: mirrored, unless it is listed.
OnSurface orientationOf(std::string const& filter);

/// Runs the filter over noise, a pointwise one as its runs beside the model show it, onto a part of the surface, and
/// compares all of the surface with the plain model's texels there, mirrored or not as it should be, on the colour that
/// it had.
::testing::AssertionResult appearsOnSurface(FilterRig& rig, std::string const& filter);

/// Draws a tile of noise through the filter, a copy, by drawTiles: its rows stay in GL's order.
::testing::AssertionResult tileAppearsOnSurface(FilterRig& rig, std::string const& filter);

} // namespace filtertest
