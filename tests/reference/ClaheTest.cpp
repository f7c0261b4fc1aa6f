#include "reference/Clahe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <utility>

namespace {

using namespace reference;

template <class Value>
std::vector<std::int16_t> image(int width, int height, Value value) {
    std::vector<std::int16_t> samples;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            samples.push_back(static_cast<std::int16_t>(value(x, y)));
            for (int other = 1; other < 4; ++other)
                samples.push_back(static_cast<std::int16_t>(-1000 * other - x));
        }
    }
    return samples;
}

std::int16_t first(std::vector<std::int16_t> const& samples, int width, int x, int y) {
    return samples.at(4 * (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)));
}

std::uint32_t total(Histogram const& histogram) {
    return std::accumulate(histogram.begin(), histogram.end(), 0u);
}

int noise(int x, int y) {
    return (x * 7919 + y * 104729 + x * y * 31) % 300 - 20;
}

TEST(ClaheTest, SamplesOutsideTheGreyValuesCountAsTheEnds) {
    EXPECT_EQ(claheBin(-1), 0u);
    EXPECT_EQ(claheBin(-32768), 0u);
    EXPECT_EQ(claheBin(77), 77u);
    EXPECT_EQ(claheBin(256), 255u);
    EXPECT_EQ(claheBin(32767), 255u);
}

TEST(ClaheTest, LimitIsTheClippedShareOfTheMeanBin) {
    EXPECT_EQ(claheLimit(1600, 1.0), 6u);  // 6.25
    EXPECT_EQ(claheLimit(1600, 3.0), 18u); // 18.75
    EXPECT_EQ(claheLimit(100, 1.0), 1u);   // 0.39, at least 1
    EXPECT_EQ(claheLimit(1600, 256.0), 1600u);
    EXPECT_EQ(claheLimit(1600, 1e30), 1600u);
}

// Excess 512, 2 for each bin, upper 8. Bin 1 holds 9 and takes 1, the 254 empty ones take 2: 512 - 1 - 508 = 3 remain.
// Steps of 256/3 = 85 from bin 0: bin 0 is full, then 85, 170 and 255 get one each.
TEST(ClaheTest, SmallHistogramClippedByHand) {
    Histogram histogram{};
    histogram[0] = 522;
    histogram[1] = 9;
    Histogram expected;
    expected.fill(2);
    expected[0] = expected[1] = 10;
    expected[85] = expected[170] = expected[255] = 3;
    EXPECT_EQ(clippedHistogram(histogram, 10), expected);
    EXPECT_EQ(clippedHistogramByLoop(histogram, 10), expected);
}

// Excess 512, bin 1 is full already: 512 - 508 = 4 remain. Steps of 64 from bin 0: bin 0 is full, 64, 128 and 192 get
// one each; then steps of 256: from bin 1 nothing, from bin 2 the last one.
TEST(ClaheTest, WalksStartAgainOneBinFurther) {
    Histogram histogram{};
    histogram[0] = 522;
    histogram[1] = 10;
    Histogram expected;
    expected.fill(2);
    expected[0] = expected[1] = 10;
    expected[2] = expected[64] = expected[128] = expected[192] = 3;
    EXPECT_EQ(clippedHistogram(histogram, 10), expected);
    EXPECT_EQ(clippedHistogramByLoop(histogram, 10), expected);
}

// 20 pixels too few for all bins at the limit: 2530 to share, 9 each, 235 remain for bins 1 to 235.
TEST(ClaheTest, RoomJustAboveTheExcessLeavesTheLastBinsShort) {
    Histogram histogram{};
    histogram[0] = 2540;
    Histogram expected;
    expected.fill(10);
    for (size_t bin = 236; bin < 256; ++bin)
        expected[bin] = 9;
    EXPECT_EQ(clippedHistogram(histogram, 10), expected);
    EXPECT_EQ(clippedHistogramByLoop(histogram, 10), expected);
}

