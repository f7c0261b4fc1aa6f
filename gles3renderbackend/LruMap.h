#pragma once

#include <boost/functional/hash.hpp>
#include <boost/intrusive/list.hpp>
#include <boost/intrusive/set.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

template <class K, class V, class Hash>
class LruMapInvariants;

/// An LRU map with a budget in bytes. Entries can be locked: a locked entry is never evicted and its bytes do not count
/// against the budget. One thread only.
///
/// K: copyable, `==`, `<`, hashable by Hash. V: default constructible; it is built in place, never copied or moved,
/// and destroyed exactly once, when its entry goes. References stay valid until then.
///
/// Structure. One heap node per entry, reachable in three ways:
///
///     index_     open addressing by hash       key -> entry; a slot keeps the hash, so a hit reads one slot, one node
///     byKey_     tree by key                   only for eraseRange
///     recency    unlocked entries only, oldest first by `stamp`, the time of the last use, in two parts:
///       recent_    list     whoever is used goes to its back, so it is sorted by stamp at no cost
///       returned_  tree     unlocked entries whose stamp lies amid recent_, where a list has no cheap way in
///
/// The next victim is the older of the two fronts. A locked entry is in neither part and only its stamp follows its
/// uses, so eviction never meets it, however many there are, and unlocking puts it back at its place in time.
/// One list with all entries would need to step over the locked ones; one tree would make every hit logarithmic.
///
/// Cost: get, find, peek, count, lock in constant time on a present key; unlock and erase O(log n); an insertion
/// O(log n) and O(log n) for each entry it evicts; eraseRange O(log n) and O(log n) for each entry it removes.
///
/// Invariants (proved by LruMapInvariants of the tests):
///   1. index_ and byKey_ hold the same entries, one for a key, and index_ finds each of them.
///   2. An entry is in recent_, in returned_ or locked: exactly one of the three, and `place` says which.
///   3. recent_ and returned_ are each sorted by stamp; no two entries have the same stamp; none is beyond clock_.
///   4. used_ is the sum of all sizes, lockedBytes_ of the locked ones.
template <class K, class V, class Hash = boost::hash<K>>
class LruMap {
public:
    /// `capacity`: bytes that the unlocked entries may take together.
    explicit LruMap(size_t capacity) : capacity_(capacity) {}
    LruMap(LruMap const&) = delete;
    LruMap& operator=(LruMap const&) = delete;
    ~LruMap();

    /// The value of `key`, which becomes the most recently used. If it is absent, entries are evicted while the budget
    /// is exceeded, and only then it is created: unlocked, of size 0. If V's constructor throws, the evicted entries
    /// are gone and nothing is inserted.
    V& get(K const& key);

    /// Like get, but null if absent: nothing is created or evicted. The cheapest way to use an entry.
    V* find(K const& key);

    /// The value of `key` or null. Does not count as a use.
    V const* peek(K const& key) const;

    /// 0 or 1. Does not count as a use.
    size_t count(K const& key) const { return lookUp(key) != nullptr ? 1 : 0; }

    /// Sets the size of `key` in bytes and returns the old size; returns 0 and does nothing if it is absent. If the
    /// size grew, other entries are evicted while the budget is exceeded, but never `key` itself: when only it and
    /// locked entries are left, the budget stays exceeded. Does not count as a use.
    size_t setSize(K const& key, size_t bytes);

    /// Locking is a flag, not a count. No effect on an absent key; neither counts as a use and neither evicts.
    void lock(K const& key);
    void unlock(K const& key);

    /// Removes the entry, locked or not. Returns its bytes, 0 if absent.
    size_t erase(K const& key);

    /// Removes the entries with lo <= key < hi, locked or not. Returns their bytes.
    size_t eraseRange(K const& lo, K const& hi);

    /// Evicts entries, least recently used first, until at most `bytes` are used or only locked entries are left.
    /// Returns the bytes evicted. For owners of several maps with a common budget.
    size_t evictTo(size_t bytes);

