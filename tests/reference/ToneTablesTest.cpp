#include "reference/ToneTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

using namespace reference;

TEST(ToneTablesTest, GammaOneIsTheIdentityScaledToBytes) {
    for (unsigned const depth : {1u, 4u, 8u, 10u, 12u, 16u}) {
        ByteTable const table = gammaTable(depth, 1.0, 0, ~std::uint64_t{0});
        std::uint64_t const max = (std::uint64_t{1} << depth) - 1;
        ASSERT_EQ(table.size(), max + 1);
        // round(255 i / max) in whole numbers: max is odd, so there are no ties.
        for (std::uint64_t i = 0; i <= max; ++i)
            ASSERT_EQ(table[i], (510 * i + max) / (2 * max)) << depth << " " << i;
    }
}

TEST(ToneTablesTest, WhiteBelowBlackIsAStepAtWhite) {
    ByteTable const table = gammaTable(8, 2.4, 200, 100);
    for (size_t i = 0; i < 256; ++i)
        EXPECT_EQ(table[i], i < 100 ? 0 : 255) << i;
}

TEST(ToneTablesTest, WhiteZeroMakesEverythingWhite) {
    EXPECT_EQ(gammaTable(4, 2.4, 0, 0), ByteTable(16, 255));
}

// The published constants of the sRGB curve, taken to its full precision: threshold 0.0030399, slope 12.923.
TEST(ToneTablesTest, ToeOfGamma24IsThatOfSrgb) {
    GammaToe const toe = gammaToe(2.4);
    EXPECT_EQ(toe.a, 0.055);
    EXPECT_NEAR(toe.threshold, 0.0030399, 3e-7);
    EXPECT_NEAR(toe.slope, 12.9232, 1e-3);
}

TEST(ToneTablesTest, GammaUpToOneHasNoToe) {
    for (double const gamma : {0.5, 1.0}) {
        EXPECT_EQ(gammaToe(gamma).a, 0.0);
        EXPECT_EQ(gammaToe(gamma).slope, 0.0);
        EXPECT_EQ(gammaToe(gamma).threshold, 0.0);
    }
    // gamma 0.5: squares, (64/255)^2 * 255 = 16.06
    EXPECT_EQ(gammaTable(8, 0.5, 0, 255)[64], 16);
}

// t = round(0.00304 * 4090) = 12. Entry 11: 6/4090 * 12.92 * 255 = 4.83. Entry 12 is already on the power curve:
// (7/4090)^(1/2.4) * 1.055 - 0.055 = 0.0192, 4.90; the toe would give 5.64.
TEST(ToneTablesTest, ToeEndsAtItsIndexNotThatFarAboveBlackBecauseThatIsRequired) {
    ByteTable const table = gammaTable(12, 2.4, 5, 4095);
    EXPECT_EQ(table[4], 0);
    EXPECT_EQ(table[11], 5);
    EXPECT_EQ(table[12], 5);
}

// t = 12 again: no toe from black 20 on. (1/4075)^(1/2.4) * 1.055 - 0.055 is negative; the toe would give 0.81.
TEST(ToneTablesTest, ToeVanishesBehindTheBlackPoint) {
    ByteTable const table = gammaTable(12, 2.4, 20, 4095);
    EXPECT_EQ(table[20], 0);
    EXPECT_EQ(table[21], 0);
}

// With gamma just above 1 the slope tends to 1.055 and the toe's end lies far beyond the table.
TEST(ToneTablesTest, ToeBeyondTheTableStopsAtWhite) {
    for (double const gamma : {1.0 + 1e-12, std::nextafter(1.0, 2.0), 1.0001}) {
        ASSERT_GT(gammaToe(gamma).threshold, 1.0);
        ByteTable const table = gammaTable(8, gamma, 0, 255);
        ASSERT_EQ(table.size(), 256u);
        EXPECT_EQ(table[250], 255);
        EXPECT_EQ(table[255], 255);
    }
    ByteTable const table = gammaTable(8, 1.0 + 1e-12, 0, 255);
    EXPECT_EQ(table[10], 11);   // 10.55
    EXPECT_EQ(table[200], 211); // 211.0
    ByteTable const cut = gammaTable(8, 1.0 + 1e-12, 0, 100);
    EXPECT_EQ(cut[99], 255);
    EXPECT_EQ(cut[50], 135); // 0.5 * 1.055 * 255 = 134.5
}