// All 1600 pixels at grey 1, limit 18: excess 1582, 6 for each of the 255 others, 52 remain: steps of 4 from bin 0 give
// one each to 0, 4, ... 204.
TEST(ClaheTest, UniformRegionAtClipThreeByHand) {
    Histogram histogram{};
    histogram[1] = 1600;
    Histogram expected;
    expected.fill(6);
    expected[1] = 18;
    for (size_t bin = 0; bin <= 204; bin += 4)
        expected[bin] = 7;
    EXPECT_EQ(clippedHistogram(histogram, claheLimit(1600, 3.0)), expected);
    EXPECT_EQ(total(expected), 1600u);
}

// Limit 6: 1594 to share, 6 for each of the others, 64 remain and no bin has room.
TEST(ClaheTest, AtClipOneEveryBinEndsAtTheLimit) {
    Histogram histogram{};
    histogram[200] = 1600;
    Histogram expected;
    expected.fill(6);
    EXPECT_EQ(clippedHistogram(histogram, 6), expected);
    EXPECT_EQ(clippedHistogramByLoop(histogram, 6), expected);
}

TEST(ClaheTest, HistogramWithinTheLimitIsKept) {
    Histogram histogram{};
    for (size_t bin = 0; bin < 160; ++bin)
        histogram[bin] = 10;
    EXPECT_EQ(clippedHistogram(histogram, 10), histogram);
    EXPECT_EQ(clippedHistogramByLoop(histogram, 10), histogram);
}

TEST(ClaheTest, ShortWayAndLoopAgreeOnRandomHistograms) {
    std::mt19937 random(40);
    int allAtLimit = 0;
    int spread = 0;
    for (int round = 0; round < 3000; ++round) {
        Histogram histogram{};
        unsigned const greys = 1 + random() % 256;
        for (int pixel = 0; pixel < kClaheRegionPixels; ++pixel) {
            // The product of two draws crowds the darker greys.
            ++histogram[(random() % greys) * (round % 2 == 0 ? 256 : random() % 256) / 256];
        }
        double const clip = 1.0 + static_cast<double>(random() % 4000) / 1000 * (round % 5);
        std::uint32_t const limit = claheLimit(kClaheRegionPixels, clip);
        Histogram const clipped = clippedHistogram(histogram, limit);
        ASSERT_EQ(clipped, clippedHistogramByLoop(histogram, limit)) << "round " << round << " clip " << clip;
        bool const full = total(clipped) < static_cast<std::uint32_t>(kClaheRegionPixels);
        (full ? allAtLimit : spread) += 1;
        for (std::uint32_t const count : clipped)
            ASSERT_LE(count, limit);
        ASSERT_EQ(total(clipped), full ? 256 * limit : static_cast<std::uint32_t>(kClaheRegionPixels));
    }
    EXPECT_GT(allAtLimit, 100);
    EXPECT_GT(spread, 100);
}

TEST(ClaheTest, MappingOfAFullRegionEndsAt254) {
    Histogram histogram{};
    histogram[0] = 320;
    histogram[9] = 1279;
    histogram[250] = 1;
    Histogram const mapping = claheMapping(histogram);
    EXPECT_EQ(mapping[0], 51u);
    EXPECT_EQ(mapping[8], 51u);
    EXPECT_EQ(mapping[9], 254u); // 1599 * 0.159375 = 254.8
    EXPECT_EQ(mapping[255], 254u);
}

// At clip 1 the bins are 6 each whatever the grey: entry v is trunc(0.95625 * (v + 1)).
TEST(ClaheTest, UniformRegionAtClipOneIsCloseToAStraightRamp) {
    ClaheTables const tables = claheTables(image(40, 40, [](int, int) { return 90; }), 40, 40, 1.0);
    ASSERT_EQ(tables.mappings.size(), 1u);
    for (std::uint32_t v = 0; v < 256; ++v)
        EXPECT_EQ(tables.mappings[0][v], 306 * (v + 1) / 320) << v;
}

