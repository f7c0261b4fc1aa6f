#pragma once

#include "host/map/TerrainNoise.h"

#include <cstdint>
#include <vector>

/// The land of the built-in picture: islands in a sea, with mountain ridges inland. Heights are in units of 1 / kMetre
/// metres; 0 is the sea level. Every value depends on its coordinates alone.
class Terrain {
public:
    static constexpr unsigned kMetreBits = 16;
    static constexpr std::int64_t kMetre = 1 << kMetreBits;

    Terrain();

    /// The heights at (x, y), (x + 1, y), ..., one for each element of `row`.
    void fillHeights(std::int64_t x, std::int64_t y, std::vector<std::int64_t>& row) const;

    /// How well trees grow there, in units of 1 / TerrainNoise::kOne around 0.
    void fillMoisture(std::int64_t x, std::int64_t y, std::vector<std::int64_t>& row) const;

private:
    struct Octave {
        TerrainNoise noise;
        std::int64_t metres = 0; // height of a noise value of 1
    };

    std::vector<Octave> land_;
    std::vector<Octave> ridges_;
    std::vector<TerrainNoise> moisture_;
};
