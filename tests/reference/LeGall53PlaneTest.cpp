#include "reference/LeGall53Plane.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <utility>

namespace {

using namespace reference;

Plane randomPlane(std::mt19937& random, int width, int height) {
    Plane plane(width, height);
    for (std::int32_t& sample : plane.samples)
        sample = static_cast<std::int32_t>(random() % 511) - 255;
    return plane;
}

// Rows first: (0, 4) gives L = 0 + floor((4+4+2)/4) = 2, H = 4; (8, 0) gives H = 0 - 8 = -8, L = 8 + floor(-14/4) = 4.
// Then columns of the low plane (2, 4): H = 4 - 2 = 2, L = 2 + floor(6/4) = 3; of the high plane (4, -8): H = -12,
// L = 4 + floor(-22/4) = -2.
TEST(LeGall53PlaneTest, TwoByTwoWorkedByHand) {
    PlaneBands const bands = forward53Plane(Plane(2, 2, {0, 4, 8, 0}));
    EXPECT_EQ(bands.ll.samples, (Signal{3}));
    EXPECT_EQ(bands.lh.samples, (Signal{2}));
    EXPECT_EQ(bands.hl.samples, (Signal{-2}));
    EXPECT_EQ(bands.hh.samples, (Signal{-12}));
}

TEST(LeGall53PlaneTest, StripesAcrossXAreHighAlongXOnly) {
    Plane plane(8, 6);
    for (int y = 0; y < 6; ++y) {
        for (int x = 1; x < 8; x += 2)
            plane.at(x, y) = 100;
    }
    PlaneBands const bands = forward53Plane(plane);
    EXPECT_EQ(bands.hl, Plane(4, 3, Signal(12, 100)));
    EXPECT_EQ(bands.lh, Plane(4, 3));
    EXPECT_EQ(bands.hh, Plane(4, 3));
}

TEST(LeGall53PlaneTest, InverseRestoresEverySizeUpToTwelve) {
    std::mt19937 random(1);
    for (int height = 1; height <= 12; ++height) {
        for (int width = 1; width <= 12; ++width) {
            Plane const plane = randomPlane(random, width, height);
            ASSERT_EQ(inverse53Plane(forward53Plane(plane)), plane) << width << " x " << height;
        }
    }
}

TEST(LeGall53PlaneTest, PyramidsOfUpToSixLevelsRestoreOddSizes) {
    std::mt19937 random(2);
    for (auto const& [width, height] : {std::pair{61, 37}, std::pair{64, 48}, std::pair{1, 33}, std::pair{5, 3}}) {
        for (size_t levels = 1; levels <= 6; ++levels) {
            Plane const plane = randomPlane(random, width, height);
            Pyramid const pyramid = forward53Pyramid(plane, levels);
            ASSERT_EQ(pyramid.levels.size(), levels);
            ASSERT_EQ(inverse53Pyramid(pyramid), plane) << width << " x " << height << ", levels " << levels;
        }
    }
    EXPECT_THROW(forward53Pyramid(Plane(2, 2), 0), std::invalid_argument);
}

TEST(LeGall53PlaneTest, FiveLevelsOfNineBitSamplesFitSixteenBits) {
    std::mt19937 random(3);
    Plane plane(96, 96);
    for (std::int32_t& sample : plane.samples)
        sample = random() % 2 == 0 ? -255 : 255;
    Pyramid const pyramid = forward53Pyramid(plane, 5);
    std::int32_t largest = 0;
    for (PlaneBands const& level : pyramid.levels) {
        for (Plane const* band : {&level.ll, &level.hl, &level.lh, &level.hh}) {
            for (std::int32_t const sample : band->samples)
                largest = std::max(largest, std::abs(sample));
        }
    }
    EXPECT_GT(largest, 255);
    EXPECT_LE(largest, 32767);
}

TEST(LeGall53PlaneTest, VerticalFilterTreatsColumnsAsTheHorizontalOneTreatsRows) {
    std::mt19937 random(4);
    Plane const low = randomPlane(random, 5, 6);
    Plane const high = randomPlane(random, 5, 6);
    Plane const out = inverseFilter53Vertical(low, high);
    ASSERT_EQ(out.width, 5);
    ASSERT_EQ(out.height, 8);
    for (int x = 0; x < 5; ++x) {
        Bands column;
        for (int y = 0; y < 6; ++y) {
            column.low.push_back(low.at(x, y));
            column.high.push_back(high.at(x, y));
        }
        Signal const expected = inverseFilter53(column);
        for (int y = 0; y < 8; ++y)
            EXPECT_EQ(out.at(x, y), expected[static_cast<size_t>(y)]) << x << ", " << y;
    }
}

// The way of the pictures: bands continued beyond the image, vertical filter first, then the horizontal one.
TEST(LeGall53PlaneTest, TwoFilterStepsRestoreTheWholePlane) {
    std::mt19937 random(6);
    for (auto const& size : {std::pair{12, 10}, std::pair{13, 9}, std::pair{1, 7}, std::pair{8, 1}}) {
        int const width = size.first; // no structured binding: the lambda below captures it
        int const height = size.second;
        Plane const plane = randomPlane(random, width, height);
        PlaneBands const bands = forward53Plane(plane);
        int const columns = (width + 1) / 2 + 2;
        int const rows = (height + 1) / 2 + 2;
        auto const window = [&](Plane const& band, int dx, int dy) {
            Plane out(columns, rows);
            if (band.samples.empty()) return out;
            for (int y = 0; y < rows; ++y) {
                for (int x = 0; x < columns; ++x) {
                    // dx, dy: 0 for a low band, 1 for a high one, whose window starts one sample earlier.
                    auto const sx = (reflected(2 * (x - dx) + dx, width) - dx) / 2;
                    auto const sy = (reflected(2 * (y - dy) + dy, height) - dy) / 2;
                    out.at(x, y) = band.at(static_cast<int>(sx), static_cast<int>(sy));
                }
            }
            return out;
        };
        Plane const low = inverseFilter53Vertical(window(bands.ll, 0, 0), window(bands.lh, 0, 1));
        Plane const high = inverseFilter53Vertical(window(bands.hl, 1, 0), window(bands.hh, 1, 1));
        Plane const out = inverseFilter53Horizontal(low, high);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(out.at(x, y), plane.at(x, y)) << width << " x " << height << " at " << x << ", " << y;
            }
        }
    }
}

TEST(LeGall53PlaneTest, BandsOfDifferentSizesAreRefused) {
    EXPECT_THROW(inverseFilter53Horizontal(Plane(4, 2), Plane(4, 3)), std::invalid_argument);
}

} // namespace
