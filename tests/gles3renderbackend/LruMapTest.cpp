#include "tests/gles3renderbackend/LruMapFixture.h"

#include <string>
#include <type_traits>

namespace lrumaptest {
namespace {

static_assert(!std::is_copy_constructible_v<Cache> && !std::is_copy_assignable_v<Cache>);
static_assert(!std::is_move_constructible_v<Cache> && !std::is_move_assignable_v<Cache>);
static_assert(!std::is_convertible_v<size_t, Cache>);

TEST_F(LruMapTest, NewMapIsEmptyAndReportsItsCapacity) {
    Cache const map(77);
    EXPECT_EQ(map.capacity(), 77u);
    EXPECT_EQ(map.used(), 0u);
    EXPECT_EQ(map.lockedBytes(), 0u);
    EXPECT_EQ(map.count({1, 0}), 0u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, GetOfAPresentKeyReturnsTheSameObject) {
    Cache map(10);
    map.get({1, 3}).tag = 5;
    EXPECT_EQ(map.get({1, 3}).tag, 5);
    EXPECT_EQ(Counted::made, 1u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, ReferenceStaysValidWhileOtherEntriesComeAndGo) {
    Cache map(kNoLimit);
    Counted& kept = map.get({1, 0});
    kept.tag = 9;
    for (size_t id = 1; id < 5000; ++id)
        map.get({1, id});
    map.eraseRange({1, 1}, {1, 4000});
    EXPECT_EQ(kept.tag, 9);
    EXPECT_EQ(map.find({1, 0}), &kept);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, FindMarksTheEntryMostRecentlyUsed) {
    Cache map(2);
    put(map, {1, 0}, 1);
    put(map, {1, 1}, 1);
    ASSERT_NE(map.find({1, 0}), nullptr);
    EXPECT_TRUE(invariantsHold(map));
    put(map, {1, 2}, 1);
    EXPECT_EQ(present(map), (Ids{0, 2}));
}

TEST_F(LruMapTest, FindOfAnAbsentKeyIsNullAndCreatesNothing) {
    Cache map(0);
    put(map, {1, 0}, 5);
    EXPECT_EQ(map.find({1, 1}), nullptr);
    EXPECT_EQ(present(map), (Ids{0}));
    EXPECT_EQ(Counted::made, 1u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, PeekCountAndSetSizeDoNotChangeTheRecencyOrder) {
    Cache map(3);
    for (size_t id = 0; id < 3; ++id)
        put(map, {1, id}, 1);
    map.get({1, 0}).tag = 4;
    map.get({1, 1});
    map.get({1, 2});
    ASSERT_NE(map.peek({1, 0}), nullptr);
    EXPECT_EQ(map.peek({1, 0})->tag, 4);
    EXPECT_EQ(map.peek({1, 9}), nullptr);
    EXPECT_EQ(map.count({1, 0}), 1u);
    EXPECT_EQ(map.setSize({1, 0}, 1), 1u);
    put(map, {1, 3}, 1);
    EXPECT_EQ(present(map), (Ids{1, 2, 3}));
}

TEST_F(LruMapTest, HalfBudgetTilesKeepTheTwoMostRecentlyUsed) {
    constexpr size_t kBudget = 1000;
    Cache map(kBudget);
    put(map, {1, 0}, kBudget / 2);
    put(map, {1, 1}, kBudget / 2);
    EXPECT_EQ(present(map), (Ids{0, 1}));
    map.get({1, 2});
    EXPECT_EQ(present(map), (Ids{0, 1, 2})) << "a full budget is not exceeded, so get evicts nothing";
    map.setSize({1, 2}, kBudget / 2);
    EXPECT_EQ(present(map), (Ids{1, 2}));
    EXPECT_EQ(map.used(), kBudget);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, EvictionStopsAsSoonAsTheBudgetHolds) {
    Cache map(0);
    put(map, {1, 0}, 0);
    put(map, {1, 1}, 4);
    map.get({1, 2});
    EXPECT_EQ(present(map), (Ids{2})) << "empty entries in front of the one that counts go with it";
    put(map, {1, 3}, 4);
    map.get({1, 2});
    map.get({1, 4});
    EXPECT_EQ(present(map), (Ids{2, 4})) << "an empty entry behind it stays";
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, GetOfAPresentKeyEvictsNothingThoughTheBudgetIsExceeded) {
    Cache map(0);
    put(map, {1, 0}, 5);
    map.lock({1, 0});
    put(map, {1, 1}, 5);
    map.unlock({1, 0});
    map.get({1, 1});
    map.find({1, 1});
    EXPECT_EQ(present(map), (Ids{0, 1}));
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, SetSizeOfAnAbsentKeyReturnsZeroAndEvictsNothing) {
    Cache map(0);
    put(map, {1, 0}, 5);
    EXPECT_EQ(map.setSize({1, 1}, 100), 0u);
    EXPECT_EQ(map.count({1, 1}), 0u);
    EXPECT_EQ(map.used(), 5u);
    EXPECT_EQ(present(map), (Ids{0}));
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, SetSizeToASmallerOrEqualSizeNeverEvicts) {
    Cache map(0);
    for (size_t id = 0; id < 3; ++id) {
        put(map, {1, id}, 9);
        map.lock({1, id});
    }
    for (size_t id = 0; id < 3; ++id)
        map.unlock({1, id});
    EXPECT_EQ(map.setSize({1, 2}, 9), 9u);
    EXPECT_EQ(map.setSize({1, 2}, 8), 9u);
    EXPECT_EQ(map.used(), 26u) << "far over the budget of 0";
    EXPECT_EQ(present(map), (Ids{0, 1, 2}));
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, SetSizeToALargerSizeEvictsFromTheLeastRecentlyUsedEnd) {
    Cache map(10);
    for (size_t id = 0; id < 5; ++id)
        put(map, {1, id}, 2);
    EXPECT_EQ(map.setSize({1, 4}, 5), 2u);
    EXPECT_EQ(present(map), (Ids{2, 3, 4}));
    EXPECT_EQ(map.used(), 9u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, SetSizeNeverEvictsTheEntryBeingResizedThoughItIsTheOldest) {
    Cache map(10);
    for (size_t id = 0; id < 5; ++id)
        put(map, {1, id}, 2);
    EXPECT_EQ(map.setSize({1, 0}, 4), 2u);
    EXPECT_EQ(present(map), (Ids{0, 2, 3, 4}));
    EXPECT_EQ(map.setSize({1, 0}, 40), 4u);
    EXPECT_EQ(present(map), (Ids{0}));
    EXPECT_EQ(map.used(), 40u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, EraseReturnsTheBytesAndDestroysTheValueOnce) {
    Cache map(10);
    put(map, {1, 0}, 3);
    put(map, {1, 1}, 4);
    EXPECT_EQ(map.erase({1, 0}), 3u);
    EXPECT_EQ(Counted::destroyed, 1u);
    EXPECT_EQ(map.used(), 4u);
    EXPECT_TRUE(invariantsHold(map));
    EXPECT_EQ(map.erase({1, 0}), 0u);
    EXPECT_EQ(Counted::destroyed, 1u);
    EXPECT_EQ(present(map), (Ids{1}));
}

TEST_F(LruMapTest, EraseRangeKeepsTheKeyEqualToItsEnd) {
    Cache map(100);
    for (size_t id = 3; id < 9; ++id)
        put(map, {1, id}, id);
    EXPECT_EQ(map.eraseRange({1, 4}, {1, 7}), 4u + 5u + 6u);
    EXPECT_TRUE(invariantsHold(map));
    EXPECT_EQ(present(map), (Ids{3, 7, 8}));
    EXPECT_EQ(Counted::destroyed, 3u);
}

TEST_F(LruMapTest, EraseRangeFromAKeyToItselfRemovesNothingAndToTheNextOnlyThatKey) {
    Cache map(100);
    for (size_t id = 4; id < 7; ++id)
        put(map, {1, id}, id);
    EXPECT_EQ(map.eraseRange({1, 5}, {1, 5}), 0u);
    EXPECT_EQ(present(map), (Ids{4, 5, 6}));
    EXPECT_EQ(map.eraseRange({1, 5}, {1, 6}), 5u);
    EXPECT_EQ(present(map), (Ids{4, 6}));
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, EraseRangeWithItsEndsSwappedRemovesNothing) {
    Cache map(100);
    for (size_t id = 4; id < 7; ++id)
        put(map, {1, id}, id);
    EXPECT_EQ(map.eraseRange({1, 7}, {1, 4}), 0u);
    EXPECT_EQ(present(map), (Ids{4, 5, 6}));
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, EraseRangeOfOneOwnerKeepsTheOthersAndTheLargestId) {
    Cache map(100);
    for (size_t owner = 1; owner < 4; ++owner) {
        put(map, {owner, 0}, 1);
        put(map, {owner, 7}, 2);
        put(map, {owner, kNoLimit}, 4);
    }
    EXPECT_EQ(map.eraseRange({2, 0}, {2, kNoLimit}), 3u);
    EXPECT_TRUE(invariantsHold(map));
    EXPECT_EQ(map.count({2, 0}) + map.count({2, 7}), 0u);
    EXPECT_EQ(map.count({2, kNoLimit}), 1u);
    EXPECT_EQ(map.used(), 7u + 4u + 7u);
}

TEST_F(LruMapTest, EraseRangeOverEntriesInEveryStateRemovesThemAll) {
    Cache map(100);
    for (size_t id = 0; id < 8; ++id)
        put(map, {1, id}, 1);
    for (size_t const id : {2u, 3u, 4u, 5u})
        map.lock({1, id});
    for (size_t const id : {4u, 3u})
        map.unlock({1, id});
    EXPECT_EQ(map.eraseRange({1, 1}, {1, 7}), 6u);
    EXPECT_TRUE(invariantsHold(map));
    EXPECT_EQ(present(map), (Ids{0, 7}));
    EXPECT_EQ(map.lockedBytes(), 0u);
}

TEST_F(LruMapTest, DestroyingTheMapDestroysEachValueOnce) {
    {
        Cache map(100);
        for (size_t id = 0; id < 8; ++id)
            put(map, {1, id}, 1);
        for (size_t const id : {2u, 3u, 4u})
            map.lock({1, id});
        map.unlock({1, 3});
        EXPECT_EQ(Counted::destroyed, 0u);
    }
    EXPECT_EQ(Counted::destroyed, 8u);
}

TEST_F(LruMapTest, ThrowingValueConstructorInsertsNothingAfterTheEviction) {
    Cache map(2);
    put(map, {1, 0}, 2);
    put(map, {1, 1}, 2);
    map.lock({1, 1});
    put(map, {1, 2}, 2);
    map.unlock({1, 1});
    Counted::failNext = true;
    EXPECT_THROW(map.get({1, 3}), std::runtime_error);
    EXPECT_TRUE(invariantsHold(map));
    EXPECT_EQ(map.count({1, 3}), 0u);
    EXPECT_EQ(present(map), (Ids{2})) << "evicted before the value was made";
    EXPECT_EQ(map.get({1, 3}).tag, 0);
    EXPECT_EQ(present(map), (Ids{2, 3}));
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapTest, KeysMayBeStringsInAPair) {
    using Named = std::pair<size_t, std::string>;
    LruMap<Named, Counted> map(2);
    for (char const* const name : {"a", "b", ""}) {
        map.get({1, name});
        map.setSize({1, name}, 1);
        EXPECT_TRUE(invariantsHold(map));
    }
    EXPECT_EQ(map.count({1, "a"}), 0u);
    EXPECT_EQ(map.count({1, "b"}), 1u);
    EXPECT_EQ(map.eraseRange({1, ""}, {1, "b"}), 1u);
    EXPECT_EQ(map.count({1, "b"}), 1u);
    EXPECT_TRUE(invariantsHold(map));
}

} // namespace
} // namespace lrumaptest
