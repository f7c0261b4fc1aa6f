#include "host/pyramid/UnitCache.h"

#include <gtest/gtest.h>

namespace {

UnitCache::Samples unit(size_t bytes) {
    return std::make_shared<std::vector<std::uint8_t> const>(bytes);
}

} // namespace

TEST(UnitCacheTest, TheUnitsUsedLastStay) {
    UnitCache cache(30);
    auto const first = unit(10);
    cache.keep({0, 0, 1}, first);
    cache.keep({1, 0, 1}, unit(10));
    cache.keep({0, 0, 2}, unit(10));
    EXPECT_EQ(cache.find({0, 0, 1}), first);
    cache.keep({0, 0, 3}, unit(10));
    EXPECT_EQ(cache.bytes(), 30u);
    EXPECT_EQ(cache.find({1, 0, 1}), nullptr);
    EXPECT_EQ(cache.find({0, 0, 1}), first);
    EXPECT_EQ(cache.find({7, 0, 7}), nullptr);
}

TEST(UnitCacheTest, AUnitAloneMayExceedTheBudget) {
    UnitCache cache(5);
    auto const large = unit(10);
    cache.keep({0, 0, 1}, large);
    EXPECT_EQ(cache.find({0, 0, 1}), large);
    cache.keep({0, 0, 2}, unit(1));
    EXPECT_EQ(cache.find({0, 0, 1}), nullptr);
}
