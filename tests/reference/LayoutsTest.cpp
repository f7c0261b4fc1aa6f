#include "reference/Layouts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>

namespace {

using namespace reference;

struct PairRow {
    char const* name;
    std::int64_t value;
    std::array<std::uint8_t, 2> bytes;
};

TEST(LayoutsTest, ValuesLeaveAsTheirTwoBytes) {
    PairRow const rows[] = {
        {"minus one", -1, {255, 255}},           {"minus 256", -256, {0, 255}},
        {"largest", 32767, {255, 127}},          {"smallest", -32768, {0, 128}},
        {"minus 300", -300, {212, 254}},         {"minus 257", -257, {255, 254}},
        {"0x1234", 0x1234, {0x34, 0x12}},        {"one above the largest wraps", 32768, {0, 128}},
        {"unsigned largest", 65535, {255, 255}}, {"below the smallest wraps", -49151, {1, 64}},
    };
    for (PairRow const& row : rows)
        EXPECT_EQ(encodePair(row.value), row.bytes) << row.name;
}

TEST(LayoutsTest, HighByteStaysAtItsEndWhereTheTargetClamps) {
    EXPECT_EQ(encodePair(65536 + 7), (std::array<std::uint8_t, 2>{7, 255}));
    EXPECT_EQ(encodePair(81919), (std::array<std::uint8_t, 2>{255, 255}));
    EXPECT_EQ(encodePair(-65536), (std::array<std::uint8_t, 2>{0, 0}));
    EXPECT_EQ(encodePair(-65537), (std::array<std::uint8_t, 2>{255, 0}));
}

TEST(LayoutsTest, CarryNormalisationOfTheWorkedPairs) {
    Pair const overflow = carryNormalised(300, 0, 1);
    EXPECT_EQ(overflow.low, 44);
    EXPECT_EQ(overflow.high, 1);
    Pair const underflow = carryNormalised(-1, 0, 1);
    EXPECT_EQ(underflow.low, 255);
    EXPECT_EQ(underflow.high, -1);
    Pair const fraction = carryNormalised(0, 1, 2); // (0, 0.5)
    EXPECT_EQ(fraction.low, 128);
    EXPECT_EQ(fraction.high, 0);
}

// The steps of the shaders' float form, in double, where quarters of these sizes are exact:
// f = fract(H), o = floor(L/256 + f), L += 256 * (f - o), H += o, both floored.
TEST(LayoutsTest, CarryNormalisationIsWhatTheFloatStepsSay) {
    for (int low = -2100; low <= 2100; low += 3) {
        for (int high = -1100; high <= 1100; high += 7) {
            double const l = low / 4.0;
            double const h = high / 4.0;
            double const f = h - std::floor(h);
            double const o = std::floor(l / 256 + f);
            Pair const pair = carryNormalised(low, high, 4);
            ASSERT_EQ(pair.low, std::floor(l + 256 * (f - o))) << low << " " << high;
            ASSERT_EQ(pair.high, std::floor(h + o)) << low << " " << high;
            ASSERT_TRUE(pair.low >= 0 && pair.low <= 255) << low << " " << high;
        }
    }
}

TEST(LayoutsTest, OneChannelHoldsTwoSamplesATexelLowByteFirst) {
    Plane const plane(4, 1, {0x1234, -1, -300, 5});
    Texels const texels = packOneChannel16(plane);
    EXPECT_EQ(texels.width, 2);
    EXPECT_EQ(texels.bytes, (std::vector<std::uint8_t>{0x34, 0x12, 255, 255, 212, 254, 5, 0}));
    EXPECT_EQ(unpackOneChannel16(texels), plane);
}

TEST(LayoutsTest, OddWidthOfOneChannelEndsWithAZeroSample) {
    Texels const texels = packOneChannel16(Plane(3, 2, {1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(texels.bytes, (std::vector<std::uint8_t>{1, 0, 2, 0, 3, 0, 0, 0, 4, 0, 5, 0, 6, 0, 0, 0}));
}

TEST(LayoutsTest, ThreeChannelsTakeTwoTexelsPerPixel) {
    Planes3 const channels{Plane(1, 1, {0x1234}), Plane(1, 1, {0x5678}), Plane(1, 1, {-2})};
    Texels const texels = packThreeChannel16(channels);
    EXPECT_EQ(texels.width, 2);
    EXPECT_EQ(texels.bytes, (std::vector<std::uint8_t>{0x34, 0x12, 0x78, 255, 0x56, 0xfe, 0xff, 255}));
    EXPECT_EQ(unpackThreeChannel16(texels), channels);
    EXPECT_EQ(unpackThreeChannel16Unsigned(texels)[2].at(0, 0), 65534);
}

TEST(LayoutsTest, AlphaOfThreeChannelsIsNotRead) {
    Texels const texels(2, 1, {1, 0, 2, 99, 0, 3, 0, 77});
    EXPECT_EQ(unpackThreeChannel16(texels), (Planes3{Plane(1, 1, {1}), Plane(1, 1, {2}), Plane(1, 1, {3})}));
}

TEST(LayoutsTest, SingleLastColumnOfThreeChannelsIsLeftOut) {
    EXPECT_EQ(unpackThreeChannel16(Texels(5, 2))[0].width, 2);
}

TEST(LayoutsTest, FourChannelsAreTheBytesOfTheSamplesInOrder) {
    std::vector<std::int16_t> const samples{1, -1, 0x1234, -300};
    Texels const texels = packFourChannel16(samples, 1, 1);
    EXPECT_EQ(texels.bytes, (std::vector<std::uint8_t>{1, 0, 255, 255, 0x34, 0x12, 212, 254}));
    EXPECT_EQ(unpackFourChannel16(texels), samples);
}

TEST(LayoutsTest, EverySixteenBitValueSurvivesEveryLayout) {
    Plane plane(256, 256);
    std::iota(plane.samples.begin(), plane.samples.end(), -32768);
    EXPECT_EQ(unpackOneChannel16(packOneChannel16(plane)), plane);
    Plane backwards = plane;
    std::reverse(backwards.samples.begin(), backwards.samples.end());
    Planes3 const channels{plane, backwards, plane};
    EXPECT_EQ(unpackThreeChannel16(packThreeChannel16(channels)), channels);
    std::vector<std::int16_t> samples;
    for (std::int32_t const sample : plane.samples)
        samples.push_back(static_cast<std::int16_t>(sample));
    EXPECT_EQ(unpackFourChannel16(packFourChannel16(samples, 64, 256)), samples);
}

TEST(LayoutsTest, PositionsOutsideThrowAndClampedOnesReadTheEdge) {
    Plane const plane(2, 2, {1, 2, 3, 4});
    EXPECT_THROW(plane.at(-1, 0), std::out_of_range);
    EXPECT_THROW(plane.at(0, 2), std::out_of_range);
    EXPECT_EQ(plane.clampedAt(-5, 0), 1);
    EXPECT_EQ(plane.clampedAt(7, 9), 4);
    Texels const texels(1, 2, {1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(texels.clampedAt(3, 5), (Texel{5, 6, 7, 8}));
    EXPECT_THROW(Plane(2, 2, {1}), std::invalid_argument);
    EXPECT_THROW(Texels(2, 2, {1}), std::invalid_argument);
}

} // namespace
