#include "host/map/Terrain.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::int64_t kSeaFloorMetres = 90;  // the mean of the land noise lies this far below the sea
constexpr std::int64_t kFoothillMetres = 60;  // ridges rise from here on ...
constexpr std::int64_t kMountainMetres = 700; // ... and are full from here on
constexpr std::int64_t kRidgeTop = TerrainNoise::kOne * 28 / 100;
constexpr unsigned kUnitsPerMetreBits = TerrainNoise::kOneBits - Terrain::kMetreBits;

} // namespace

Terrain::Terrain() {
    land_ = {{TerrainNoise(13, 101), 1500}, {TerrainNoise(12, 102), 900}, {TerrainNoise(11, 103), 420},
             {TerrainNoise(10, 104), 150},  {TerrainNoise(9, 105), 80},   {TerrainNoise(8, 106), 42},
             {TerrainNoise(7, 107), 20}};
    ridges_ = {{TerrainNoise(11, 201), 1500}, {TerrainNoise(10, 202), 800}, {TerrainNoise(9, 203), 380},
               {TerrainNoise(8, 204), 190},   {TerrainNoise(7, 205), 90},   {TerrainNoise(6, 206), 40}};
    moisture_ = {TerrainNoise(11, 301), TerrainNoise(9, 302), TerrainNoise(7, 303)};
}

void Terrain::fillHeights(std::int64_t x, std::int64_t y, std::vector<std::int64_t>& row) const {
    std::vector<std::int64_t> noise(row.size());
    std::fill(row.begin(), row.end(), -kSeaFloorMetres * kMetre);
    for (Octave const& octave : land_) {
        octave.noise.fillRow(x, y, noise);
        for (size_t i = 0; i < row.size(); ++i)
            row[i] += floorShift(noise[i] * octave.metres, kUnitsPerMetreBits);
    }
    std::vector<std::int64_t> ridges(row.size());
    for (Octave const& octave : ridges_) {
        octave.noise.fillRow(x, y, noise);
        // |n| has a fold at 0, which is the crest line.
        for (size_t i = 0; i < row.size(); ++i)
            ridges[i] += floorShift((kRidgeTop - std::abs(noise[i])) * octave.metres, kUnitsPerMetreBits);
    }
    constexpr std::int64_t kRise = kMountainMetres - kFoothillMetres;
    for (size_t i = 0; i < row.size(); ++i) {
        std::int64_t const share = std::clamp(row[i] - kFoothillMetres * kMetre, std::int64_t{0}, kRise * kMetre);
        row[i] += floorShift(ridges[i] * (share / kRise), kMetreBits);
    }
}

void Terrain::fillMoisture(std::int64_t x, std::int64_t y, std::vector<std::int64_t>& row) const {
    std::vector<std::int64_t> noise(row.size());
    std::fill(row.begin(), row.end(), 0);
    unsigned halvings = 0;
    for (TerrainNoise const& octave : moisture_) {
        octave.fillRow(x, y, noise);
        for (size_t i = 0; i < row.size(); ++i)
            row[i] += floorShift(noise[i], halvings);
        ++halvings;
    }
}
