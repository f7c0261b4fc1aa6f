#include "host/map/MapLabels.h"

#include <gtest/gtest.h>

namespace {

std::string drawn(std::string const& text, std::int64_t scale) {
    std::string picture;
    for (std::int64_t y = 0; y < maplabels::kHeight * scale; ++y) {
        for (std::int64_t x = 0; x < maplabels::width(text, scale); ++x)
            picture += maplabels::covers(text, x, y, scale) ? '#' : '.';
        picture += '\n';
    }
    return picture;
}

} // namespace

TEST(MapLabelsTest, DigitsAndCommaAreDrawnSideBySide) {
    EXPECT_EQ(drawn("1,7", 1), "..#.........#####.\n"
                               ".##.............#.\n"
                               "..#............#..\n"
                               "..#...........#...\n"
                               "..#....##....#....\n"
                               "..#.....#....#....\n"
                               ".###...#.....#....\n");
}

TEST(MapLabelsTest, EveryDigitLooksDifferent) {
    for (char a = '0'; a <= '9'; ++a)
        for (char b = '0'; b < a; ++b)
            EXPECT_NE(drawn(std::string(1, a), 1), drawn(std::string(1, b), 1)) << a << b;
}

TEST(MapLabelsTest, AScaleRepeatsEveryPixel) {
    for (std::int64_t y = 0; y < maplabels::kHeight * 3; ++y)
        for (std::int64_t x = 0; x < maplabels::width("40", 3); ++x)
            EXPECT_EQ(maplabels::covers("40", x, y, 3), maplabels::covers("40", x / 3, y / 3, 1));
}

TEST(MapLabelsTest, NothingIsCoveredOutsideTheText) {
    EXPECT_TRUE(maplabels::covers("7", 0, 0, 1));
    EXPECT_FALSE(maplabels::covers("7", -1, 0, 1));
    EXPECT_FALSE(maplabels::covers("7", 0, -1, 1));
    EXPECT_FALSE(maplabels::covers("7", 6, 0, 1));
    EXPECT_FALSE(maplabels::covers("7", 3, 7, 1));
}
