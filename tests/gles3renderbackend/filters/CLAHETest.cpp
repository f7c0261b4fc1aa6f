#include "gles3renderbackend/filters/CLAHE.h"

#include "reference/Clahe.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace {

using Samples = std::vector<std::int16_t>;

constexpr std::int16_t kOthers = -4321;

/// Four samples per pixel; the first from first to last, the others noise.
Samples noise(int width, int height, std::uint32_t randomStart, int first = -100, int last = 400) {
    std::mt19937 random(randomStart);
    Samples samples(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    for (size_t i = 0; i < samples.size(); ++i) {
        auto const value = static_cast<int>(random() % static_cast<std::uint32_t>(last - first + 1)) + first;
        samples[i] = static_cast<std::int16_t>(i % 4 == 0 ? value : value - 30000);
    }
    return samples;
}

Samples uniform(int width, int height, std::int16_t grey) {
    Samples samples(static_cast<size_t>(width) * static_cast<size_t>(height) * 4, kOthers);
    for (size_t i = 0; i < samples.size(); i += 4)
        samples[i] = grey;
    return samples;
}

Samples equalised(Samples samples, int width, int height, double clip, size_t x0 = 0, size_t y0 = 0) {
    CLAHE clahe(clip);
    auto const stride = static_cast<size_t>(width);
    clahe.buildTables(samples.data(), stride, static_cast<size_t>(height), stride);
    clahe.apply(samples.data(), x0, y0);
    return samples;
}

TEST(CLAHETest, EverySizeAndClipLimitAgreesWithTheModel) {
    std::uint32_t randomStart = 1;
    for (auto const& [width, height] : {std::pair{41, 41}, {79, 41}, {41, 80}, {81, 60}, {120, 119}, {121, 177}}) {
        for (double const clip : {0.5, 1.0, 1.5, 3.0, 40.0, 256.0, 1e9}) {
            Samples const samples = noise(width, height, ++randomStart);
            EXPECT_EQ(equalised(samples, width, height, clip), reference::clahe(samples, width, height, clip, 0, 0))
                << width << " x " << height << ", clip " << clip;
        }
    }
}

TEST(CLAHETest, FewGreyValuesAgreeWithTheModel) {
    for (int const last : {0, 1, 7, 40}) {
        for (double const clip : {1.0, 2.0, 3.0, 10.0}) {
            Samples const samples = noise(97, 83, 5, 0, last);
            EXPECT_EQ(equalised(samples, 97, 83, clip), reference::clahe(samples, 97, 83, clip, 0, 0))
                << last << ", clip " << clip;
        }
    }
}

TEST(CLAHETest, PixelsLeftOfAndAboveTheStartKeepTheirValue) {
    Samples const samples = noise(123, 97, 9);
    for (auto const& [x0, y0] : {std::pair{40, 0}, {0, 40}, {40, 40}, {7, 61}, {122, 96}})
        EXPECT_EQ(equalised(samples, 123, 97, 3.0, static_cast<size_t>(x0), static_cast<size_t>(y0)),
                  reference::clahe(samples, 123, 97, 3.0, x0, y0))
            << x0 << ", " << y0;
}

TEST(CLAHETest, RowsMayLieFurtherApartThanTheImageIsWide) {
    Samples const samples = noise(60, 55, 4);
    Samples strided(size_t{64} * 55 * 4, kOthers);
    for (size_t row = 0; row < 55; ++row)
        std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(row * 240), 240,
                    strided.begin() + static_cast<std::ptrdiff_t>(row * 256));
    CLAHE clahe(3.0);
    clahe.buildTables(strided.data(), 60, 55, 64);
    clahe.apply(strided.data(), 0, 0);
    Samples const expected = reference::clahe(samples, 60, 55, 3.0, 0, 0);
    for (size_t row = 0; row < 55; ++row) {
        auto const start = strided.begin() + static_cast<std::ptrdiff_t>(row * 256);
        ASSERT_EQ(Samples(start, start + 240),
                  Samples(expected.begin() + static_cast<std::ptrdiff_t>(row * 240),
                          expected.begin() + static_cast<std::ptrdiff_t>(row * 240 + 240)));
        ASSERT_EQ(Samples(start + 240, start + 256), Samples(16, kOthers)) << "beyond row " << row;
    }
}

TEST(CLAHETest, TablesOfOneImageServeTheNextUntilTheyAreBuiltAgain) {
    CLAHE clahe(3.0);
    Samples first = noise(50, 50, 1);
    Samples const second = noise(90, 45, 2);
    clahe.buildTables(first.data(), 50, 50, 50);
    Samples third = second;
    clahe.buildTables(third.data(), 90, 45, 90);
    clahe.apply(third.data(), 0, 0);
    EXPECT_EQ(third, reference::clahe(second, 90, 45, 3.0, 0, 0));
}

