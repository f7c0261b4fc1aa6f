#include "tests/support/TestImages.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using testimages::difference;
using testimages::pattern8;

TEST(TestImagesTest, EqualPicturesHaveNoDifference) {
    EXPECT_EQ(difference(pattern8(5, 4, 3), pattern8(5, 4, 3)), "");
}

TEST(TestImagesTest, OneChangedSampleIsNamedWithItsPlace) {
    auto changed = pattern8(5, 4, 3);
    changed.samples[(2 * 5 + 4) * 3 + 1] ^= 1;
    EXPECT_EQ(difference(changed, pattern8(5, 4, 3)).rfind("band 1 at 4,2: ", 0), 0u);
}

TEST(TestImagesTest, AnotherSizeOrBandCountIsADifference) {
    EXPECT_NE(difference(pattern8(4, 5, 3), pattern8(5, 4, 3)), "");
    EXPECT_NE(difference(pattern8(4, 3, 4), pattern8(4, 4, 3)), "");
}

TEST(TestImagesTest, APatternShiftedByOnePixelIsAnotherPattern) {
    auto const large = pattern8(40, 40, 3);
    auto const reference = testimages::crop(large, 10, 10, 20, 20);
    EXPECT_NE(difference(testimages::crop(large, 11, 10, 20, 20), reference), "");
    EXPECT_NE(difference(testimages::crop(large, 10, 11, 20, 20), reference), "");
    EXPECT_NE(difference(testimages::crop(large, 11, 11, 20, 20), reference), "");
}

TEST(TestImagesTest, AFileWrittenAgainIsReadAgain) {
    TemporaryFolder const folder;
    for (size_t const bands : {3u, 1u}) {
        testimages::writePattern8(folder.path("a.png"), "", 6, 5, bands);
        EXPECT_EQ(difference(testimages::readByVips(folder.path("a.png")), pattern8(6, 5, bands)), "");
    }
}
