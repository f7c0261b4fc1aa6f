#pragma once

#include "host/store/TileRowWriter.h"
#include "host/store/TileStoreFormat.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// A tile as the store keeps it: one value if all its samples are equal, else compressed samples.
struct StoredTile {
    TileAddress address;
    std::optional<std::int16_t> value; ///< of every sample in the band
    std::uint32_t crc = 0;             ///< CRC-32 of key and bytes before compression, or of key and value
    std::vector<std::uint8_t> data;    ///< empty if there is a value
};

/// Encodes and decodes the stored form of tiles. Samples are zigzag-coded, 0, -1, 1, -2, 2, ... as 0, 1, 2, 3, 4, ...,
/// so that small samples of either sign have a high byte of 0. The bytes of a tile are the low bytes of all samples,
/// then all high bytes, which are mostly 0, compressed with zstd. Stores of version 1 have samples in two's complement
/// without zigzag coding. Before version 3 checksums cover the samples' bytes alone, also for a tile of one value.
///
/// One thread at a time; each thread needs a codec of its own.
class TileCodec {
public:
    /// version: of the store's file.
    explicit TileCodec(StoreInfo const& info, std::int64_t version = storeformat::kSchemaVersion);
    ~TileCodec();
    TileCodec(TileCodec const&) = delete;
    TileCodec& operator=(TileCodec const&) = delete;

    /// Throws std::runtime_error where zstd fails.
    StoredTile encode(RawTile const& tile);

    /// The tile's samples, tileSize * tileSize; nothing if the stored bytes are not those that were encoded.
    std::optional<std::vector<std::int16_t>> decode(StoredTile const& tile);

    /// Whether a tile of one value matches its checksum.
    bool isAsWritten(TileAddress const& address, std::int16_t value, std::uint32_t crc);

    /// Upper bound of a tile's data, in bytes.
    size_t maxDataBytes() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};
