#include "host/view/KeptTiles.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

LevelTile tile(std::size_t column) {
    return {0, column, 0};
}

KeptTiles<int> fiveTilesOfTen() {
    KeptTiles<int> tiles;
    for (int i = 0; i < 5; ++i)
        tiles.keep(tile(static_cast<std::size_t>(i)), int(i), 10);
    return tiles;
}

} // namespace

TEST(KeptTilesTest, TilesAreFoundAndCounted) {
    auto tiles = fiveTilesOfTen();
    EXPECT_EQ(*tiles.find(tile(3)), 3);
    EXPECT_EQ(tiles.find(tile(5)), nullptr);
    EXPECT_EQ(tiles.bytes(), 50U);
    EXPECT_EQ(tiles.count(), 5U);
}

TEST(KeptTilesTest, ThoseUsedLongestAgoGoFirst) {
    auto tiles = fiveTilesOfTen();
    tiles.find(tile(0));
    EXPECT_EQ(tiles.trim(25, {}), 30U);
    EXPECT_TRUE(tiles.has(tile(0)));
    EXPECT_TRUE(tiles.has(tile(4)));
    EXPECT_EQ(tiles.count(), 2U);
}

TEST(KeptTilesTest, NeededTilesStayEvenBeyondTheBudget) {
    auto tiles = fiveTilesOfTen();
    EXPECT_EQ(tiles.trim(0, {tile(1), tile(2)}), 30U);
    EXPECT_TRUE(tiles.has(tile(1)));
    EXPECT_TRUE(tiles.has(tile(2)));
    EXPECT_EQ(tiles.bytes(), 20U);
}

TEST(KeptTilesTest, NothingGoesWithinTheBudget) {
    auto tiles = fiveTilesOfTen();
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
