#pragma once

#include "host/store/BandParts.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Reads any region of any level of a store's picture, and rebuilds no more than it takes. One thread at a time; the
/// cache may be shared. Throws what TileStore throws.
class StoreLevels {
public:
    StoreLevels(TileStore& store, std::shared_ptr<SampleCache> cache);

    /// Level 0 is the picture itself, each further one has half as many samples; info().levels is the coarsest.
    Size size(size_t level) const;

    /// A region that lies in the level: interleaved samples of 8 bits, or of 16 in the machine's byte order, rows
    /// tightly packed from the top. What leaves the scale of the samples, as coarser levels may, becomes its end.
    void read(size_t level, Region const& region, std::uint8_t* pixels);

private:
    using Samples = std::vector<wavelet53::Sample>;

    Samples low(size_t level, size_t plane, Region const& region);
    Samples rebuilt(size_t level, size_t plane, Region const& region);
    Samples part(size_t level, Band band, size_t plane, Region const& region);

    TileStore& store_;
    BandParts bands_;
};