    /// Number of entries.
    size_t size() const { return index_.size(); }
    /// Budget in bytes.
    size_t capacity() const { return capacity_; }
    /// Bytes of all entries.
    size_t used() const { return used_; }
    /// Bytes of the locked entries.
    size_t lockedBytes() const { return lockedBytes_; }

private:
    friend class LruMapInvariants<K, V, Hash>;

    enum class Place : std::uint8_t { Recent, Returned, Locked };

    // The fields that a hit and a descent in the key tree read are adjacent: one cache line for a small key.
    struct Entry {
        Entry(K const& entryKey, size_t entryHash) : key(entryKey), hash(entryHash) {}

        boost::intrusive::list_member_hook<> recentHook;
        std::uint64_t stamp = 0;
        K const key;
        boost::intrusive::set_member_hook<boost::intrusive::optimize_size<true>> byKeyHook;
        Place place = Place::Recent;
        V value{};
        size_t size = 0;
        size_t const hash;
        boost::intrusive::set_member_hook<boost::intrusive::optimize_size<true>> returnedHook;
    };

    struct KeyOf {
        using type = K;
        K const& operator()(Entry const& entry) const { return entry.key; }
    };
    struct StampOf {
        using type = std::uint64_t;
        std::uint64_t const& operator()(Entry const& entry) const { return entry.stamp; }
    };

    using RecentList =
        boost::intrusive::list<Entry,
                               boost::intrusive::member_hook<Entry, decltype(Entry::recentHook), &Entry::recentHook>,
                               boost::intrusive::constant_time_size<false>>;
    using ReturnedTree =
        boost::intrusive::set<Entry,
                              boost::intrusive::member_hook<Entry, decltype(Entry::returnedHook), &Entry::returnedHook>,
                              boost::intrusive::key_of_value<StampOf>, boost::intrusive::constant_time_size<false>>;
    using KeyTree =
        boost::intrusive::set<Entry,
                              boost::intrusive::member_hook<Entry, decltype(Entry::byKeyHook), &Entry::byKeyHook>,
                              boost::intrusive::key_of_value<KeyOf>, boost::intrusive::compare<std::less<K>>,
                              boost::intrusive::constant_time_size<false>>;

    // Hash table with linear probing. It always has a free slot and no tombstones: erasing moves later entries of the
    // run up. It grows by doubling and keeps its slots, 16 bytes each, as long as the map lives.
    class Index {
    public:
        Entry* find(K const& key, size_t hash) const;
        /// Makes room for one more entry; the insert that follows cannot fail.
        void reserveOneMore();
        void insert(Entry& entry) noexcept { put({entry.hash, &entry}); }
        void erase(Entry const& entry) noexcept;
        size_t size() const { return size_; }

    private:
        struct Slot {
            size_t hash = 0;
            Entry* entry = nullptr;
        };

        // Fibonacci hashing: takes the high bits of a product, so that a weak Hash such as the identity suffices.
        size_t home(size_t hash) const {
            return static_cast<size_t>((std::uint64_t{hash} * 0x9E3779B97F4A7C15u) >> shift_);
        }
        size_t next(size_t slot) const { return (slot + 1) & (slots_.size() - 1); }
        size_t distance(size_t from, size_t to) const { return (to - from) & (slots_.size() - 1); }
        void put(Slot slot) noexcept;

        unsigned shift_ = 64 - 4;
        size_t size_ = 0;
        std::vector<Slot> slots_ = std::vector<Slot>(size_t{1} << 4);
    };

    Entry* lookUp(K const& key) const { return index_.find(key, Hash{}(key)); }
    void touch(Entry& entry);
    Entry& insert(K const& key, size_t hash);
    void enterRecency(Entry& entry);
    void leaveRecency(Entry& entry);
    // used_ - lockedBytes_ cannot wrap; capacity_ + lockedBytes_ could, for a capacity that means "no limit".
    bool overBudget() const { return used_ - lockedBytes_ > capacity_; }
    void evict(Entry const* keep);
    Entry* oldestUnlockedBut(Entry const* keep);
    size_t destroy(Entry& entry);
    template <class Recency>
    static Entry* frontBut(Recency& recency, Entry const* keep);

