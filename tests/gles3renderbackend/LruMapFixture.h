#pragma once

#include "tests/gles3renderbackend/LruMapInvariants.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

namespace lrumaptest {

using Key = std::pair<size_t, size_t>;

constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();

// A value that cannot be copied or moved and that counts its lives, as a texture counts its GL names.
struct Counted {
    static inline size_t made = 0;
    static inline size_t destroyed = 0;
    static inline bool failNext = false;

    Counted() {
        if (std::exchange(failNext, false)) throw std::runtime_error("no value");
        ++made;
    }
    Counted(Counted const&) = delete;
    Counted& operator=(Counted const&) = delete;
    ~Counted() { ++destroyed; }

    static size_t alive() { return made - destroyed; }

    int tag = 0;
};

using Cache = LruMap<Key, Counted>;
using Ids = std::vector<size_t>;

inline void put(Cache& map, Key const& key, size_t bytes) {
    map.get(key);
    ASSERT_TRUE(invariantsHold(map));
    map.setSize(key, bytes);
    ASSERT_TRUE(invariantsHold(map));
}

// The ids below 32 of owner 1 that are present.
inline Ids present(Cache const& map) {
    Ids ids;
    for (size_t id = 0; id < 32; ++id) {
        if (map.count({1, id}) == 1) ids.push_back(id);
    }
    return ids;
}

class LruMapTest : public testing::Test {
protected:
    void SetUp() override {
        Counted::made = 0;
        Counted::destroyed = 0;
        Counted::failNext = false;
    }
    void TearDown() override { EXPECT_EQ(Counted::alive(), 0u); }
};

} // namespace lrumaptest
