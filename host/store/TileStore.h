#pragma once

#include "host/image/PictureMetadata.h"
#include "host/store/StoreInfo.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Reads a tile store. Several objects may have the same file open; each belongs to one thread at a time.
///
/// The file may come from an untrusted source: whatever its bytes, every operation returns what was written, or fails,
/// in a time and with an amount of memory that the file's size bounds. No other file is read, and none is written.
///
/// Every operation throws HostError: missing file, also if the system does not give its bytes; no store, if the file is
/// something else; newer store, if a later version of the program has written it; damaged store; locked store, if
/// another program is writing to it. And std::bad_alloc.
class TileStore {
public:
    /// Whether a file is to be opened as a store: it starts like a database of SQLite, and no picture format does.
    /// False for a name that leads to no file. Throws HostError: missing file, if a file that is there cannot be read.
    static bool isStore(std::string const& path);

    /// Opens the file for reading only; write-protected files and folders suffice. interruption: called now and then in
    /// long operations, on the calling thread; an exception of it ends the operation.
    explicit TileStore(std::string const& path, std::function<void()> const& interruption = {});
    ~TileStore();
    TileStore(TileStore const&) = delete;
    TileStore& operator=(TileStore const&) = delete;

    StoreInfo const& info() const;
    std::string const& path() const;

    /// The value of a tile whose samples are all equal, without reading its samples; nothing for other tiles. The
    /// checksum has been tested. Throws std::invalid_argument for a tile that no such store has.
    std::optional<std::int16_t> uniformValue(TileAddress const& address);

    /// The samples: tileSize * tileSize, rows from the top, 0 beyond the band's end. The checksum has been tested.
    /// Throws std::invalid_argument for a tile that no such store has.
    std::vector<std::int16_t> tile(TileAddress const& address);

    /// The places in a level's grid where a tile of any band and plane has samples other than 0, row by row; only row
    /// and column of the addresses count. Read from an index with a checksum; stores from before version 3 have no
    /// checksum, and all tiles of the level are looked at.
    std::vector<TileAddress> cellsWithData(size_t level);

    /// The same places from the index alone, if the file has one: it may be wrong in stores from before version 3.
    std::optional<std::vector<TileAddress>> cellsInIndex(size_t level);

    /// What the picture's file held beside its samples, without its bytes: kinds and names. None in stores from before
    /// version 4.
    std::vector<MetadataItem> const& metadata();
    /// The bytes of one of them, by its index. The checksum has been tested.
    std::vector<std::uint8_t> metadataBytes(size_t index);
    /// All of them, with their bytes.
    std::vector<MetadataItem> allMetadata();

    /// Number of tiles in the file.
    size_t storedTiles();

private:
    struct State;
    std::unique_ptr<State> state_;
};
