#include "host/Geometry.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>

TEST(GeometryTest, FourNumbersAreColumnRowWidthAndHeight) {
    Region const region = parseRegion("1,20,300,4000");
    EXPECT_EQ(region.x, 1u);
    EXPECT_EQ(region.y, 20u);
    EXPECT_EQ(region.width, 300u);
    EXPECT_EQ(region.height, 4000u);
}

TEST(GeometryTest, TextOfARegionParsesToTheSameRegion) {
    EXPECT_EQ(toText(parseRegion("7,0,1,65536")), "7,0,1,65536");
}

TEST(GeometryTest, AnythingButFourWholeNumbersIsRefused) {
    for (char const* const text :
         {"", "1", "1,2,3", "1,2,3,", ",1,2,3", "1,2,3,4,5", "1,2,3,4,", "1, 2,3,4", " 1,2,3,4", "1,2,3,4 ", "-1,2,3,4",
          "+1,2,3,4", "1,2,3.5,4", "0x1,2,3,4", "1;2;3;4", "a,b,c,d", "1,2,3,99999999999999999999"}) {
        EXPECT_THROW(parseRegion(text), std::invalid_argument) << "'" << text << "'";
    }
}

TEST(GeometryTest, ARegionWithoutPixelsIsRefused) {
    EXPECT_THROW(parseRegion("0,0,0,1"), std::invalid_argument);
    EXPECT_THROW(parseRegion("0,0,1,0"), std::invalid_argument);
}

TEST(GeometryTest, TheLastPixelLiesInsideAndTheNextDoesNot) {
    EXPECT_TRUE(liesIn({9, 4, 1, 1}, {10, 5}));
    EXPECT_TRUE(liesIn({0, 0, 10, 5}, {10, 5}));
    EXPECT_FALSE(liesIn({10, 4, 1, 1}, {10, 5}));
    EXPECT_FALSE(liesIn({9, 5, 1, 1}, {10, 5}));
    EXPECT_FALSE(liesIn({9, 4, 2, 1}, {10, 5}));
    EXPECT_FALSE(liesIn({9, 4, 1, 2}, {10, 5}));
}

TEST(GeometryTest, NumbersWhoseSumWrapsAroundLieOutside) {
    EXPECT_FALSE(liesIn({9, 0, SIZE_MAX, 1}, {10, 5}));
    EXPECT_FALSE(liesIn({SIZE_MAX, 0, 2, 1}, {10, 5}));
    EXPECT_FALSE(liesIn({0, 4, 1, SIZE_MAX}, {10, 5}));
    EXPECT_FALSE(liesIn({0, SIZE_MAX, 1, 2}, {10, 5}));
}

TEST(GeometryTest, ARegionWithoutPixelsLiesNowhere) {
    EXPECT_FALSE(liesIn({0, 0, 0, 1}, {10, 5}));
    EXPECT_FALSE(liesIn({0, 0, 1, 0}, {10, 5}));
}

TEST(GeometryTest, InsetsAreWhatLiesBetweenTwoRegions) {
    Insets const insets = insetsOf({10, 20, 100, 200}, {13, 25, 90, 184});
    EXPECT_EQ(insets.left, 3u);
    EXPECT_EQ(insets.right, 7u);
    EXPECT_EQ(insets.top, 5u);
    EXPECT_EQ(insets.bottom, 11u);
}
