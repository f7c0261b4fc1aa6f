#pragma once

#include <cstddef>
#include <string>

/// Pixels, samples or tiles along both axes.
struct Size {
    size_t width = 0;
    size_t height = 0;
};

/// A rectangle of a picture, from the picture's upper left corner.
struct Region {
    size_t x = 0;
    size_t y = 0;
    size_t width = 0;
    size_t height = 0;
};

/// The extent of a region along one axis.
struct Interval {
    size_t start = 0;
    size_t length = 0;
};

/// The distances between a rectangle and a smaller one inside, per side.
struct Insets {
    size_t left = 0;
    size_t right = 0;
    size_t top = 0;
    size_t bottom = 0;
};

inline Size sizeOf(Region const& region) {
    return {region.width, region.height};
}

/// The whole picture of this size.
inline Region wholeOf(Size const& size) {
    return {0, 0, size.width, size.height};
}

inline Region regionOf(Interval const& x, Interval const& y) {
    return {x.start, y.start, x.length, y.length};
}

/// Insets of `inner`, which lies in `outer`.
inline Insets insetsOf(Region const& outer, Region const& inner) {
    return {inner.x - outer.x, outer.x + outer.width - inner.x - inner.width, inner.y - outer.y,
            outer.y + outer.height - inner.y - inner.height};
}

/// A picture of this size halved so often, each time rounded up. Not for a side of 0.
inline Size halved(Size const& size, size_t times) {
    return {((size.width - 1) >> times) + 1, ((size.height - 1) >> times) + 1};
}

/// The samples that two regions share; of no width or height where there are none.
Region common(Region const& a, Region const& b);

/// Whether the region lies wholly in a picture of this size; false for a region without pixels.
bool liesIn(Region const& region, Size const& picture);

/// The region that "X,Y,W,H" names: four decimal whole numbers, W and H not 0. Throws std::invalid_argument with a
/// sentence for the user for any other text.
Region parseRegion(std::string const& text);

/// "X,Y,W,H".
std::string toText(Region const& region);
