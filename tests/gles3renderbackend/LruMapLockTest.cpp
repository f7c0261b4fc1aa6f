#include "tests/gles3renderbackend/LruMapFixture.h"

namespace lrumaptest {
namespace {

class LruMapLockTest : public LruMapTest {};

TEST_F(LruMapLockTest, GetCreatesAnUnlockedEntryOfSizeZero) {
    Cache map(10);
    EXPECT_EQ(map.get({1, 3}).tag, 0);
    EXPECT_TRUE(invariantsHold(map));
    EXPECT_EQ(map.count({1, 3}), 1u);
    EXPECT_EQ(map.used(), 0u);
    EXPECT_EQ(map.setSize({1, 3}, 4), 0u);
    EXPECT_EQ(map.lockedBytes(), 0u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, HalfBudgetTilesEvictTheOldestUnlockedOne) {
    Cache map(10);
    put(map, {1, 0}, 5);
    put(map, {1, 1}, 5);
    map.lock({1, 0});
    put(map, {1, 2}, 5);
    EXPECT_EQ(present(map), (Ids{0, 1, 2})) << "the locked bytes do not count";
    put(map, {1, 3}, 5);
    EXPECT_EQ(present(map), (Ids{0, 2, 3}));
}

TEST_F(LruMapLockTest, CapacityZeroEvictsEveryUnlockedEntryBeforeInserting) {
    Cache map(0);
    put(map, {1, 0}, 3);
    EXPECT_EQ(present(map), (Ids{0})) << "the entry in hand may exceed the budget";
    map.get({1, 1});
    EXPECT_EQ(present(map), (Ids{1}));
    EXPECT_EQ(map.used(), 0u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, CapacityZeroEvictsEveryUnlockedEntryLeftByUnlocking) {
    Cache map(0);
    for (size_t id = 0; id < 4; ++id) {
        put(map, {1, id}, 3);
        map.lock({1, id});
    }
    EXPECT_EQ(map.used(), 12u);
    for (size_t const id : {2u, 0u, 3u})
        map.unlock({1, id});
    EXPECT_EQ(present(map), (Ids{0, 1, 2, 3})) << "unlocking evicts nothing";
    map.get({1, 4});
    EXPECT_EQ(present(map), (Ids{1, 4}));
    EXPECT_EQ(map.used(), 3u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, LockedEntrySurvivesEvictionAndIsEvictedOnceUnlocked) {
    Cache map(3);
    for (size_t id = 0; id < 3; ++id)
        put(map, {1, id}, 1);
    map.lock({1, 0});
    for (size_t id = 3; id < 30; ++id)
        put(map, {1, id}, 1);
    EXPECT_EQ(present(map), (Ids{0, 27, 28, 29}));
    map.unlock({1, 0});
    EXPECT_TRUE(invariantsHold(map));
    EXPECT_EQ(present(map), (Ids{0, 27, 28, 29}));
    map.get({1, 30});
    EXPECT_EQ(present(map), (Ids{27, 28, 29, 30})) << "the oldest of all";
}

TEST_F(LruMapLockTest, UnlockedEntryIsEvictedAtItsPlaceInTheMiddleOfTheOrder) {
    Cache map(4);
    for (size_t id = 0; id < 4; ++id)
        put(map, {1, id}, 1);
    map.lock({1, 1});
    map.unlock({1, 1});
    EXPECT_TRUE(invariantsHold(map));
    put(map, {1, 4}, 1);
    EXPECT_EQ(present(map), (Ids{1, 2, 3, 4}));
    put(map, {1, 5}, 1);
    EXPECT_EQ(present(map), (Ids{2, 3, 4, 5}));
    put(map, {1, 6}, 1);
    EXPECT_EQ(present(map), (Ids{3, 4, 5, 6}));
}

TEST_F(LruMapLockTest, UseWhileLockedCountsForTheOrderAfterUnlocking) {
    Cache map(3);
    for (size_t id = 0; id < 3; ++id)
        put(map, {1, id}, 1);
    map.lock({1, 0});
    map.get({1, 1});
    map.find({1, 0});
    map.get({1, 2});
    map.unlock({1, 0});
    EXPECT_TRUE(invariantsHold(map));
    put(map, {1, 3}, 1);
    EXPECT_EQ(present(map), (Ids{0, 2, 3}));
    put(map, {1, 4}, 1);
    EXPECT_EQ(present(map), (Ids{2, 3, 4}));
}

TEST_F(LruMapLockTest, UseAfterUnlockingMakesTheEntryMostRecentlyUsed) {
    Cache map(3);
    for (size_t id = 0; id < 3; ++id)
        put(map, {1, id}, 1);
    map.lock({1, 1});
    map.unlock({1, 1});
    map.find({1, 1});
    EXPECT_TRUE(invariantsHold(map));
    put(map, {1, 3}, 1);
    put(map, {1, 4}, 1);
    EXPECT_EQ(present(map), (Ids{1, 3, 4}));
}

TEST_F(LruMapLockTest, LockIsAFlagAndNotACount) {
    Cache map(10);
    put(map, {1, 0}, 4);
    map.lock({1, 0});
    map.lock({1, 0});
    EXPECT_EQ(map.lockedBytes(), 4u);
    EXPECT_TRUE(invariantsHold(map));
    map.unlock({1, 0});
    EXPECT_EQ(map.lockedBytes(), 0u);
    map.unlock({1, 0});
    EXPECT_EQ(map.lockedBytes(), 0u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, LockAndUnlockOfAnAbsentKeyDoNothing) {
    Cache map(10);
    map.lock({1, 0});
    map.unlock({1, 0});
    EXPECT_EQ(map.count({1, 0}), 0u);
    EXPECT_EQ(map.lockedBytes(), 0u);
    put(map, {1, 0}, 4);
    EXPECT_EQ(map.lockedBytes(), 0u) << "the lock was not remembered";
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, LockedBytesRaiseTheBudgetByTheSameAmount) {
    Cache map(10);
    put(map, {1, 0}, 7);
    map.lock({1, 0});
    put(map, {1, 1}, 10);
    EXPECT_EQ(present(map), (Ids{0, 1}));
    EXPECT_EQ(map.used(), 17u);
    map.get({1, 2});
    EXPECT_EQ(present(map), (Ids{0, 1, 2}));
    map.setSize({1, 2}, 1);
    EXPECT_EQ(present(map), (Ids{0, 2}));
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, GrowingALockedEntryGrowsTheLockedBytesAndEvictsNothing) {
    Cache map(10);
    put(map, {1, 0}, 10);
    put(map, {1, 1}, 0);
    map.lock({1, 1});
    EXPECT_EQ(map.setSize({1, 1}, 50), 0u);
    EXPECT_EQ(map.lockedBytes(), 50u);
    EXPECT_EQ(map.setSize({1, 1}, 20), 50u);
    EXPECT_EQ(map.lockedBytes(), 20u);
    EXPECT_EQ(map.used(), 30u);
    EXPECT_EQ(present(map), (Ids{0, 1}));
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, SetSizeSkipsTheEntryBeingResizedAmongTheUnlockedAgain) {
    Cache map(10);
    for (size_t id = 0; id < 5; ++id)
        put(map, {1, id}, 2);
    for (size_t const id : {1u, 2u})
        map.lock({1, id});
    for (size_t const id : {2u, 1u})
        map.unlock({1, id});
    EXPECT_EQ(map.setSize({1, 1}, 5), 2u);
    EXPECT_EQ(present(map), (Ids{1, 3, 4})) << "0 went first, then 2, which is older than 3";
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, LockedEntriesAndTheEntryInHandExceedTheBudget) {
    Cache map(4);
    put(map, {1, 0}, 4);
    map.lock({1, 0});
    put(map, {1, 1}, 2);
    map.setSize({1, 1}, 100);
    EXPECT_EQ(present(map), (Ids{0, 1}));
    EXPECT_EQ(map.used(), 104u);
    EXPECT_EQ(map.lockedBytes(), 4u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, TheLargestCapacityMeansNoLimitAlsoWithLockedBytes) {
    Cache map(kNoLimit);
    put(map, {1, 0}, 1000);
    map.lock({1, 0});
    put(map, {1, 1}, 2000);
    put(map, {1, 2}, 3000);
    EXPECT_EQ(present(map), (Ids{0, 1, 2}));
}

TEST_F(LruMapLockTest, EraseRemovesALockedEntryAndItsLockedBytes) {
    Cache map(10);
    put(map, {1, 0}, 3);
    put(map, {1, 1}, 4);
    map.lock({1, 0});
    map.lock({1, 1});
    EXPECT_EQ(map.erase({1, 0}), 3u);
    EXPECT_EQ(map.lockedBytes(), 4u);
    EXPECT_TRUE(invariantsHold(map));
    EXPECT_EQ(map.eraseRange({1, 0}, {1, 9}), 4u);
    EXPECT_EQ(map.lockedBytes(), 0u);
    EXPECT_EQ(map.used(), 0u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, ErasedKeyComesBackUnlockedEmptyAndWithANewValue) {
    Cache map(10);
    put(map, {1, 0}, 3);
    map.get({1, 0}).tag = 6;
    map.lock({1, 0});
    map.erase({1, 0});
    EXPECT_EQ(map.get({1, 0}).tag, 0);
    EXPECT_EQ(map.setSize({1, 0}, 1), 0u);
    EXPECT_EQ(map.lockedBytes(), 0u);
    EXPECT_TRUE(invariantsHold(map));
}

TEST_F(LruMapLockTest, EvictToCountsLockedBytesAndLeavesThemBe) {
    Cache map(kNoLimit);
    for (size_t id = 0; id < 4; ++id)
        put(map, {1, id}, 10);
    map.lock({1, 0});
    EXPECT_EQ(map.evictTo(40), 0u);
    EXPECT_EQ(map.evictTo(25), 20u);
    EXPECT_EQ(present(map), (Ids{0, 3}));
    EXPECT_EQ(map.evictTo(5), 10u) << "the locked entry stays beyond the budget";
    EXPECT_EQ(present(map), (Ids{0}));
    EXPECT_EQ(map.size(), 1u);
    map.unlock({1, 0});
    EXPECT_EQ(map.evictTo(5), 10u);
    EXPECT_TRUE(invariantsHold(map));
}

} // namespace
} // namespace lrumaptest
