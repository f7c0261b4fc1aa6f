#include "gles3renderbackend/filters/ToneTable.h"

#include "reference/ToneTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

using Table = std::vector<std::uint8_t>;

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();

TEST(ToneTableTest, EveryEntryAgreesWithTheModelAtEveryDepth) {
    for (unsigned depth = 1; depth <= 16; ++depth) {
        std::uint64_t const codes = std::uint64_t{1} << depth;
        for (double const gamma : {0.4, 0.999, 1.0, 1.0001, 1.001, 1.03, 1.0549, 1.055, 1.3, 1.8, 2.2, 2.4, 5.0}) {
            EXPECT_EQ(toneTable::gamma(depth, gamma, 0, codes - 1), reference::gammaTable(depth, gamma, 0, codes - 1))
                << depth << " bits, gamma " << gamma;
            EXPECT_EQ(toneTable::gamma(depth, gamma, codes / 5, codes - codes / 7),
                      reference::gammaTable(depth, gamma, codes / 5, codes - codes / 7))
                << depth << " bits, gamma " << gamma;
        }
    }
}

TEST(ToneTableTest, GammaOneFromBlackToWhiteIsTheIdentityScaledToBytes) {
    for (size_t const depth : {8U, 9U, 12U, 16U}) {
        size_t const max = (size_t{1} << depth) - 1;
        Table const table = toneTable::gamma(depth, 1.0, 0, max);
        ASSERT_EQ(table.size(), max + 1);
        for (size_t i = 0; i <= max; ++i)
            ASSERT_EQ(table[i], (510 * i + max) / (2 * max)) << depth << " bits, code " << i;
    }
}

TEST(ToneTableTest, WhiteBelowBlackIsAStepAtWhite) {
    Table const table = toneTable::gamma(10, 2.2, 700, 300);
    for (size_t i = 0; i < 1024; ++i)
        ASSERT_EQ(table[i], i < 300 ? 0 : 255) << i;
}

TEST(ToneTableTest, WhiteZeroMakesEverythingWhite) {
    EXPECT_EQ(toneTable::gamma(9, 2.2, 0, 0), Table(512, 255));
    EXPECT_EQ(toneTable::gamma(9, 2.2, 5, 0), Table(512, 255));
}

TEST(ToneTableTest, PointsBeyondTheLargestCodeCountAsThatCode) {
    EXPECT_EQ(toneTable::gamma(10, 2.2, 64, kLargest), toneTable::gamma(10, 2.2, 64, 1023));
    EXPECT_EQ(toneTable::gamma(10, 2.2, kLargest, kLargest), toneTable::gamma(10, 2.2, 1023, 1023));
}

// 0.00304 of 4090 codes: the toe ends at code 12, which is only 7 above black.
TEST(ToneTableTest, ToeEndsAtItsIndexWhateverTheBlackPoint) {
    Table const table = toneTable::gamma(12, 2.4, 5, 4095);
    for (size_t i = 5; i < 12; ++i)
        ASSERT_EQ(table[i], std::lround(static_cast<double>(i - 5) / 4090.0 * 12.92 * 255.0)) << i;
    // The straight line would go on with 6.
    EXPECT_EQ(table[12], 5);
    EXPECT_EQ(table[12], std::lround((std::pow(7.0 / 4090.0, 1 / 2.4) * 1.055 - 0.055) * 255.0));
}

TEST(ToneTableTest, ToeVanishesWhereBlackIsAtOrAboveItsEnd) {
    for (std::uint64_t const black : {12U, 13U, 400U}) {
        Table const table = toneTable::gamma(12, 2.4, black, 4095);
        double const range = 4095.0 - static_cast<double>(black);
        ASSERT_LE(std::lround(reference::gammaToe(2.4).threshold * range), static_cast<long>(black));
        for (size_t i = black; i < 4095; ++i) {
            double const value = std::pow(static_cast<double>(i - black) / range, 1 / 2.4) * 1.055 - 0.055;
            ASSERT_EQ(table[i], std::max(0L, std::lround(value * 255.0))) << i;
        }
    }
}

// The end of such a gamma's toe lies far beyond the table: nothing may be written there.
TEST(ToneTableTest, GammaJustAboveOneStopsTheToeAtWhite) {
    for (double const gamma : {std::nextafter(1.0, 2.0), 1.0000001, 1.0001, 1.01, 1.05, 1.054}) {
        Table const table = toneTable::gamma(10, gamma, 10, 1000);
        ASSERT_EQ(table.size(), 1024U);
        EXPECT_EQ(table, reference::gammaTable(10, gamma, 10, 1000)) << gamma;
        EXPECT_EQ(table[999], std::min(255L, std::lround(989.0 / 990.0 * reference::gammaToe(gamma).slope * 255.0)));
        EXPECT_EQ(table[1000], 255);
    }
}

TEST(ToneTableTest, GammaThatIsNoPositiveNumberStillFillsTheTable) {
    for (double const gamma : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
        Table const table = toneTable::gamma(9, gamma, 100, 400);
        ASSERT_EQ(table.size(), 512U);
        EXPECT_EQ(table[99], 0);
        EXPECT_EQ(table[400], 255);
    }
}

TEST(ToneTableTest, DepthsAboveSixteenAreRefused) {
    EXPECT_THROW(toneTable::gamma(17, 2.2, 0, 100), std::length_error);
    EXPECT_THROW(toneTable::gamma(64, 2.2, 0, 100), std::length_error);
}

TEST(ToneTableTest, BlackWhiteGamma8AgreesWithTheModel) {
    for (double const gamma : {0.5, 1.0, 1.02, 2.2, 2.4}) {
        for (std::uint64_t const black : {0U, 1U, 200U, 3499U, 3500U, 5000U}) {
            for (std::uint64_t const white : {0U, 100U, 3500U, 4095U, 9999U}) {
                EXPECT_EQ(toneTable::blackWhiteGamma8(gamma, black, white),
                          reference::blackWhiteGamma8Table(gamma, black, white))
                    << gamma << ", " << black << ", " << white;
            }
        }
    }
}

// Full scale of the linearised codes is 3500, so a white point of 4095 leaves white input short of 255.
TEST(ToneTableTest, BlackWhiteGamma8CountsWhiteInputAs3500) {
    Table const table = toneTable::blackWhiteGamma8(1.0, 0, 4095);
    EXPECT_EQ(table[255], std::lround(3500.0 / 4095.0 * 255.0));
    EXPECT_EQ(toneTable::blackWhiteGamma8(1.0, 0, 3500)[255], 255);
    // 8 / 255 / 12.92 * 3500 is 8.5 less a hair, 9 is 9.56: codes 8 and 10 of the linear table.
    Table const step = toneTable::blackWhiteGamma8(1.0, 10, 10);
    EXPECT_EQ(step[8], 0);
    EXPECT_EQ(step[9], 255);
}

// The model's entries are worked by hand in its own test.
TEST(ToneTableTest, SrgbOf8BitsEndsAt254BecauseTheFloorIsRequired) {
    Table const table = toneTable::srgbFromLinear8();
    EXPECT_EQ(table, reference::srgbTable(8));
    EXPECT_EQ(table.back(), 254);
}

} // namespace