    Index index_;
    RecentList recent_;
    std::uint64_t clock_ = 0;
    size_t const capacity_;
    size_t used_ = 0;
    size_t lockedBytes_ = 0;
    ReturnedTree returned_;
    KeyTree byKey_;
};

template <class K, class V, class Hash>
LruMap<K, V, Hash>::~LruMap() {
    recent_.clear();
    returned_.clear();
    byKey_.clear_and_dispose([](Entry* entry) { delete entry; });
}

template <class K, class V, class Hash>
V& LruMap<K, V, Hash>::get(K const& key) {
    size_t const hash = Hash{}(key);
    Entry* const present = index_.find(key, hash);
    Entry& entry = present != nullptr ? *present : insert(key, hash);
    touch(entry);
    return entry.value;
}

template <class K, class V, class Hash>
V* LruMap<K, V, Hash>::find(K const& key) {
    Entry* const entry = lookUp(key);
    if (entry == nullptr) return nullptr;
    touch(*entry);
    return &entry->value;
}

template <class K, class V, class Hash>
V const* LruMap<K, V, Hash>::peek(K const& key) const {
    Entry const* const entry = lookUp(key);
    return entry != nullptr ? &entry->value : nullptr;
}

template <class K, class V, class Hash>
size_t LruMap<K, V, Hash>::setSize(K const& key, size_t bytes) {
    Entry* const entry = lookUp(key);
    if (entry == nullptr) return 0;

    size_t const previous = entry->size;
    entry->size = bytes;
    used_ += bytes - previous;
    if (entry->place == Place::Locked) lockedBytes_ += bytes - previous;
    if (bytes > previous) evict(entry);
    return previous;
}

template <class K, class V, class Hash>
void LruMap<K, V, Hash>::lock(K const& key) {
    Entry* const entry = lookUp(key);
    if (entry == nullptr || entry->place == Place::Locked) return;
    leaveRecency(*entry);
    entry->place = Place::Locked;
    lockedBytes_ += entry->size;
}

template <class K, class V, class Hash>
void LruMap<K, V, Hash>::unlock(K const& key) {
    Entry* const entry = lookUp(key);
    if (entry == nullptr || entry->place != Place::Locked) return;
    enterRecency(*entry);
    lockedBytes_ -= entry->size;
}

template <class K, class V, class Hash>
size_t LruMap<K, V, Hash>::erase(K const& key) {
    Entry* const entry = lookUp(key);
    return entry != nullptr ? destroy(*entry) : 0;
}

template <class K, class V, class Hash>
size_t LruMap<K, V, Hash>::eraseRange(K const& lo, K const& hi) {
    if (!(lo < hi)) return 0;
    // Both ends are looked up first: lo may be the key inside an entry that is erased.
    auto entry = byKey_.lower_bound(lo);
    auto const end = byKey_.lower_bound(hi);
    size_t bytes = 0;
    while (entry != end)
        bytes += destroy(*entry++);
    return bytes;
}

template <class K, class V, class Hash>
void LruMap<K, V, Hash>::touch(Entry& entry) {
    if (entry.place == Place::Recent) {
        recent_.splice(recent_.end(), recent_, recent_.iterator_to(entry));
    } else if (entry.place == Place::Returned) {
        leaveRecency(entry);
        recent_.push_back(entry);
        entry.place = Place::Recent;
    }
    entry.stamp = ++clock_;
}

template <class K, class V, class Hash>
typename LruMap<K, V, Hash>::Entry& LruMap<K, V, Hash>::insert(K const& key, size_t hash) {
    evict(nullptr);
    // Everything that can throw comes before the first link, which would have to be undone.
    index_.reserveOneMore();
    auto entry = std::make_unique<Entry>(key, hash);
    byKey_.insert(*entry);
    index_.insert(*entry);
    recent_.push_back(*entry);
    return *entry.release();
}

