#include "host/map/TerrainNoise.h"

#include <algorithm>
#include <array>

namespace {

constexpr unsigned kFadeBits = 24;
constexpr unsigned kPositionBits = 16;  // of a position inside a cell, 0 to 1
constexpr unsigned kDirectionBits = 12; // of a direction's components; with a position's: those of kOne

// Sixteen directions, 4096 long. None lies along an axis: along an edge between two corners with directions
// perpendicular to it the noise would be 0, which shows as a straight crease.
constexpr std::array<std::array<std::int64_t, 2>, 16> kDirections{{{4017, 799},
                                                                   {3406, 2276},
                                                                   {2276, 3406},
                                                                   {799, 4017},
                                                                   {-799, 4017},
                                                                   {-2276, 3406},
                                                                   {-3406, 2276},
                                                                   {-4017, 799},
                                                                   {-4017, -799},
                                                                   {-3406, -2276},
                                                                   {-2276, -3406},
                                                                   {-799, -4017},
                                                                   {799, -4017},
                                                                   {2276, -3406},
                                                                   {3406, -2276},
                                                                   {4017, -799}}};

static_assert(TerrainNoise::kOneBits == kPositionBits + kDirectionBits);

std::uint32_t mix(std::uint32_t value) {
    value = (value ^ (value >> 16)) * 0x7feb352du;
    value = (value ^ (value >> 15)) * 0x846ca68bu;
    return value ^ (value >> 16);
}

std::int64_t blend(std::int64_t from, std::int64_t to, std::int64_t share) {
    return from + floorShift((to - from) * share, kFadeBits);
}

} // namespace

std::uint32_t latticeHash(std::int64_t x, std::int64_t y, std::uint32_t randomStart) {
    // Mixes one coordinate after the other: mixed at once, small coordinates of either sign would collide.
    return mix(mix(randomStart ^ (static_cast<std::uint32_t>(x) * 0x9e3779b1u)) +
               static_cast<std::uint32_t>(y) * 0x85ebca77u);
}

TerrainNoise::TerrainNoise(unsigned cellBits, std::uint32_t randomStart)
    : cellBits_(cellBits), seed_(randomStart), shift_(latticeHash(0, 0, randomStart) & 0xffffu) {
    std::int64_t const side = std::int64_t{1} << cellBits;
    std::int64_t const one = std::int64_t{1} << kFadeBits;
    for (std::int64_t i = 0; i < side; ++i) {
        std::int64_t const t = one * i / side;
        std::int64_t const t2 = t * t / one;
        std::int64_t const t3 = t2 * t / one;
        fade_.push_back(10 * t3 - 15 * (t3 * t / one) + 6 * (t3 * t2 / one));
    }
}

TerrainNoise::Corner TerrainNoise::gradient(std::int64_t column, std::int64_t row) const {
    auto const& direction = kDirections[latticeHash(column, row, seed_) & 15u];
    return {direction[0], direction[1]};
}

void TerrainNoise::fillRow(std::int64_t x, std::int64_t y, std::vector<std::int64_t>& row) const {
    // The noise is 0 at every lattice point: octaves on a common lattice would all be 0 at the same places.
    x += shift_;
    y += shift_;
    std::int64_t const side = std::int64_t{1} << cellBits_;
    std::int64_t const step = (std::int64_t{1} << kPositionBits) / side;
    std::int64_t const one = std::int64_t{1} << kPositionBits;
    std::int64_t const cellRow = floorShift(y, cellBits_);
    std::int64_t const dy = (y - cellRow * side) * step;
    std::int64_t const fadeY = fade_[static_cast<size_t>(y - cellRow * side)];
    auto const end = static_cast<std::int64_t>(row.size());
    for (std::int64_t i = 0; i < end;) {
        std::int64_t const column = floorShift(x + i, cellBits_);
        std::int64_t const origin = column * side;
        std::int64_t const cellEnd = std::min(end, origin + side - x);
        // Along a row each side of the cell contributes a line, base + slope * dx, once its two corners are blended.
        Corner const g00 = gradient(column, cellRow);
        Corner const g01 = gradient(column, cellRow + 1);
        Corner const g10 = gradient(column + 1, cellRow);
        Corner const g11 = gradient(column + 1, cellRow + 1);
        std::int64_t const leftBase = blend(g00.y * dy, g01.y * (dy - one), fadeY);
        std::int64_t const rightBase = blend(g10.y * dy, g11.y * (dy - one), fadeY);
        std::int64_t const leftSlope = blend(g00.x * one, g01.x * one, fadeY);
        std::int64_t const rightSlope = blend(g10.x * one, g11.x * one, fadeY);
        for (; i < cellEnd; ++i) {
            std::int64_t const inCell = x + i - origin;
            std::int64_t const dx = inCell * step;
            std::int64_t const left = leftBase + floorShift(leftSlope * dx, kPositionBits);
            std::int64_t const right = rightBase + floorShift(rightSlope * (dx - one), kPositionBits);
            row[static_cast<size_t>(i)] = blend(left, right, fade_[static_cast<size_t>(inCell)]);
        }
    }
}
