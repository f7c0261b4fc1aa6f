#pragma once

#include "host/store/StoreInfo.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Reads a tile store. Several may have the same file open; each belongs to one thread at a time.
///
/// The file may come from anywhere: whatever is in it, what comes out is what was written, or a failure, after a time
/// and with an amount of memory that its size bounds. Nothing beside the file is read, and nothing is written.
///
/// Every operation throws HostError: missing file, also where the system does not give its bytes; no store, where the
/// file is something else; newer store, where a later version of the program has written it; damaged store; locked
/// store, where another program is writing to it. And std::bad_alloc.
class TileStore {
public:
    /// Whether a file is to be opened as a store: it starts as a database of SQLite does, and no picture does.
    static bool isStore(std::string const& path);

    /// Opens the file for reading only; files and folders that cannot be written to will do. interruption: called now
    /// and then in long operations, on the thread that calls them; what it throws, they throw.
    explicit TileStore(std::string const& path, std::function<void()> const& interruption = {});
    ~TileStore();
    TileStore(TileStore const&) = delete;
    TileStore& operator=(TileStore const&) = delete;

    StoreInfo const& info() const;
    std::string const& path() const;

    /// The value of all samples of a tile that has only one, without reading its samples. Its checksum has been tested.
    /// Throws std::invalid_argument for a tile that no such store has.
    std::optional<std::int16_t> uniformValue(TileAddress const& address);

    /// The samples: tileSize * tileSize, rows from the top, 0 beyond the band's end. Their checksum has been tested.
    /// Throws std::invalid_argument as above.
    std::vector<std::int16_t> tile(TileAddress const& address);

    /// The places in a level's grid where a tile of any band and plane has samples other than 0, row by row; nothing
    /// else of the addresses counts. Read from an index with a checksum; stores from before version 3 have none, and
    /// all tiles of the level are looked at.
    std::vector<TileAddress> cellsWithData(size_t level);

    /// The same from the index alone, where the file has one: it may be wrong in stores from before version 3.
    std::optional<std::vector<TileAddress>> cellsInIndex(size_t level);

    /// Tiles that the file holds.
    size_t storedTiles();

private:
    struct State;
    std::unique_ptr<State> state_;
};