TEST(CLAHETest, ClipLimitBelowOneCountsAsOne) {
    Samples const samples = noise(81, 81, 6);
    Samples const atOne = equalised(samples, 81, 81, 1.0);
    for (double const clip : {0.5, 0.0, -3.0, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(equalised(samples, 81, 81, clip), atOne) << clip;
    EXPECT_NE(equalised(samples, 81, 81, 3.0), atOne);
}

TEST(CLAHETest, ClipLimitOfOneAllowsSixOf1600PixelsABin) {
    CLAHE::Histogram histogram{};
    histogram[17] = 1600;
    CLAHE(1.0).clip(histogram, 1600);
    CLAHE::Histogram expected;
    expected.fill(6);
    EXPECT_EQ(histogram, expected);
}

TEST(CLAHETest, LimitIsNeverBelowOne) {
    CLAHE::Histogram histogram{};
    histogram[0] = 100;
    CLAHE(1.0).clip(histogram, 100);
    EXPECT_EQ(histogram, reference::clippedHistogramByLoop(
                             [] {
                                 reference::Histogram whole{};
                                 whole[0] = 100;
                                 return whole;
                             }(),
                             1));
    EXPECT_EQ(histogram[0], 1U);
}

// The model's second form uses the published loop even if there is no room.
TEST(CLAHETest, RandomHistogramsAreClippedAsByThePublishedLoop) {
    std::mt19937 random(3);
    for (int i = 0; i < 600; ++i) {
        CLAHE::Histogram histogram{};
        std::uint32_t const bins = 1 + random() % 256;
        for (int pixel = 0; pixel < 1600; ++pixel)
            ++histogram[(random() % bins) * (random() % 4 == 0 ? 1 : 0)];
        double const clip = 1.0 + static_cast<double>(random() % 800) / 40.0;
        auto const expected = reference::clippedHistogramByLoop(histogram, reference::claheLimit(1600, clip));
        CLAHE(clip).clip(histogram, 1600);
        ASSERT_EQ(histogram, expected) << clip;
    }
}

TEST(CLAHETest, LimitThatNoBinCanReachLeavesTheHistogramAsItIs) {
    CLAHE::Histogram histogram{};
    histogram[3] = 1600;
    CLAHE::Histogram const before = histogram;
    for (double const clip : {256.0, 1e30, std::numeric_limits<double>::infinity()}) {
        CLAHE(clip).clip(histogram, 1600);
        EXPECT_EQ(histogram, before) << clip;
    }
}

TEST(CLAHETest, UniformImageGivesOneValueThatIsCloseToAStraightRampAtClipLimitOne) {
    for (std::int16_t grey = 0; grey < 256; ++grey) {
        // All bins end at 6, so the running sum is 6 * (grey + 1).
        auto const expected = static_cast<std::int16_t>(6 * (grey + 1) * 255 / 1600);
        ASSERT_EQ(equalised(uniform(41, 41, grey), 41, 41, 1.0), uniform(41, 41, expected));
        ASSERT_LE(std::abs(expected - grey), 11);
    }
}

TEST(CLAHETest, FullRegionMapsItsLargestValueTo254) {
    EXPECT_EQ(equalised(uniform(41, 41, 255), 41, 41, 256.0), uniform(41, 41, 254));
    EXPECT_EQ(equalised(uniform(41, 41, 9), 41, 41, 256.0), uniform(41, 41, 254));
}

TEST(CLAHETest, SamplesBelowZeroCountAsZeroAndAbove255As255) {
    for (auto const low : std::vector<std::int16_t>{-32768, -1, 0})
        EXPECT_EQ(equalised(uniform(50, 43, low), 50, 43, 1.0), equalised(uniform(50, 43, 0), 50, 43, 1.0)) << low;
    for (auto const high : std::vector<std::int16_t>{255, 256, 32767})
        EXPECT_EQ(equalised(uniform(50, 43, high), 50, 43, 1.0), equalised(uniform(50, 43, 255), 50, 43, 1.0)) << high;
}

// Left region black, right region white, a sliver of a third that takes the second's table. Full mappings: black maps
// to 254 in the left table and to 0 in the right one, so a black pixel shows the weight of the left table.
TEST(CLAHETest, InterpolationRunsBetweenTheCentresOfTheRegions) {
    Samples samples = uniform(81, 41, 0);
    for (size_t i = 0; i < samples.size(); i += 4)
        if ((i / 4) % 81 >= 40) samples[i] = 255;
    CLAHE clahe(256.0);
    clahe.buildTables(samples.data(), 81, 41, 81);
    Samples black = uniform(81, 41, 0);
    clahe.apply(black.data(), 0, 0);
    for (size_t x = 0; x < 81; ++x) {
        size_t const right = x < 20 ? 0 : x < 60 ? x - 20 : 40;
        auto const expected = static_cast<std::int16_t>((254 * (40 - right) + 20) / 40);
        for (size_t y = 0; y < 41; ++y)
            ASSERT_EQ(black[(y * 81 + x) * 4], expected) << x << ", " << y;
    }
}

TEST(CLAHETest, OtherComponentsPassThrough) {
    Samples const samples = noise(64, 50, 8);
    Samples const result = equalised(samples, 64, 50, 3.0);
    for (size_t i = 0; i < samples.size(); ++i) {
        if (i % 4 == 0) continue;
        ASSERT_EQ(result[i], samples[i]) << i;
    }
}

} // namespace
