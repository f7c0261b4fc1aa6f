#pragma once

#include "gles3renderbackend/LruMap.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Looks into an LruMap: O(n log n).
template <class K, class V, class Hash>
class LruMapInvariants {
public:
    using Map = LruMap<K, V, Hash>;

    /// Whether the invariants of LruMap.h hold.
    static bool hold(Map const& map) { return entriesConsistent(map) && recencyConsistent(map); }

private:
    using Entry = typename Map::Entry;
    using Place = typename Map::Place;

    static bool entriesConsistent(Map const& map) {
        size_t entries = 0;
        size_t used = 0;
        size_t lockedBytes = 0;
        Entry const* previous = nullptr;
        for (Entry const& entry : map.byKey_) {
            if (previous != nullptr && !(previous->key < entry.key)) return false;
            if (entry.hash != Hash{}(entry.key) || map.index_.find(entry.key, entry.hash) != &entry) return false;
            if (entry.recentHook.is_linked() != (entry.place == Place::Recent)) return false;
            if (entry.returnedHook.is_linked() != (entry.place == Place::Returned)) return false;
            previous = &entry;
            ++entries;
            used += entry.size;
            if (entry.place == Place::Locked) lockedBytes += entry.size;
        }
        return entries == map.index_.size() && used == map.used_ && lockedBytes == map.lockedBytes_;
    }

    static bool recencyConsistent(Map const& map) {
        auto const older = [](Entry const& a, Entry const& b) { return a.stamp < b.stamp; };
        if (!std::is_sorted(map.recent_.begin(), map.recent_.end(), older)) return false;
        if (!std::is_sorted(map.returned_.begin(), map.returned_.end(), older)) return false;

        std::vector<std::uint64_t> stamps;
        size_t locked = 0;
        for (Entry const& entry : map.byKey_) {
            stamps.push_back(entry.stamp);
            if (entry.place == Place::Locked) ++locked;
        }
        std::sort(stamps.begin(), stamps.end());
        if (std::adjacent_find(stamps.begin(), stamps.end()) != stamps.end()) return false;
        if (!stamps.empty() && stamps.back() > map.clock_) return false;
        return map.recent_.size() + map.returned_.size() + locked == stamps.size();
    }
};

template <class K, class V, class Hash>
bool invariantsHold(LruMap<K, V, Hash> const& map) {
    return LruMapInvariants<K, V, Hash>::hold(map);
}
