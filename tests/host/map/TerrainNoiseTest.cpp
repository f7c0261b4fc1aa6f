#include "host/map/TerrainNoise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

namespace {

std::vector<std::int64_t> rowOf(TerrainNoise const& noise, std::int64_t x, std::int64_t y, size_t count) {
    std::vector<std::int64_t> row(count);
    noise.fillRow(x, y, row);
    return row;
}

} // namespace

TEST(TerrainNoiseTest, AValueDependsOnItsPlaceAlone) {
    TerrainNoise const noise(5, 7);
    for (std::int64_t y : {-70, -1, 0, 31, 32, 1000}) {
        auto const row = rowOf(noise, -100, y, 300);
        for (size_t i = 0; i < row.size(); ++i)
            ASSERT_EQ(rowOf(noise, -100 + static_cast<std::int64_t>(i), y, 1)[0], row[i]) << i << "," << y;
    }
}

TEST(TerrainNoiseTest, ValuesStayWithinOneAndUseBothSigns) {
    TerrainNoise const noise(4, 1);
    std::int64_t low = 0;
    std::int64_t high = 0;
    for (std::int64_t y = 0; y < 300; ++y) {
        auto const row = rowOf(noise, 0, y, 300);
        low = std::min(low, *std::min_element(row.begin(), row.end()));
        high = std::max(high, *std::max_element(row.begin(), row.end()));
    }
    EXPECT_GT(low, -TerrainNoise::kOne);
    EXPECT_LT(high, TerrainNoise::kOne);
    EXPECT_LT(low, -TerrainNoise::kOne / 3);
    EXPECT_GT(high, TerrainNoise::kOne / 3);
}

// A discontinuity at the border of a cell would be as large as the noise itself.
TEST(TerrainNoiseTest, NeighboursDifferLittle) {
    TerrainNoise const noise(6, 3);
    std::int64_t const most = TerrainNoise::kOne / 16; // 4 / 64: a direction's slope plus the blend's
    auto above = rowOf(noise, -200, -200, 600);
    for (std::int64_t y = -199; y < 400; ++y) {
        auto const row = rowOf(noise, -200, y, 600);
        for (size_t i = 1; i < row.size(); ++i) {
            ASSERT_LT(std::abs(row[i] - row[i - 1]), most) << i << "," << y;
            ASSERT_LT(std::abs(row[i] - above[i]), most) << i << "," << y;
        }
        above = row;
    }
}

TEST(TerrainNoiseTest, OtherSeedsGiveOtherNoise) {
    EXPECT_NE(rowOf(TerrainNoise(5, 1), 0, 0, 100), rowOf(TerrainNoise(5, 2), 0, 0, 100));
}

TEST(TerrainNoiseTest, ShiftsRoundDownBelowZeroToo) {
    EXPECT_EQ(floorShift(7, 2), 1);
    EXPECT_EQ(floorShift(8, 2), 2);
    EXPECT_EQ(floorShift(-1, 2), -1);
    EXPECT_EQ(floorShift(-4, 2), -1);
    EXPECT_EQ(floorShift(-5, 2), -2);
}

TEST(TerrainNoiseTest, HashSpreadsNeighbouringPlaces) {
    std::set<std::uint32_t> seen;
    for (std::int64_t y = -20; y < 20; ++y)
        for (std::int64_t x = -20; x < 20; ++x)
            seen.insert(latticeHash(x, y, 5));
    EXPECT_GT(seen.size(), 1590u); // of 1600
}
