#pragma once

#include "host/view/LevelTile.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <utility>

/// What is kept of picture tiles, with the bytes that each takes; those that were used last stay when room is needed.
template <class Value>
class KeptTiles {
public:
    /// Null where there is none. Counts as a use.
    Value* find(LevelTile const& tile) {
        auto const found = tiles_.find(tile);
        if (found == tiles_.end()) return nullptr;
        found->second.used = ++clock_;
        return &found->second.value;
    }
    bool has(LevelTile const& tile) const { return tiles_.count(tile) != 0; }

    /// The tile is not kept yet. Where it throws nothing is kept.
    void keep(LevelTile const& tile, Value&& value, std::size_t bytes) {
        if (tiles_.try_emplace(tile, Entry{std::move(value), bytes, ++clock_}).second) bytes_ += bytes;
    }

    /// Drops tiles, those first that were used longest ago, until at most so many bytes are left. Tiles that are needed
    /// stay. Returns the bytes that are gone.
    std::size_t trim(std::size_t bytes, std::set<LevelTile> const& needed) {
        std::size_t const before = bytes_;
        if (before <= bytes) return 0;
        std::map<std::uint64_t, LevelTile> oldest;
        for (auto const& entry : tiles_) {
            if (needed.count(entry.first) == 0) oldest.emplace(entry.second.used, entry.first);
        }
        for (auto next = oldest.begin(); next != oldest.end() && bytes_ > bytes; ++next) {
            bytes_ -= tiles_.find(next->second)->second.bytes;
            tiles_.erase(next->second);
        }
        return before - bytes_;
    }

    void clear() {
        tiles_.clear();
        bytes_ = 0;
    }
    std::size_t bytes() const { return bytes_; }
    std::size_t count() const { return tiles_.size(); }

private:
    struct Entry {
        Value value;
        std::size_t bytes;
        std::uint64_t used;
    };

    std::map<LevelTile, Entry> tiles_;
    std::size_t bytes_ = 0;
    std::uint64_t clock_ = 0;
};
