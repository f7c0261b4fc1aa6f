#include "host/Region.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>

TEST(RegionTest, FourNumbersAreColumnRowWidthAndHeight) {
    Region const region = parseRegion("1,20,300,4000");
    EXPECT_EQ(region.x, 1u);
    EXPECT_EQ(region.y, 20u);
    EXPECT_EQ(region.width, 300u);
    EXPECT_EQ(region.height, 4000u);
}

TEST(RegionTest, TextOfARegionParsesToTheSameRegion) {
    EXPECT_EQ(toText(parseRegion("7,0,1,65536")), "7,0,1,65536");
}

TEST(RegionTest, AnythingButFourWholeNumbersIsRefused) {
    for (char const* const text :
         {"", "1", "1,2,3", "1,2,3,", ",1,2,3", "1,2,3,4,5", "1,2,3,4,", "1, 2,3,4", " 1,2,3,4", "1,2,3,4 ", "-1,2,3,4",
          "+1,2,3,4", "1,2,3.5,4", "0x1,2,3,4", "1;2;3;4", "a,b,c,d", "1,2,3,99999999999999999999"}) {
        EXPECT_THROW(parseRegion(text), std::invalid_argument) << "'" << text << "'";
    }
}

TEST(RegionTest, ARegionWithoutPixelsIsRefused) {
    EXPECT_THROW(parseRegion("0,0,0,1"), std::invalid_argument);
    EXPECT_THROW(parseRegion("0,0,1,0"), std::invalid_argument);
}

TEST(RegionTest, TheLastPixelLiesInsideAndTheNextDoesNot) {
    EXPECT_TRUE(liesIn({9, 4, 1, 1}, 10, 5));
    EXPECT_TRUE(liesIn({0, 0, 10, 5}, 10, 5));
    EXPECT_FALSE(liesIn({10, 4, 1, 1}, 10, 5));
    EXPECT_FALSE(liesIn({9, 5, 1, 1}, 10, 5));
    EXPECT_FALSE(liesIn({9, 4, 2, 1}, 10, 5));
    EXPECT_FALSE(liesIn({9, 4, 1, 2}, 10, 5));
}

TEST(RegionTest, NumbersWhoseSumWrapsAroundLieOutside) {
    EXPECT_FALSE(liesIn({9, 0, SIZE_MAX, 1}, 10, 5));
    EXPECT_FALSE(liesIn({SIZE_MAX, 0, 2, 1}, 10, 5));
    EXPECT_FALSE(liesIn({0, 4, 1, SIZE_MAX}, 10, 5));
    EXPECT_FALSE(liesIn({0, SIZE_MAX, 1, 2}, 10, 5));
}

TEST(RegionTest, ARegionWithoutPixelsLiesNowhere) {
    EXPECT_FALSE(liesIn({0, 0, 0, 1}, 10, 5));
    EXPECT_FALSE(liesIn({0, 0, 1, 0}, 10, 5));
}