TEST(ToneTablesTest, TablesRiseFromBlackToWhite) {
    for (double const gamma : {0.3, 1.0, 1.01, 1.054, 1.055, 1.056, 1.8, 2.2, 2.4, 5.0}) {
        ByteTable const table = gammaTable(10, gamma, 0, 1023);
        EXPECT_EQ(table.front(), 0) << gamma;
        EXPECT_EQ(table.back(), 255) << gamma;
        EXPECT_TRUE(std::is_sorted(table.begin(), table.end())) << gamma;
    }
}

// The switch to the power branch at code 10 shows in no entry: both branches round alike from 9 to 14.
// Codes 1 and 9 on the straight branch: 1.06 + 0.5, 9.56 + 0.5. Code 10 on the power branch: 0.0030353 * 3500 + 0.5 =
// 11.1. 128 and 188: 0.2158605 and 0.5028865 of 3500.
TEST(ToneTablesTest, LinearisationHasFullScale3500) {
    std::vector<std::uint16_t> const table = linearisationTable();
    ASSERT_EQ(table.size(), 256u);
    EXPECT_EQ(table[0], 0);
    EXPECT_EQ(table[1], 1);
    EXPECT_EQ(table[9], 10);
    EXPECT_EQ(table[10], 11);
    EXPECT_EQ(table[128], 756);
    EXPECT_EQ(table[188], 1760);
    EXPECT_EQ(table[255], 3500);
}

TEST(ToneTablesTest, BlackWhiteGammaGoesThroughTheTwelveBitTable) {
    ByteTable const whole = blackWhiteGamma8Table(1.0, 0, 4095);
    ASSERT_EQ(whole.size(), 256u);
    EXPECT_EQ(whole[0], 0);
    EXPECT_EQ(whole[10], 1);    // 11/4095 * 255 = 0.68
    EXPECT_EQ(whole[255], 218); // 3500/4095 * 255 = 217.9
    ByteTable const bright = blackWhiteGamma8Table(1.0, 0, 3500);
    EXPECT_EQ(bright[255], 255);
    EXPECT_EQ(bright[254], 253); // 3469/3500 * 255 = 252.7
    ByteTable const step = blackWhiteGamma8Table(1.0, 756, 756);
    EXPECT_EQ(step[127], 0);
    EXPECT_EQ(step[128], 255);
}

TEST(ToneTablesTest, EightBitSrgbTableEndsAt254BecauseTheFloorIsRequired) {
    ByteTable const table = srgbTable(8);
    ASSERT_EQ(table.size(), 256u);
    EXPECT_EQ(table[0], 0);
    EXPECT_EQ(table[1], 12);
    EXPECT_EQ(table[2], 21);
    EXPECT_EQ(table[128], 187);
    EXPECT_EQ(table[254], 254);
    EXPECT_EQ(table[255], 254);
}

// Each 8-bit code, made linear by the published decoding, comes back from the deep tables.
TEST(ToneTablesTest, DeepSrgbTablesInvertThePublishedDecoding) {
    for (unsigned const depth : {14u, 16u}) {
        ByteTable const table = srgbTable(depth);
        auto const max = static_cast<double>(table.size() - 1);
        for (int code = 0; code < 256; ++code) {
            double const x = code / 255.0;
            double const linear = x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
            EXPECT_EQ(table[static_cast<size_t>(std::lround(linear * max))], code) << depth;
        }
    }
}

TEST(ToneTablesTest, SrgbAbove16BitsIsRefused) {
    EXPECT_EQ(srgbTable(16).size(), 65536u);
    EXPECT_THROW(srgbTable(17), std::invalid_argument);
}

} // namespace
