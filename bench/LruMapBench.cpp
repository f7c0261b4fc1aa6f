// LruMap beside a cache of the same behaviour on boost::multi_index: hashed + ordered + sequenced, like LruMap's hash
// index, key order and recency order. Both hold the same keys and values and take the same keys in the same order. With
// locked entries the baseline has to step over them, as any single recency list. The relevant figure there is
// insertBehind100000Locked/ours against insert/ours.
#include "bench/Benchmarks.h"
#include "gles3renderbackend/LruMap.h"

#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/member.hpp>
#include <boost/multi_index/ordered_index.hpp>
#include <boost/multi_index/sequenced_index.hpp>
#include <boost/multi_index_container.hpp>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Key = std::pair<size_t, size_t>;

// A texture's data: a shared name, a size, a format. Small, so that the map's own cost shows.
struct Value {
    std::shared_ptr<unsigned> name;
    size_t width = 0;
    size_t height = 0;
};

class MultiIndexLru {
public:
    explicit MultiIndexLru(size_t capacity) : capacity_(capacity) {}

    Value& get(Key const& key) {
        auto const present = byHash().find(key);
        if (present != byHash().end()) return touch(present)->value;
        evict(nullptr);
        byRecency().emplace_back(key);
        return byRecency().back().value;
    }

    Value* find(Key const& key) {
        auto const present = byHash().find(key);
        return present != byHash().end() ? &touch(present)->value : nullptr;
    }

    void setSize(Key const& key, size_t bytes) {
        auto const present = byHash().find(key);
        if (present == byHash().end()) return;
        size_t const previous = std::exchange(present->size, bytes);
        used_ += bytes - previous;
        if (present->locked) lockedBytes_ += bytes - previous;
        if (bytes > previous) evict(&*present);
    }

    void lock(Key const& key) {
        auto const present = byHash().find(key);
        if (present == byHash().end() || present->locked) return;
        present->locked = true;
        lockedBytes_ += present->size;
    }

private:
    // Members outside the indices are mutable, so that they can change in place.
    struct Entry {
        explicit Entry(Key const& entryKey) : key(entryKey) {}
        Key key;
        mutable Value value;
        mutable size_t size = 0;
        mutable bool locked = false;
    };
    using KeyOf = boost::multi_index::member<Entry, Key, &Entry::key>;
    using Entries =
        boost::multi_index_container<Entry, boost::multi_index::indexed_by<boost::multi_index::hashed_unique<KeyOf>,
                                                                           boost::multi_index::ordered_unique<KeyOf>,
                                                                           boost::multi_index::sequenced<>>>;
    using Found = Entries::nth_index<0>::type::iterator;

    Entries::nth_index<0>::type& byHash() { return entries_.get<0>(); }
    Entries::nth_index<2>::type& byRecency() { return entries_.get<2>(); }

    Found touch(Found present) {
        byRecency().relocate(byRecency().end(), entries_.project<2>(present));
        return present;
    }

    void evict(Entry const* keep) {
        auto oldest = byRecency().begin();
        while (used_ > capacity_ + lockedBytes_ && oldest != byRecency().end()) {
            if (oldest->locked || &*oldest == keep) {
                ++oldest;
                continue;
            }
            used_ -= oldest->size;
            oldest = byRecency().erase(oldest);
        }
    }

    Entries entries_;
    size_t const capacity_;
    size_t used_ = 0;
    size_t lockedBytes_ = 0;
};

// A bijection of 64 bits (splitmix64): new keys without end, in no order from which an index could profit.
size_t scramble(std::uint64_t x) {
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return x ^ (x >> 31);
}

template <class Map>
void fill(Map& map, std::uint64_t first, std::uint64_t count) {
    for (std::uint64_t i = first; i < first + count; ++i) {
        Key const key{1, scramble(i)};
        map.get(key);
        map.setSize(key, 1);
    }
}

template <class Map>
void hit(benchmark::State& state, size_t entries) {
    Map map(entries);
    fill(map, 0, entries);
    // Random picks: a cycle through all entries would always hit the oldest, whose neighbours are warm.
    std::vector<size_t> picks(4 * entries);
    std::mt19937_64 random(7);
    std::generate(picks.begin(), picks.end(), [&] { return scramble(random() % entries); });

    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find({1, picks[next]}));
        if (++next == picks.size()) next = 0;
    }
    state.SetItemsProcessed(state.iterations());
}

// Each step inserts one entry of one byte into a full map, which evicts one.
template <class Map>
void insertAndEvict(benchmark::State& state, size_t entries, size_t locked) {
    Map map(entries);
    fill(map, 0, locked);
    for (std::uint64_t i = 0; i < locked; ++i)
        map.lock({1, scramble(i)});
    fill(map, locked, entries);

    std::uint64_t next = locked + entries;
    for (auto _ : state) {
        Key const key{1, scramble(next++)};
        benchmark::DoNotOptimize(map.get(key));
        map.setSize(key, 1);
    }
    state.SetItemsProcessed(state.iterations());
}

// From empty to full and back, including growth of the hash table and all destructors.
template <class Map>
void build(benchmark::State& state, size_t entries) {
    for (auto _ : state) {
        Map map(entries);
        fill(map, 0, entries);
        benchmark::DoNotOptimize(&map);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(entries));
}

template <class Map>
void registerFor(std::string const& who, size_t entries) {
    std::string const tail = "/" + who + "/" + std::to_string(entries);
    auto const add = [&](std::string const& what, auto function) {
        benchmark::RegisterBenchmark(("LruMap/" + what + tail).c_str(), function);
    };
    add("hit", [=](benchmark::State& state) { hit<Map>(state, entries); });
    add("insert", [=](benchmark::State& state) { insertAndEvict<Map>(state, entries, 0); });
    add("insertBehind100000Locked", [=](benchmark::State& state) { insertAndEvict<Map>(state, entries, 100000); });
    add("build", [=](benchmark::State& state) { build<Map>(state, entries); });
}

} // namespace

void registerLruMap() {
    for (size_t const entries : {size_t{10000}, size_t{100000}, size_t{1000000}}) {
        registerFor<LruMap<Key, Value>>("ours", entries);
        registerFor<MultiIndexLru>("multi_index", entries);
    }
}
