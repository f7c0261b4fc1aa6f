#include "host/view/KeptTiles.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

LevelTile tile(size_t column) {
    return {0, column, 0};
}

struct FiveTilesOfTen : KeptTiles<int> {
    FiveTilesOfTen() {
        for (int i = 0; i < 5; ++i)
            keep(tile(static_cast<size_t>(i)), int(i), 10);
    }
};

} // namespace

TEST(KeptTilesTest, TilesAreFoundAndCounted) {
    FiveTilesOfTen tiles;
    EXPECT_EQ(*tiles.find(tile(3)), 3);
    EXPECT_EQ(tiles.find(tile(5)), nullptr);
    EXPECT_EQ(tiles.bytes(), 50U);
    EXPECT_EQ(tiles.count(), 5U);
}

TEST(KeptTilesTest, ThoseUsedLongestAgoGoFirst) {
    FiveTilesOfTen tiles;
    tiles.find(tile(0));
    EXPECT_EQ(tiles.trim(25, {}), 30U);
    EXPECT_TRUE(tiles.has(tile(0)));
    EXPECT_TRUE(tiles.has(tile(4)));
    EXPECT_EQ(tiles.count(), 2U);
}

TEST(KeptTilesTest, NeededTilesStayEvenBeyondTheBudget) {
    FiveTilesOfTen tiles;
    EXPECT_EQ(tiles.trim(0, {tile(1), tile(2)}), 30U);
    EXPECT_TRUE(tiles.has(tile(1)));
    EXPECT_TRUE(tiles.has(tile(2)));
    EXPECT_EQ(tiles.bytes(), 20U);
    EXPECT_EQ(tiles.trim(0, {tile(2)}), 10U) << "it is needed no more";
    EXPECT_FALSE(tiles.has(tile(1)));
}

TEST(KeptTilesTest, BeingNeededIsNoUse) {
    FiveTilesOfTen tiles;
    tiles.trim(40, {tile(0)});
    EXPECT_TRUE(tiles.has(tile(0)));
    tiles.trim(30, {});
    EXPECT_FALSE(tiles.has(tile(0))) << "it was used longest ago";
}

TEST(KeptTilesTest, NothingGoesWithinTheBudget) {
    FiveTilesOfTen tiles;
    EXPECT_EQ(tiles.trim(50, {}), 0U);
    EXPECT_EQ(tiles.count(), 5U);
}

TEST(KeptTilesTest, WhatGoesIsDestroyed) {
    KeptTiles<std::shared_ptr<int>> tiles;
    auto const value = std::make_shared<int>(1);
    tiles.keep(tile(0), std::shared_ptr<int>(value), 1);
    EXPECT_EQ(value.use_count(), 2);
    tiles.trim(0, {});
    EXPECT_EQ(value.use_count(), 1);
    tiles.keep(tile(0), std::shared_ptr<int>(value), 1);
    tiles.clear();
    EXPECT_EQ(value.use_count(), 1);
    EXPECT_EQ(tiles.bytes(), 0U);
}