// An entry older or younger than all of recent_ is still cheap to link there; only the rare others go to the tree.
template <class K, class V, class Hash>
void LruMap<K, V, Hash>::enterRecency(Entry& entry) {
    entry.place = Place::Recent;
    if (recent_.empty() || recent_.back().stamp < entry.stamp) {
        recent_.push_back(entry);
    } else if (entry.stamp < recent_.front().stamp) {
        recent_.push_front(entry);
    } else {
        returned_.insert(entry);
        entry.place = Place::Returned;
    }
}

template <class K, class V, class Hash>
void LruMap<K, V, Hash>::leaveRecency(Entry& entry) {
    if (entry.place == Place::Recent) recent_.erase(recent_.iterator_to(entry));
    if (entry.place == Place::Returned) returned_.erase(returned_.iterator_to(entry));
}

template <class K, class V, class Hash>
void LruMap<K, V, Hash>::evict(Entry const* keep) {
    while (overBudget()) {
        Entry* const oldest = oldestUnlockedBut(keep);
        if (oldest == nullptr) return;
        destroy(*oldest);
    }
}

template <class K, class V, class Hash>
size_t LruMap<K, V, Hash>::evictTo(size_t bytes) {
    size_t evicted = 0;
    while (used_ > bytes) {
        Entry* const oldest = oldestUnlockedBut(nullptr);
        if (oldest == nullptr) break;
        evicted += destroy(*oldest);
    }
    return evicted;
}

template <class K, class V, class Hash>
typename LruMap<K, V, Hash>::Entry* LruMap<K, V, Hash>::oldestUnlockedBut(Entry const* keep) {
    Entry* const recent = frontBut(recent_, keep);
    Entry* const returned = frontBut(returned_, keep);
    if (recent == nullptr) return returned;
    if (returned == nullptr) return recent;
    return recent->stamp < returned->stamp ? recent : returned;
}

template <class K, class V, class Hash>
template <class Recency>
typename LruMap<K, V, Hash>::Entry* LruMap<K, V, Hash>::frontBut(Recency& recency, Entry const* keep) {
    auto front = recency.begin();
    if (front != recency.end() && &*front == keep) ++front;
    return front != recency.end() ? &*front : nullptr;
}

// Removes the entry from all structures and updates the sums before V's destructor runs.
template <class K, class V, class Hash>
size_t LruMap<K, V, Hash>::destroy(Entry& entry) {
    std::unique_ptr<Entry> const owned(&entry);
    leaveRecency(entry);
    byKey_.erase(byKey_.iterator_to(entry));
    index_.erase(entry);
    used_ -= entry.size;
    if (entry.place == Place::Locked) lockedBytes_ -= entry.size;
    return entry.size;
}

template <class K, class V, class Hash>
typename LruMap<K, V, Hash>::Entry* LruMap<K, V, Hash>::Index::find(K const& key, size_t hash) const {
    for (size_t i = home(hash);; i = next(i)) {
        Slot const& slot = slots_[i];
        if (slot.entry == nullptr) return nullptr;
        if (slot.hash == hash && slot.entry->key == key) return slot.entry;
    }
}

template <class K, class V, class Hash>
void LruMap<K, V, Hash>::Index::reserveOneMore() {
    if (size_ + 1 <= slots_.size() / 4 * 3) return;
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    --shift_;
    size_ = 0;
    for (Slot const& slot : old) {
        if (slot.entry != nullptr) put(slot);
    }
}

template <class K, class V, class Hash>
void LruMap<K, V, Hash>::Index::put(Slot slot) noexcept {
    size_t i = home(slot.hash);
    while (slots_[i].entry != nullptr)
        i = next(i);
    slots_[i] = slot;
    ++size_;
}

template <class K, class V, class Hash>
void LruMap<K, V, Hash>::Index::erase(Entry const& entry) noexcept {
    size_t hole = home(entry.hash);
    while (slots_[hole].entry != &entry)
        hole = next(hole);
    // A later slot of the run may fill the hole unless its home lies behind the hole: then lookups would miss it.
    for (size_t i = next(hole); slots_[i].entry != nullptr; i = next(i)) {
        if (distance(home(slots_[i].hash), i) < distance(hole, i)) continue;
        slots_[hole] = slots_[i];
        hole = i;
    }
    slots_[hole] = {};
    --size_;
}
