#pragma once

#include "host/store/StoreInfo.h"

#include <cstdint>
#include <functional>
#include <vector>

/// A tile before it is compressed.
struct RawTile {
    TileAddress address;
    Size filled;                       ///< size of the part that lies in the band
    std::vector<std::int16_t> samples; ///< tileSize * tileSize, rows from the top, 0 beyond the filled part
};

using RawTileSink = std::function<void(RawTile&&)>;

/// Collects the rows of a band of one plane and cuts them into tiles, one row of tiles at a time.
class TileRowWriter {
public:
    using Sample = wavelet53::Sample;

    TileRowWriter(StoreInfo const& info, size_t level, Band band, size_t plane, RawTileSink sink);

    /// The next row of the band from the top; the last row of each row of tiles hands out these tiles.
    void push(Sample const* row);

    /// Capacity of the buffer, in samples.
    size_t bufferedSamples() const { return rows_.size(); }

private:
    void cut();

    StoreInfo info_;
    TileAddress next_;
    Size extent_;
    RawTileSink sink_;
    std::vector<Sample> rows_;
    size_t held_ = 0;
};
