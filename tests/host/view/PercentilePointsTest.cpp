#include "host/view/PercentilePoints.h"

#include "host/store/TileStore.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

// A picture of 16 bits whose pixels all have a value, apart from a part of its rows at the top.
testpictures::Picture twoValues(size_t side, size_t rowsOfFirst, std::uint16_t first, std::uint16_t second) {
    testpictures::Picture picture;
    picture.width = side;
    picture.height = side;
    picture.bands = 1;
    picture.bits = 16;
    std::vector<std::uint16_t> samples(side * side, second);
    std::fill_n(samples.begin(), rowsOfFirst * side, first);
    picture.bytes.resize(2 * samples.size());
    std::memcpy(picture.bytes.data(), samples.data(), picture.bytes.size());
    return picture;
}

PercentilePoints pointsOf(testpictures::Picture const& picture, ImportOptions const& options = {}) {
    TemporaryFolder const folder;
    testpictures::import(picture, folder.path("a.vlm"), options);
    TileStore store(folder.path("a.vlm"));
    return percentilePoints(store);
}

} // namespace

TEST(PercentilePointsTest, OneOfAHundredLiesBelowAndAbove) {
    std::vector<std::uint16_t> codes(10001);
    std::iota(codes.begin(), codes.end(), std::uint16_t{500});
    std::reverse(codes.begin(), codes.end());
    PercentilePoints const points = percentilePoints(codes);
    EXPECT_EQ(points.black, 600u);
    EXPECT_EQ(points.white, 10400u);
}

TEST(PercentilePointsTest, AFewOutliersDoNotCount) {
    std::vector<std::uint16_t> codes(1000, 300);
    std::fill_n(codes.begin(), 9, std::uint16_t{0});
    std::fill_n(codes.begin() + 500, 9, std::uint16_t{65535});
    codes[600] = 310;
    PercentilePoints const points = percentilePoints(codes);
    EXPECT_EQ(points.black, 300u);
    EXPECT_EQ(points.white, 301u) << "white is above black";
}

TEST(PercentilePointsTest, OneCodeAndNone) {
    EXPECT_EQ(percentilePoints({77}).black, 77u);
    EXPECT_EQ(percentilePoints({77}).white, 78u);
    EXPECT_EQ(percentilePoints({65535}).white, 65536u);
    EXPECT_EQ(percentilePoints(std::vector<std::uint16_t>()).white, 1u);
}

TEST(PercentilePointsTest, CodesOfAStoreAreThoseOfThePicture) {
    // Multiples of 8: the lowest 3 bits stay outside the wavelet.
    PercentilePoints const points = pointsOf(twoValues(600, 300, 800, 40000));
    EXPECT_EQ(points.black, 800u);
    EXPECT_EQ(points.white, 40000u);
}

TEST(PercentilePointsTest, TheLowestBitsAreLeftOut) {
    EXPECT_EQ(pointsOf(twoValues(64, 0, 0, 807)).black, 800u);
    EXPECT_EQ(pointsOf(twoValues(64, 0, 0, 65535)).black, 65528u);
}

TEST(PercentilePointsTest, SeveralTilesOfTheCoarsestLevelCount) {
    ImportOptions options;
    options.tileSize = 16;
    options.levels = 1;
    PercentilePoints const points = pointsOf(twoValues(200, 150, 8000, 16000), options);
    EXPECT_EQ(points.black, 8000u);
    EXPECT_EQ(points.white, 16000u);
}

TEST(PercentilePointsTest, ThePaddingOfTilesDoesNotCount) {
    ImportOptions options;
    options.tileSize = 256;
    options.levels = 3;
    PercentilePoints const points = pointsOf(twoValues(20, 0, 0, 24000), options);
    EXPECT_EQ(points.black, 24000u);
}
