#pragma once

#include <cstddef>
#include <string>

/// A rectangle of an image in pixels, from the image's upper left corner.
struct Region {
    size_t x = 0;
    size_t y = 0;
    size_t width = 0;
    size_t height = 0;
};

/// The region that "X,Y,W,H" names, four decimal whole numbers of which W and H are not 0.
/// Throws std::invalid_argument with a sentence for the user for any other text.
Region parseRegion(std::string const& text);

/// "X,Y,W,H".
std::string toText(Region const& region);

/// Whether the region lies wholly in an image of this size; a region without pixels lies nowhere.
bool liesIn(Region const& region, size_t width, size_t height);
