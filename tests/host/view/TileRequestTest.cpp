#include "host/view/TileRequest.h"

#include "tests/host/view/NotingStages.h"
#include "tests/host/view/StoreInfoOf.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <vector>

namespace {

// Twice the distance of a tile's middle from twice this place, squared: in samples of the view's level.
std::int64_t distance(LevelTile const& tile, size_t level, std::int64_t twiceX, std::int64_t twiceY) {
    auto const side = static_cast<std::int64_t>(leveltile::kSide << (tile.level - level));
    std::int64_t const x = (2 * static_cast<std::int64_t>(tile.column) + 1) * side - twiceX;
    std::int64_t const y = (2 * static_cast<std::int64_t>(tile.row) + 1) * side - twiceY;
    return x * x + y * y;
}

void expectNearestFirst(std::vector<LevelTile> const& tiles, size_t level, std::int64_t twiceX, std::int64_t twiceY) {
    for (size_t i = 1; i < tiles.size(); ++i) {
        LevelTile const& before = tiles[i - 1];
        LevelTile const& after = tiles[i];
        ASSERT_GE(before.level, after.level) << "coarser levels first, tile " << i;
        if (before.level != after.level) continue;
        EXPECT_LE(distance(before, level, twiceX, twiceY), distance(after, level, twiceX, twiceY)) << "tile " << i;
    }
}

} // namespace

TEST(TileRequestTest, CoarserLevelsComeFirstAndInALevelTheTilesNearestToTheMiddle) {
    StoreInfo const info = storeInfoOf(9000, 7000);
    ASSERT_GE(info.levels, 2U);
    struct Row {
        View view;
        std::int64_t twiceX; // of the middle of what is shown, in samples of the view's level
        std::int64_t twiceY;
        size_t tiles;
    };
    Zoom const half = Zoom::nearest(0.5, info.levels);
    ASSERT_EQ(half.level(), 1U);
    for (Row const& row : {Row{{Zoom(), 4700, 2100, 2000, 2600, false}, 2 * 4700 + 2000, 2 * 2100 + 2600, 30},
                           {{Zoom(), 100, 3300, 2600, 1500, false}, 2 * 100 + 2600, 2 * 3300 + 1500, 24},
                           // The picture ends at 9000 and 7000.
                           {{Zoom(), 8000, 6000, 3000, 3000, false}, 8000 + 9000, 6000 + 7000, 9},
                           {{half, 2300, 1700, 1900, 1600, false}, 2 * 2300 + 1900, 2 * 1700 + 1600, 20}}) {
        NotingStages stages;
        TileRequest const request = requestFor(info, row.view, stages, true);
        size_t const level = row.view.zoom.level();
        EXPECT_EQ(request.shown.size(), row.tiles);
        for (LevelTile const& tile : request.shown)
            EXPECT_EQ(tile.level, level);
        for (LevelTile const& tile : request.coarser)
            EXPECT_GT(tile.level, level);
        expectNearestFirst(request.shown, level, row.twiceX, row.twiceY);
        expectNearestFirst(request.coarser, level, row.twiceX, row.twiceY);
        expectNearestFirst(request.rebuilt, level, row.twiceX, row.twiceY);
        EXPECT_EQ(request.rebuilt.size(), request.needed.size());
        EXPECT_EQ(request.pinnedShown.size(), request.shown.size() + request.coarser.size());
    }
}

TEST(TileRequestTest, WithoutFallbacksParentsAreRebuiltAndNotShown) {
    StoreInfo const info = storeInfoOf(2048, 2048);
    NotingStages stages;
    TileRequest const request = requestFor(info, {Zoom(), 600, 100, 100, 100, false}, stages, false);
    EXPECT_EQ(request.shown, (std::vector<LevelTile>{{0, 1, 0}}));
    EXPECT_TRUE(request.coarser.empty());
    std::set<LevelTile> needed;
    for (size_t level = 0; level <= info.levels; ++level)
        needed.insert({level, level == 0 ? size_t{1} : size_t{0}, 0});
    EXPECT_EQ(request.needed, needed);
    EXPECT_EQ(request.sources.size(), 1U);
}

TEST(TileRequestTest, TilesOfAFilesOwnLevelsNeedNoOthers) {
    StoreInfo const info = storeInfoOf(4096, 4096);
    NotingStages stages;
    stages.parents = false;
    stages.standIns = {2, info.levels};
    TileRequest const request = requestFor(info, {Zoom(), 600, 100, 100, 100, false}, stages, true);
    EXPECT_EQ(request.shown, (std::vector<LevelTile>{{0, 1, 0}}));
    EXPECT_EQ(request.coarser, (std::vector<LevelTile>{{info.levels, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(request.needed, (std::set<LevelTile>{{0, 1, 0}, {2, 0, 0}, {info.levels, 0, 0}}));
}
