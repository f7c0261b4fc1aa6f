#pragma once

#include "host/store/TileRowWriter.h"
#include "host/store/TileStoreFormat.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// A tile as the store keeps it: one value where all its samples have the same, else compressed samples.
struct StoredTile {
    TileAddress address;
    std::optional<std::int16_t> value; ///< of every sample in the band
    std::uint32_t crc = 0;             ///< CRC-32 of key and bytes before compression, or of key and value
    std::vector<std::uint8_t> data;    ///< empty where there is a value
};

/// Samples to what is stored, and back. Samples 0, -1, 1, -2, 2, ... become 0, 1, 2, 3, 4, ..., so that the sign of a
/// small one lies in its low byte; the bytes of a tile are the low bytes of all samples, then all high bytes, which are
/// mostly 0. They are compressed with zstd. Stores of version 1 have the samples as they are, in two's complement.
/// Before version 3 checksums are those of the bytes alone, also of a tile that has one value.
///
/// One thread at a time; each thread has one of its own.
class TileCodec {
public:
    /// version: of the store's file.
    explicit TileCodec(StoreInfo const& info, std::int64_t version = storeformat::kSchemaVersion);
    ~TileCodec();
    TileCodec(TileCodec const&) = delete;
    TileCodec& operator=(TileCodec const&) = delete;

    /// Throws std::runtime_error where zstd fails.
    StoredTile encode(RawTile const& tile);

    /// The tile's samples, tileSize * tileSize; nothing where what is stored is not what was encoded.
    std::optional<std::vector<std::int16_t>> decode(StoredTile const& tile);

    /// Whether a tile of one value matches its checksum.
    bool isAsWritten(TileAddress const& address, std::int16_t value, std::uint32_t crc);

    /// The most bytes that a tile's data has.
    size_t maxDataBytes() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};
