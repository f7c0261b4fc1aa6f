#pragma once

#include "host/filter/StagedTile.h"
#include "host/store/StoreInfo.h"
#include "host/view/LevelTile.h"
#include "renderbackend/ConcurrentStagingBuffer.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

/// What is read at once.
struct TileJob {
    enum class What {
        Bands,    ///< that the tile is rebuilt from
        Residuals ///< the residual bits of a tile of level 0, of the picture's own bands
    };

    LevelTile tile;
    What what = What::Bands;

    bool operator==(TileJob const& other) const { return tile == other.tile && what == other.what; }
};

/// The part of a band that a picture tile is rebuilt from, or that holds its residual bits.
struct BandPart {
    Band band = Band::LL;
    size_t plane = 0;
    Region region;                     ///< of the band
    std::optional<std::int16_t> value; ///< of all samples, where they have only one
    std::vector<std::uint8_t> bytes;   ///< else the samples, little-endian, rows tightly packed from the top
};

/// What a thread has read, on its way to the GPU.
struct LoadedTile {
    TileJob job;
    std::vector<BandPart> parts;      ///< of a store
    std::vector<std::uint8_t> pixels; ///< of a picture with levels of its own
    std::uint64_t coding = 0;         ///< if the pixels are codes: the number of their ChannelCoding
    std::exception_ptr failure;       ///< what kept the tile from being read; empty: nothing

    /// Room for the pixels in memory that the GPU reads, made on the GL thread; null: none yet.
    std::unique_ptr<ConcurrentStagingBuffer> room;
    std::unique_ptr<StagedTile> staged; ///< what was there, in the backend's cache
};

/// Reads what tiles are made of. Each thread has one of its own.
class TileReader {
public:
    virtual ~TileReader() = default;

    /// Fills in what the tile's job asks for.
    virtual void read(LoadedTile& tile) = 0;
};
