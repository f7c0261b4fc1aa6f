#include "tests/support/PixelMatchers.h"

#include <string>

namespace {

using Bytes = std::vector<std::uint8_t>;

} // namespace

TEST(PixelMatchersTest, EqualPixelsPass) {
    EXPECT_TRUE(pixelsEqual(Bytes(24, 5), Bytes(24, 5), 3));
}

TEST(PixelMatchersTest, TheFirstWrongTexelIsShownWithItsNeighbours) {
    Bytes const expected{1, 2, 3, 4, 5, 6, 7, 8, 9};
    Bytes const actual{1, 2, 3, 4, 5, 60, 7, 80, 9};
    auto const result = pixelsEqual(actual, expected, 3, 1);
    EXPECT_FALSE(result);
    EXPECT_EQ(std::string(result.message()), "2 of 9 bytes are wrong, the first in texel 2, 1: ( 60) instead of (  6)\n"
                                             "around it, read:\n"
                                             "  row 0: (  2) (  3)\n"
                                             "  row 1: (  5) ( 60)\n"
                                             "  row 2: ( 80) (  9)\n"
                                             "around it, expected:\n"
                                             "  row 0: (  2) (  3)\n"
                                             "  row 1: (  5) (  6)\n"
                                             "  row 2: (  8) (  9)\n");
}

TEST(PixelMatchersTest, AnotherNumberOfBytesIsWrong) {
    EXPECT_EQ(std::string(pixelsEqual(Bytes(4), Bytes(8), 1).message()), "4 bytes instead of 8");
}

TEST(PixelMatchersTest, BytesThatFillNoWholeRowsAreWrong) {
    EXPECT_FALSE(pixelsEqual(Bytes(8), Bytes(8), 3));
    EXPECT_FALSE(pixelsEqual(Bytes(8), Bytes(8), 0));
}
