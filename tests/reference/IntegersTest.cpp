#include "reference/Integers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace reference;

TEST(IntegersTest, FloorDivRoundsTowardsMinusInfinity) {
    EXPECT_EQ(floorDiv(7, 2), 3);
    EXPECT_EQ(floorDiv(-7, 2), -4);
    EXPECT_EQ(floorDiv(-8, 2), -4);
    EXPECT_EQ(floorDiv(-1, 4), -1);
    for (int n = -1000; n <= 1000; ++n) {
        for (int d = 1; d <= 17; ++d)
            EXPECT_EQ(static_cast<double>(floorDiv(n, d)), std::floor(n / double{1} / d));
    }
}

TEST(IntegersTest, RoundDivTakesHalvesAwayFromZero) {
    EXPECT_EQ(roundDivAwayFromZero(1, 2), 1);
    EXPECT_EQ(roundDivAwayFromZero(-1, 2), -1);
    EXPECT_EQ(roundDivAwayFromZero(3, 2), 2);
    EXPECT_EQ(roundDivAwayFromZero(-3, 2), -2);
    EXPECT_EQ(roundDivAwayFromZero(1535, 1024), 1);
    EXPECT_EQ(roundDivAwayFromZero(-1535, 1024), -1);
    EXPECT_EQ(roundDivAwayFromZero(0, 3), 0);
}

TEST(IntegersTest, BytesAreClampedNotWrapped) {
    EXPECT_EQ(clampToByte(-1), 0);
    EXPECT_EQ(clampToByte(0), 0);
    EXPECT_EQ(clampToByte(255), 255);
    EXPECT_EQ(clampToByte(256), 255);
}

} // namespace