TEST(ClaheTest, ImagesBelow41PixelsPassUnchanged) {
    for (auto const& [width, height] : {std::pair{40, 40}, std::pair{40, 100}, std::pair{100, 40}, std::pair{1, 1}}) {
        auto const in = image(width, height, noise);
        EXPECT_EQ(clahe(in, width, height, 3.0, 0, 0), in) << width << " x " << height;
    }
}

TEST(ClaheTest, FortyOneSquareUsesTheTableOfItsOneFullRegionEverywhere) {
    auto const in = image(41, 41, noise);
    ClaheTables const tables = claheTables(in, 41, 41, 3.0);
    ASSERT_EQ(tables.rows, 2);
    ASSERT_EQ(tables.columns, 2);
    for (size_t i = 1; i < 4; ++i)
        EXPECT_EQ(tables.mappings[i], tables.mappings[0]) << i;
    auto const out = clahe(in, 41, 41, 3.0, 0, 0);
    EXPECT_NE(out, in);
    for (int y = 0; y < 41; ++y) {
        for (int x = 0; x < 41; ++x) {
            auto const bin = static_cast<size_t>(std::min(255, std::max(0, noise(x, y))));
            ASSERT_EQ(first(out, 41, x, y), static_cast<int>(tables.mappings[0][bin])) << x << ", " << y;
        }
    }
}

TEST(ClaheTest, PartialRegionsTakeTheTablesToTheLeftAndAbove) {
    ClaheTables const tables = claheTables(image(130, 95, noise), 130, 95, 2.0);
    ASSERT_EQ(tables.rows, 3);
    ASSERT_EQ(tables.columns, 4);
    for (int row = 0; row < 3; ++row)
        EXPECT_EQ(tables.clampedAt(row, 3), tables.clampedAt(row, 2)) << row;
    for (int column = 0; column < 4; ++column)
        EXPECT_EQ(tables.clampedAt(2, column), tables.clampedAt(1, column));
    EXPECT_NE(tables.clampedAt(0, 1), tables.clampedAt(0, 0));
    EXPECT_NE(tables.clampedAt(1, 0), tables.clampedAt(0, 0));
}

// Regions of grey 0 on the left and 255 on the right, nothing clipped. Left table: 254 everywhere. Right table: 0, but
// 254 at 255. Pixel 30 stands 10 into the cell [20, 60): 254 * 30/40 = 190.5, rounded up; pixel 39: 254 * 21/40 =
// 133.35.
TEST(ClaheTest, InterpolationAlongOneAxisByHand) {
    auto const out = clahe(image(80, 80, [](int x, int) { return x < 40 ? 0 : 255; }), 80, 80, 256.0, 0, 0);
    for (int const y : {0, 19, 20, 45, 60, 79}) {
        EXPECT_EQ(first(out, 80, 0, y), 254);
        EXPECT_EQ(first(out, 80, 19, y), 254);
        EXPECT_EQ(first(out, 80, 20, y), 254);
        EXPECT_EQ(first(out, 80, 30, y), 191);
        EXPECT_EQ(first(out, 80, 39, y), 133);
        EXPECT_EQ(first(out, 80, 40, y), 254);
        EXPECT_EQ(first(out, 80, 79, y), 254);
    }
}

// Grey 0 only in the upper left region: at (30, 30) its table weighs 30 * 30 of 1600, 254 * 900/1600 = 142.875.
TEST(ClaheTest, InterpolationBetweenFourRegionsByHand) {
    auto const in = image(80, 80, [](int x, int y) { return x < 40 && y < 40 ? 0 : 255; });
    auto const out = clahe(in, 80, 80, 256.0, 0, 0);
    EXPECT_EQ(first(out, 80, 30, 30), 143);
    EXPECT_EQ(first(out, 80, 30, 10), 191);
    EXPECT_EQ(first(out, 80, 10, 30), 191);
    EXPECT_EQ(first(out, 80, 10, 10), 254);
}

