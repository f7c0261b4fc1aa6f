#pragma once

#include <array>
#include <cstdint>
#include <vector>

/// Heights around one row of the map; each row has one value more at both ends than the map has pixels.
struct HeightRows {
    std::vector<std::int64_t> const& above;
    std::vector<std::int64_t> const& here;
    std::vector<std::int64_t> const& below;
};

/// Draws the built-in picture as a topographic map: height tints, light from the upper left, contour lines every 20 m,
/// woods, a grid every 1024 pixels with the pixel coordinates of its crossings, a cross every 256 pixels.
class MapPainter {
public:
    explicit MapPainter(std::int64_t side);

    /// RGB of the pixels (x, y), (x + 1, y), ...; moisture: one value per pixel.
    void paintRow(std::int64_t x, std::int64_t y, HeightRows const& heights, std::vector<std::int64_t> const& moisture,
                  std::uint8_t* rgb) const;

private:
    using Colour = std::array<std::int64_t, 3>;

    Colour const& tint(std::int64_t height) const;

    std::int64_t side_;
    std::vector<Colour> tints_; // one per metre
};
