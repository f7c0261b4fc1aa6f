#pragma once

#include "host/store/StoreInfo.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Reads a tile store. Several may have the same file open; each belongs to one thread at a time.
///
/// Every operation throws HostError: missing file; no store, where the file is something else; newer store, where a later
/// version of the program has written it; damaged store; locked store, where another program is writing to it.
class TileStore {
public:
    /// Whether a file is to be opened as a store: it starts as every database of SQLite does, and no picture does.
    static bool isStore(std::string const& path);

    /// Opens the file for reading only; files and folders that cannot be written to will do.
    explicit TileStore(std::string const& path);
    ~TileStore();
    TileStore(TileStore const&) = delete;
    TileStore& operator=(TileStore const&) = delete;

    StoreInfo const& info() const;
    std::string const& path() const;

    /// The value of all samples of a tile that has only one, without reading its samples. Throws std::invalid_argument
    /// for a tile that no such store has.
    std::optional<std::int16_t> uniformValue(TileAddress const& address);

    /// The samples: tileSize * tileSize, rows from the top, 0 beyond the band's end. Their checksum has been tested.
    /// Throws std::invalid_argument as above.
    std::vector<std::int16_t> tile(TileAddress const& address);

    /// The places in a level's grid where a tile of any band and plane has samples other than 0, row by row; nothing else
    /// of the addresses counts.
    std::vector<TileAddress> cellsWithData(size_t level);

    /// Tiles that the file holds.
    size_t storedTiles();

private:
    struct State;
    std::unique_ptr<State> state_;
};
