#include "host/view/LevelTile.h"

#include "tests/host/view/StoreInfoOf.h"

#include <gtest/gtest.h>

namespace {

bool within(Region const& inner, Region const& outer) {
    return inner.x >= outer.x && inner.y >= outer.y && inner.x + inner.width <= outer.x + outer.width &&
           inner.y + inner.height <= outer.y + outer.height;
}

} // namespace

// What makes a tile independent of its neighbours.
TEST(LevelTileTest, WhatATileIsRebuiltFromLiesInOneTileOfTheNextLevel) {
    for (auto const& [width, height] : {std::pair{1, 1}, {511, 512}, {513, 1025}, {5000, 1}, {1, 5000}, {4099, 7001}}) {
        StoreInfo const info = storeInfoOf(static_cast<size_t>(width), static_cast<size_t>(height));
        for (size_t level = 0; level < info.levels; ++level) {
            Size const extent = leveltile::levelExtent(info, level);
            for (LevelTile const& tile : leveltile::over(level, {0, 0, extent.width, extent.height})) {
                Region const parent = leveltile::planeRegion(info, leveltile::parent(tile));
                EXPECT_TRUE(within(leveltile::bandRegion(info, tile), parent))
                    << width << " x " << height << ", level " << level << ", " << tile.column << "," << tile.row;
            }
        }
    }
}

TEST(LevelTileTest, BandsGiveAtLeastTheTilesSamples) {
    StoreInfo const info = storeInfoOf(4099, 7001);
    for (size_t level = 0; level < info.levels; ++level) {
        Size const extent = leveltile::levelExtent(info, level);
        for (LevelTile const& tile : leveltile::over(level, {0, 0, extent.width, extent.height})) {
            Region const bands = leveltile::bandRegion(info, tile);
            EXPECT_EQ(bands.width % 2, 0U);
            Region const samples = {2 * bands.x, 2 * bands.y, 2 * bands.width - 4, 2 * bands.height - 4};
            EXPECT_TRUE(within(leveltile::planeRegion(info, tile), samples));
            EXPECT_TRUE(within(leveltile::shownRegion(info, tile), leveltile::planeRegion(info, tile)));
        }
    }
}

TEST(LevelTileTest, LevelsHalveRoundedUp) {
    StoreInfo const info = storeInfoOf(1025, 3);
    EXPECT_EQ(leveltile::levelExtent(info, 0).width, 1025U);
    EXPECT_EQ(leveltile::levelExtent(info, 1).width, 513U);
    EXPECT_EQ(leveltile::levelExtent(info, 1).height, 2U);
    EXPECT_EQ(leveltile::levelExtent(info, 2).height, 1U);
}

TEST(LevelTileTest, TilesOverARegionAreThoseItMeets) {
    EXPECT_EQ(leveltile::over(2, {511, 0, 1, 1}), (std::vector<LevelTile>{{2, 0, 0}}));
    EXPECT_EQ(leveltile::over(2, {511, 512, 2, 1}), (std::vector<LevelTile>{{2, 0, 1}, {2, 1, 1}}));
    EXPECT_TRUE(leveltile::over(2, {511, 512, 0, 7}).empty());
}

TEST(LevelTileTest, CommonIsEmptyWhereRegionsDoNotMeet) {
    Region const shared = common({10, 10, 5, 5}, {12, 13, 100, 100});
    EXPECT_EQ(toText(shared), "12,13,3,2");
    EXPECT_EQ(common({10, 10, 5, 5}, {15, 10, 5, 5}).width, 0U);
    EXPECT_EQ(common({20, 10, 5, 5}, {0, 0, 10, 5}).height, 0U);
}
