#pragma once

#include "host/store/TileRowCutter.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// A tile as the store keeps it: one value where all its samples have the same, else compressed samples.
struct StoredTile {
    TileAddress address;
    std::optional<std::int16_t> value; ///< of every sample in the band
    std::uint32_t crc = 0;             ///< CRC-32 of the tile's bytes before compression, those of uniform tiles too
    std::vector<std::uint8_t> data;    ///< empty where there is a value
};

/// Samples to what is stored, and back. The bytes of a tile are the low bytes of all its samples, then all high bytes,
/// so that the high bytes, which are mostly 0 or 255, lie together; they are compressed with zstd.
///
/// One thread at a time; each thread has one of its own.
class TileCodec {
public:
    explicit TileCodec(StoreInfo const& info);
    ~TileCodec();
    TileCodec(TileCodec const&) = delete;
    TileCodec& operator=(TileCodec const&) = delete;

    StoredTile encode(RawTile const& tile);

    /// The tile's samples, tileSize * tileSize; nothing where what is stored is not what was encoded.
    std::optional<std::vector<std::int16_t>> decode(StoredTile const& tile);

private:
    struct State;
    std::unique_ptr<State> state_;
};
