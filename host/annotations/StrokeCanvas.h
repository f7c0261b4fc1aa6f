#pragma once

#include "host/view/Camera.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A transparent picture on which lines with smooth edges are drawn, by the processor: the same bytes everywhere. Where
/// lines cross, a pixel has the colour of the one that covers more of it, of equals the later one.
class StrokeCanvas {
public:
    using Colour = std::array<std::uint8_t, 3>;

    /// Empties it.
    void reset(Size const& size);

    /// The pixel that has the place.
    void dot(Place const& place, Colour const& colour);
    /// The pixels along the sides of a rectangle.
    void rectangle(Place const& from, Place const& to, Colour const& colour);
    /// A line so many pixels wide. Its ends may lie outside.
    void stroke(Place const& from, Place const& to, double width, Colour const& colour);

    /// Whether anything has been drawn in a block of so many pixels along each side.
    static constexpr size_t kBlockSide = 32;
    bool isDrawn(size_t column, size_t row) const { return isDrawn_[row * blockColumns_ + column]; }
    /// RGBA, rows from the top, colours not multiplied with alpha.
    std::vector<std::uint8_t> const& rgba() const { return rgba_; }

private:
    void cover(std::int64_t x, std::int64_t y, double share, Colour const& colour);
    bool clip(Place& from, Place& to, double margin) const;

    Size size_;
    size_t blockColumns_ = 0;
    std::vector<std::uint8_t> isDrawn_; // of each block
    std::vector<std::uint8_t> rgba_;
};
