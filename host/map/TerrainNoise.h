#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// One octave of gradient noise over the plane, in integer arithmetic, so that it is the same on every machine.
///
/// The plane is a lattice of square cells; each lattice point has a pseudo-random direction g. Inside a cell the noise
/// is the blend, by the smooth step f(t) = 6 t^5 - 15 t^4 + 10 t^3 on each axis, of the four corners' g . (p - corner)
/// (Perlin, Improving Noise, 2002). The value at a point depends on that point alone.
class TerrainNoise {
public:
    /// Values are whole multiples of 1 / kOne; they lie between -kOne and kOne.
    static constexpr unsigned kOneBits = 28;
    static constexpr std::int64_t kOne = std::int64_t{1} << kOneBits;

    /// cellBits: log2 of a cell's side in pixels, at most 16.
    TerrainNoise(unsigned cellBits, std::uint32_t randomStart);

    /// The noise at (x, y), (x + 1, y), ...: one value for each element of `row`, in units of 1 / kOne.
    void fillRow(std::int64_t x, std::int64_t y, std::vector<std::int64_t>& row) const;

private:
    struct Corner {
        std::int64_t x;
        std::int64_t y;
    };

    Corner gradient(std::int64_t column, std::int64_t row) const;

    unsigned cellBits_;
    std::uint32_t seed_;
    std::int64_t shift_;             // of the lattice against the origin, in pixels
    std::vector<std::int64_t> fade_; // f(i / cell side) in units of 2^-24
};

/// A pseudo-random number for each pair of coordinates.
std::uint32_t latticeHash(std::int64_t x, std::int64_t y, std::uint32_t randomStart);

/// value / 2^bits rounded down, also below 0. Half the work of a division, which rounds towards 0; right shifts of
/// negative numbers repeat the sign bit on every compiler that this project supports, and by definition from C++20 on.
constexpr std::int64_t floorShift(std::int64_t value, unsigned bits) {
    return value >> bits;
}
