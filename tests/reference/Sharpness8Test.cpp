#include "reference/Sharpness8.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;

Texels flat(int width, int height, std::uint8_t value) {
    Texels image(width, height);
    for (std::uint8_t& byte : image.bytes)
        byte = value;
    return image;
}

TEST(Sharpness8Test, GainMovesInStepsOfOneThirtySecondTowardsZero) {
    EXPECT_EQ(sharpness8GainIn32nds(0.04, 0), 1);
    EXPECT_EQ(sharpness8GainIn32nds(-0.04, 0), -1);
    EXPECT_EQ(sharpness8GainIn32nds(0.03, 0), 0);
    EXPECT_EQ(sharpness8GainIn32nds(1.0, 0), 32);
    EXPECT_EQ(sharpness8GainIn32nds(1.99, 0), 63);
}

TEST(Sharpness8Test, EachShiftHalvesTheGainKeepingTheSign) {
    EXPECT_EQ(sharpness8GainIn32nds(1.0, 1), 16);
    EXPECT_EQ(sharpness8GainIn32nds(1.0, 6), 0);
    EXPECT_EQ(sharpness8GainIn32nds(-1.0, 6), -1);
    EXPECT_EQ(sharpness8GainIn32nds(-0.04, 1), -1);
}

TEST(Sharpness8Test, FlatImageIsUnchangedAtAnyGain) {
    for (double const gain : {-1000.0, -3.0, -0.04, 0.0, 0.5, 1.0, 31.0, 100000.0}) {
        for (int const value : {0, 1, 127, 255}) {
            Texels const image = flat(5, 4, static_cast<std::uint8_t>(value));
            EXPECT_EQ(sharpness8(image, gain, 0), image) << gain << " " << value;
        }
    }
}

// A spike of 100 over 50, gain 1. Centre 150 + 100 * (128 - 44)/128 = 215.6; beside it 50 - 1500/128 = 38.3; diagonal
// 50 - 500/128 = 46.1; two away 50 - 100/128 = 49.2.
TEST(Sharpness8Test, SpikeShowsTheWeights) {
    Texels image = flat(9, 9, 50);
    image.set(4, 4, {150, 150, 50, 150});
    Texels const out = sharpness8(image, 1.0, 0);
    int const expected[9][9] = {
        {50, 50, 50, 50, 50, 50, 50, 50, 50},  {50, 50, 50, 50, 50, 50, 50, 50, 50},
        {50, 50, 50, 50, 49, 50, 50, 50, 50},  {50, 50, 50, 46, 38, 46, 50, 50, 50},
        {50, 50, 49, 38, 216, 38, 49, 50, 50}, {50, 50, 50, 46, 38, 46, 50, 50, 50},
        {50, 50, 50, 50, 49, 50, 50, 50, 50},  {50, 50, 50, 50, 50, 50, 50, 50, 50},
        {50, 50, 50, 50, 50, 50, 50, 50, 50},
    };
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 9; ++x) {
            EXPECT_EQ(out.at(x, y)[0], expected[y][x]) << x << ", " << y;
            EXPECT_EQ(out.at(x, y)[1], expected[y][x]) << x << ", " << y;
            EXPECT_EQ(out.at(x, y)[2], 50) << x << ", " << y;
            EXPECT_EQ(out.at(x, y)[3], expected[y][x]) << "alpha " << x << ", " << y;
        }
    }
}

// Two away from a spike of 64 over 50: 50 - 64/128 = 49.5; from a hole of 64 in 64: 64 + 64/128 = 64.5.
TEST(Sharpness8Test, TiesGoUp) {
    Texels spike = flat(5, 5, 50);
    spike.set(2, 2, {114, 114, 114, 114});
    EXPECT_EQ(sharpness8(spike, 1.0, 0).at(0, 2)[0], 50);
    Texels hole = flat(5, 5, 64);
    hole.set(2, 2, {0, 0, 0, 0});
    EXPECT_EQ(sharpness8(hole, 1.0, 0).at(0, 2)[0], 65);
}

TEST(Sharpness8Test, HalfGainAddsHalfOfTheDifference) {
    Texels image = flat(5, 5, 50);
    image.set(2, 2, {150, 150, 150, 150});
    // 150 + 65.625 / 2 + 0.5 = 183.3
    EXPECT_EQ(sharpness8(image, 0.5, 0).at(2, 2)[0], 183);
    EXPECT_EQ(sharpness8(image, 1.0, 1).at(2, 2)[0], 183);
}

TEST(Sharpness8Test, ResultsAreClampedToBytes) {
    Texels image = flat(5, 5, 50);
    image.set(2, 2, {150, 150, 150, 150});
    Texels const out = sharpness8(image, 10.0, 0);
    EXPECT_EQ(out.at(2, 2)[0], 255);
    EXPECT_EQ(out.at(1, 2)[0], 0);
}

// Columns 0 and 100. At x = 0 the right neighbours weigh 15 + 5 + 5, the one two to the right reads the edge: 1 more.
// (128 * 0 - 2600)/128 = -20.3, clamped; at x = 1 the left side weighs the same: 100 + 26 * 100/128 = 120.3.
TEST(Sharpness8Test, TapsOutsideReadTheEdge) {
    Texels image(2, 3);
    for (int y = 0; y < 3; ++y)
        image.set(1, y, {100, 100, 100, 100});
    Texels const out = sharpness8(image, 1.0, 0);
    EXPECT_EQ(out.at(0, 1)[0], 0);
    EXPECT_EQ(out.at(1, 1)[0], 120);
    EXPECT_EQ(out.at(1, 0)[0], 120);
}

} // namespace