// The stated form, in double, on every grey of every pixel of a picture with partial regions.
TEST(ClaheTest, WholeNumbersInterpolateAsTheDoubleFormulaSays) {
    ClaheTables const tables = claheTables(image(95, 85, noise), 95, 85, 3.0);
    for (int y = 0; y < 85; ++y) {
        for (int x = 0; x < 95; ++x) {
            int const sizeX = x < 20 ? 20 : 40;
            int const sizeY = y < 20 ? 20 : 40;
            int const cellX = x < 20 ? 0 : (x + 20) / 40;
            int const cellY = y < 20 ? 0 : (y + 20) / 40;
            double const dx = x < 20 ? x : x - (40 * cellX - 20);
            double const dy = y < 20 ? y : y - (40 * cellY - 20);
            for (size_t bin = 0; bin < 256; bin += 5) {
                double const ul = tables.clampedAt(cellY - 1, cellX - 1)[bin];
                double const ur = tables.clampedAt(cellY - 1, cellX)[bin];
                double const ll = tables.clampedAt(cellY, cellX - 1)[bin];
                double const lr = tables.clampedAt(cellY, cellX)[bin];
                double const sum = (ul * (sizeX - dx) + ur * dx) * (sizeY - dy) + (ll * (sizeX - dx) + lr * dx) * dy;
                ASSERT_EQ(claheInterpolated(tables, x, y, bin),
                          static_cast<int>(std::floor(sum / (sizeX * sizeY) + 0.5)))
                    << x << ", " << y << " bin " << bin;
            }
        }
    }
}

TEST(ClaheTest, OnlyTheFirstComponentChanges) {
    auto const in = image(50, 45, noise);
    auto const out = clahe(in, 50, 45, 3.0, 0, 0);
    int changed = 0;
    for (size_t i = 0; i < in.size(); ++i) {
        bool const same = out[i] == in[i];
        ASSERT_TRUE(same || i % 4 == 0) << i;
        changed += same ? 0 : 1;
    }
    EXPECT_GT(changed, 1000);
}

TEST(ClaheTest, StartMovesWhatIsWrittenButNeitherTablesNorCells) {
    auto const in = image(130, 95, noise);
    auto const whole = clahe(in, 130, 95, 3.0, 0, 0);
    for (auto const& [x0, y0] : {std::pair{40, 0}, std::pair{0, 40}, std::pair{40, 40}}) {
        auto const out = clahe(in, 130, 95, 3.0, x0, y0);
        for (int y = 0; y < 95; ++y) {
            for (int x = 0; x < 130; ++x) {
                auto const& expected = x >= x0 && y >= y0 ? whole : in;
                ASSERT_EQ(first(out, 130, x, y), first(expected, 130, x, y)) << x << ", " << y;
            }
        }
    }
}

TEST(ClaheTest, ClipBelowOneCountsAsOne) {
    auto const in = image(80, 80, noise);
    EXPECT_EQ(clahe(in, 80, 80, 0.5, 0, 0), clahe(in, 80, 80, 1.0, 0, 0));
    EXPECT_EQ(clahe(in, 80, 80, -7.0, 0, 0), clahe(in, 80, 80, 1.0, 0, 0));
}

// 1600 * 1.28 / 256 is 8 in double; the nearest float of 1.28 is below it and gives 7, as 1.27 does.
TEST(ClaheTest, ClipLimitGoesThroughSinglePrecision) {
    auto const in = image(80, 80, [](int x, int) { return x / 10; });
    ASSERT_EQ(claheLimit(1600, 1.28), 8u);
    EXPECT_EQ(clahe(in, 80, 80, 1.28, 0, 0), clahe(in, 80, 80, 1.27, 0, 0));
    EXPECT_NE(clahe(in, 80, 80, 1.28, 0, 0), clahe(in, 80, 80, 1.29, 0, 0));
}

TEST(ClaheTest, UniformImageMapsToOneValue) {
    auto const out = clahe(image(121, 83, [](int, int) { return 100; }), 121, 83, 1.0, 0, 0);
    for (int y = 0; y < 83; ++y) {
        for (int x = 0; x < 121; ++x)
            ASSERT_EQ(first(out, 121, x, y), 96) << x << ", " << y; // 0.95625 * 101 = 96.6
    }
}

} // namespace
