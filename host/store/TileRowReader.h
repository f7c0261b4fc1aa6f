#pragma once

#include "host/store/TileStore.h"

#include <cstdint>
#include <optional>
#include <vector>

/// The rows of a band of one plane from the top, read from the store one row of tiles at a time. Tiles of one value
/// take no memory.
class TileRowReader {
public:
    using Sample = wavelet53::Sample;

    TileRowReader(TileStore& store, size_t level, Band band, size_t plane);

    /// The next row: the band's width in samples. Throws what TileStore::tile throws.
    void next(Sample* row);

private:
    struct Tile {
        std::optional<Sample> value;
        std::vector<Sample> samples; // rows of tileSize; empty if there is a value
    };

    void read();
    Tile tile();

    TileStore& store_;
    TileAddress next_;
    Size extent_;
    std::vector<Tile> tiles_;
    size_t held_ = 0;  // rows in tiles_
    size_t given_ = 0; // rows of tiles_ that next() has returned
};
