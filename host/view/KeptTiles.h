#pragma once

#include "gles3renderbackend/LruMap.h"
#include "host/view/LevelTile.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <set>
#include <utility>

/// What is kept of tiles, each of at least one byte. Nothing goes but by trim(), for several of these share one budget.
template <class Value>
class KeptTiles {
public:
    /// Null where there is none. Counts as a use.
    Value* find(LevelTile const& tile) {
        std::optional<Value>* const found = tiles_.find(tile);
        return found != nullptr ? &**found : nullptr;
    }
    bool has(LevelTile const& tile) const { return tiles_.count(tile) != 0; }

    /// The tile is not kept yet. Where it throws nothing is kept.
    void keep(LevelTile const& tile, Value&& value, size_t bytes) {
        tiles_.get(tile).emplace(std::move(value));
        tiles_.setSize(tile, bytes);
    }

    /// Drops tiles, those first that were used longest ago, until at most so many bytes are left. Tiles that are needed
    /// stay. Returns the bytes that are gone.
    size_t trim(size_t bytes, std::set<LevelTile> const& needed) {
        if (tiles_.used() <= bytes) return 0;
        for (LevelTile const& tile : needed)
            tiles_.lock(tile);
        size_t const gone = tiles_.evictTo(bytes);
        for (LevelTile const& tile : needed)
            tiles_.unlock(tile);
        return gone;
    }

    void clear() { tiles_.evictTo(0); }
    size_t bytes() const { return tiles_.used(); }
    size_t count() const { return tiles_.size(); }

private:
    // Another number for each tile that a store may have.
    struct Hash {
        size_t operator()(LevelTile const& tile) const { return (tile.level << 56U) ^ (tile.row << 28U) ^ tile.column; }
    };

    LruMap<LevelTile, std::optional<Value>, Hash> tiles_{std::numeric_limits<size_t>::max()};
};
