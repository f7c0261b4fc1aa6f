#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

/// The 5/3 wavelet straight from its formulas, in 64 bits, on signals that an index function extends. Slow, and
/// independent of the store's code.
namespace waveletmodel {

/// A plane of samples with symmetric extension about its first and last row and column.
struct Plane {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::vector<std::int64_t> samples;

    std::int64_t at(std::int64_t x, std::int64_t y) const;
};

/// A band is low or high along each axis.
enum class Kind { Low, High };

/// Bands of a plane from L[0] and from H[-1], `columns` x `rows` samples of each.
Plane band(Plane const& plane, Kind alongX, Kind alongY, std::int64_t columns, std::int64_t rows);

/// Samples of each band that rebuild `count` samples: the least even number M with 2 * M - 4 >= count.
std::int64_t bandSamples(std::int64_t count);

/// Samples from lowest to highest, both included.
Plane noise(std::int64_t width, std::int64_t height, int lowest, int highest, std::mt19937& random);

/// The low band from which the next level starts.
Plane coarser(Plane const& plane);

} // namespace waveletmodel
