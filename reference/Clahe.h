#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// Contrast-limited adaptive histogram equalisation (Zuiderveld, Graphics Gems IV, 1994) of the first of four signed
// 16-bit components, grey values 0..255, regions of 40 x 40 pixels from the top left pixel.
namespace reference {

constexpr int kClaheRegion = 40;
constexpr int kClaheRegionPixels = kClaheRegion * kClaheRegion;

/// Counts of the 256 grey values, or the grey value that each of them becomes.
using Histogram = std::array<std::uint32_t, 256>;

/// 0 for negative samples, 255 for samples above 255.
size_t claheBin(std::int16_t sample);

/// trunc(pixels * clip / 256), at least 1.
std::uint32_t claheLimit(std::uint32_t pixels, double clip);

/// Cuts every bin to the limit and spreads the excess over the others. If the room left by the first sharing is not
/// more than the rest of the excess, every bin ends at the limit and the rest is lost. `limit` is at least claheLimit
/// of the histogram's total at clip 1.
Histogram clippedHistogram(Histogram histogram, std::uint32_t limit);

/// The same by the published loop, for every case: two ways to one result.
Histogram clippedHistogramByLoop(Histogram histogram, std::uint32_t limit);

/// min(255, trunc(running sum * (255 / 1600))) in double: 1600 pixels give 254, as 255/1600 has no exact double.
Histogram claheMapping(Histogram const& clipped);

/// Tables of all regions, row-major. A partial region at the right has its left neighbour's table, one at the bottom
/// that of the region above. Width and height are at least 41.
struct ClaheTables {
    int rows = 0;
    int columns = 0;
    std::vector<Histogram> mappings;

    /// The table of the nearest region, for rows and columns outside too.
    Histogram const& clampedAt(int row, int column) const;
};

ClaheTables claheTables(std::vector<std::int16_t> const& samples, int width, int height, double clip);

/// The equalised value of grey value `bin` at pixel (x, y): bilinear between the tables of the four nearest regions.
/// Cells are [0, 20), [20, 60), [60, 100) ... along each axis.
std::int16_t claheInterpolated(ClaheTables const& tables, int x, int y, size_t bin);

/// The whole filter on four samples per pixel. The clip limit is rounded to single precision and is at least 1. Pixels
/// left of x0 and above y0 keep their values (x0 is 40 if the filter's invalidLeft is 40 or more, else 0; y0 likewise);
/// tables cover the whole buffer all the same. Below 41 pixels in either direction nothing changes.
std::vector<std::int16_t> clahe(std::vector<std::int16_t> samples, int width, int height, double clip, int x0, int y0);

} // namespace reference
