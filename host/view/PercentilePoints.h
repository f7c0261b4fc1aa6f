#pragma once

#include <cstdint>
#include <vector>

class TileStore;

/// A black and a white point, in codes of the picture.
struct PercentilePoints {
    std::uint64_t black = 0;
    std::uint64_t white = 0;
};

/// The 1st and the 99th percentile; white is above black. 0 and 1 where there are no codes.
PercentilePoints percentilePoints(std::vector<std::uint16_t> codes);

/// Those of a store's grey or luma at its coarsest level. Throws what TileStore throws.
PercentilePoints percentilePoints(TileStore& store);
