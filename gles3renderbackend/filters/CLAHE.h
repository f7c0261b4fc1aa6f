#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Contrast-limited adaptive histogram equalisation (Zuiderveld, Graphics Gems IV, 1994) of the first component of
/// signed 16-bit pixels, in place, as 256 grey values: samples below 0 count as 0, above 255 as 255. No GL; one thread
/// at a time.
///
/// The image is cut into regions of 40 x 40 pixels from its first pixel on. Each full region gets a mapping from its
/// clipped histogram; a partial one at the right or bottom edge takes its neighbour's. A pixel's value is interpolated
/// between the mappings of the four regions whose centres surround it, that is, inside a grid of cells shifted by half
/// a region:
///
///     regions   0........40........80        mapping of region i holds at its centre, 40 * i + 20
///     cells     0..20........60....80        cells at the edges use one region twice
class CLAHE {
public:
    /// clipLimit: limit of a bin, in multiples of its even share; below 1.0 it counts as 1.0.
    explicit CLAHE(double clipLimit);
    CLAHE(CLAHE const&) = default;
    CLAHE& operator=(CLAHE const&) = default;
    virtual ~CLAHE();

    /// Makes the mappings of an image. `pixels`: rows of rowStride pixels of four components. Both sides must be larger
    /// than one region.
    void buildTables(std::int16_t const* pixels, size_t width, size_t height, size_t rowStride);

    /// Equalises the part of that image right of and below (x0, y0), in place.
    virtual void apply(std::int16_t* pixels, size_t x0, size_t y0) const;

    /// Side of a region in pixels.
    static constexpr size_t kRegionSize = 40;
    static constexpr size_t kBins = 256;
    /// Components per pixel.
    static constexpr size_t kComponents = 4;

    using Histogram = std::array<std::uint32_t, kBins>;
    using Mapping = std::array<std::uint8_t, kBins>;

    /// Cuts every bin to the clip limit and spreads the excess over the others, as evenly as there is room.
    void clip(Histogram& histogram, size_t pixels) const;

private:
    Mapping mappingOfRegion(std::int16_t const* firstPixel) const;
    void applyToCell(std::int16_t* pixels, size_t cellColumn, size_t cellRow, size_t x0, size_t y0) const;

    double clipLimit_;
    size_t width_ = 0;
    size_t height_ = 0;
    size_t rowStride_ = 0; ///< pixels
    size_t regionColumns_ = 0;
    size_t regionRows_ = 0;
    std::vector<Mapping> mappings_; ///< of every region, row-major
};
