#pragma once

#include "tests/gles3renderbackend/LruMapFixture.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace lrumaptest {

/// The map as a list of records, least recently used first: each operation step by step, nothing clever.
class NaiveLru {
public:
    struct Record {
        Key key;
        int tag = 0;
        size_t size = 0;
        bool locked = false;
    };

    explicit NaiveLru(size_t capacity) : capacity_(capacity) {}

    int& get(Key const& key) {
        if (!find(key)) {
            evict(std::nullopt);
            records_.push_back({key});
        }
        return *find(key);
    }

    int* find(Key const& key) {
        for (size_t i = 0; i < records_.size(); ++i) {
            if (records_[i].key != key) continue;
            Record const record = records_[i];
            records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(i));
            records_.push_back(record);
            return &records_.back().tag;
        }
        return nullptr;
    }

    size_t setSize(Key const& key, size_t bytes) {
        Record* const record = at(key);
        if (record == nullptr) return 0;
        size_t const previous = record->size;
        record->size = bytes;
        if (bytes > previous) evict(key);
        return previous;
    }

    void setLocked(Key const& key, bool locked) {
        if (Record* const record = at(key)) record->locked = locked;
    }

    size_t erase(Key const& key) {
        return eraseIf([&](Record const& record) { return record.key == key; });
    }

    size_t eraseRange(Key const& lo, Key const& hi) {
        return eraseIf([&](Record const& record) { return lo <= record.key && record.key < hi; });
    }

    size_t evictTo(size_t bytes) {
        size_t const before = used();
        for (size_t i = 0; i < records_.size() && used() > bytes;) {
            if (records_[i].locked)
                ++i;
            else
                records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(i));
        }
        return before - used();
    }

    Record* at(Key const& key) {
        for (Record& record : records_) {
            if (record.key == key) return &record;
        }
        return nullptr;
    }

    size_t used() const {
        size_t sum = 0;
        for (Record const& record : records_)
            sum += record.size;
        return sum;
    }

    size_t lockedBytes() const {
        size_t sum = 0;
        for (Record const& record : records_)
            sum += record.locked ? record.size : 0;
        return sum;
    }

    std::vector<Record> const& records() const { return records_; }

private:
    void evict(std::optional<Key> const& keep) {
        size_t i = 0;
        while (i < records_.size() && used() > capacity_ + lockedBytes()) {
            if (records_[i].locked || records_[i].key == keep) {
                ++i;
            } else {
                records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
    }

    template <class Predicate>
    size_t eraseIf(Predicate const& goes) {
        size_t const before = used();
        records_.erase(std::remove_if(records_.begin(), records_.end(), goes), records_.end());
        return before - used();
    }

    size_t capacity_;
    std::vector<Record> records_;
};

/// The real map and the model side by side. GoogleTest's assertions say where they differ.
template <class Map>
class Pair {
public:
    /// below: a number from 0 to less than its argument, which decides what happens next.
    Pair(size_t capacity, std::function<size_t(size_t end)> below)
        : map_(capacity), model_(capacity), below_(std::move(below)) {}

    void step() {
        Key const key = anyKey();
        switch (below_(13)) {
        case 0:
        case 1:
        case 2:
            return get(key);
        case 3:
            return find(key);
        case 4:
        case 5:
            return setSize(key, below_(4) == 0 ? 0 : below_(20));
        case 6:
        case 7:
            return setLocked(key, true);
        case 8:
        case 9:
            return setLocked(key, false);
        case 10:
            ASSERT_EQ(map_.erase(key), model_.erase(key));
            return;
        case 11:
            return evictTo(below_(200));
        default:
            return below_(8) == 0 ? eraseRange(key, anyKey()) : get(key);
        }
    }

    /// Unlocked bytes are squeezed out one entry at a time: shows the whole recency order.
    void drain() {
        Key const last{9, 9};
        get(last);
        setLocked(last, false);
        for (size_t bytes = 1; bytes < 2000; bytes += 7) {
            setSize(last, bytes);
            compare();
            if (testing::Test::HasFatalFailure()) return;
        }
    }

    void compare() {
        ASSERT_TRUE(invariantsHold(map_));
        ASSERT_EQ(map_.used(), model_.used());
        ASSERT_EQ(map_.size(), model_.records().size());
        ASSERT_EQ(map_.lockedBytes(), model_.lockedBytes());
        ASSERT_EQ(Counted::alive(), model_.records().size());
        for (NaiveLru::Record const& record : model_.records()) {
            Counted const* const value = map_.peek(record.key);
            ASSERT_NE(value, nullptr) << record.key.first << ", " << record.key.second;
            ASSERT_EQ(value->tag, record.tag);
            ASSERT_EQ(map_.count(record.key), 1u);
        }
    }

private:
    Key anyKey() {
        size_t const owner = 1 + below_(2);
        return {owner, below_(12)};
    }

    void get(Key const& key) {
        int const tag = ++tags_;
        map_.get(key).tag = tag;
        model_.get(key) = tag;
    }

    void find(Key const& key) {
        Counted const* const value = map_.find(key);
        int const* const tag = model_.find(key);
        ASSERT_EQ(value != nullptr, tag != nullptr);
        if (tag != nullptr) {
            ASSERT_EQ(value->tag, *tag);
        }
    }

    void setSize(Key const& key, size_t bytes) { ASSERT_EQ(map_.setSize(key, bytes), model_.setSize(key, bytes)); }

    void evictTo(size_t bytes) { ASSERT_EQ(map_.evictTo(bytes), model_.evictTo(bytes)); }

    void setLocked(Key const& key, bool locked) {
        locked ? map_.lock(key) : map_.unlock(key);
        model_.setLocked(key, locked);
    }

    void eraseRange(Key const& lo, Key const& hi) { ASSERT_EQ(map_.eraseRange(lo, hi), model_.eraseRange(lo, hi)); }

    Map map_;
    NaiveLru model_;
    std::function<size_t(size_t end)> below_;
    int tags_ = 0;
};

} // namespace lrumaptest
