#include "reference/LeGall53.h"

#include "reference/Layouts.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

namespace {

using namespace reference;

Signal randomSignal(std::mt19937& random, size_t length, int span) {
    Signal signal;
    for (size_t i = 0; i < length; ++i) {
        signal.push_back(static_cast<std::int32_t>(random() % static_cast<unsigned>(2 * span + 1)) - span);
    }
    return signal;
}

TEST(LeGall53Test, PositionsAreMirroredAboutTheFirstAndTheLastSample) {
    Signal got;
    for (std::ptrdiff_t i = -5; i < 9; ++i)
        got.push_back(static_cast<std::int32_t>(reflected(i, 4)));
    EXPECT_EQ(got, (Signal{1, 2, 3, 2, 1, 0, 1, 2, 3, 2, 1, 0, 1, 2}));
    EXPECT_EQ(reflected(-3, 1), 0);
    EXPECT_EQ(reflected(5, 2), 1);
}

// H: 2 - 4/2 = 0, 4 - 8/2 = 0, 6 - 12/2 = 0, 8 - (7+7)/2 = 1.
// L: 1 + floor(2/4) = 1, 3, 5, 7 + floor((0+1+2)/4) = 7.
TEST(LeGall53Test, RampHasAHighBandOnlyAtItsMirroredEnd) {
    Bands const bands = forward53({1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(bands.low, (Signal{1, 3, 5, 7}));
    EXPECT_EQ(bands.high, (Signal{0, 0, 0, 1}));
}

// H: 0 - floor(10/2) = -5, twice. L: 0 + floor((-5-5+2)/4) = -2, 10 + floor((-10+2)/4) = 8, -2.
TEST(LeGall53Test, ImpulseAtTheCentreOfFive) {
    Bands const bands = forward53({0, 0, 10, 0, 0});
    EXPECT_EQ(bands.low, (Signal{-2, 8, -2}));
    EXPECT_EQ(bands.high, (Signal{-5, -5}));
    EXPECT_EQ(inverse53(bands), (Signal{0, 0, 10, 0, 0}));
}

// The low-pass filter of the 5/3 wavelet is (-1, 2, 6, 2, -1)/8, the high-pass one (-1, 2, -1)/2: with a signal of
// multiples of 8 no floor cuts anything but the 2 before the division by 4.
TEST(LeGall53Test, BandsAreThePublishedFilterTapsWhereNothingIsRounded) {
    Signal signal(17, 0);
    signal[8] = 800;
    Bands const even = forward53(signal);
    EXPECT_EQ(even.low, (Signal{0, 0, 0, -100, 600, -100, 0, 0, 0}));
    EXPECT_EQ(even.high, (Signal{0, 0, 0, -400, -400, 0, 0, 0}));
    signal[8] = 0;
    signal[7] = 800;
    Bands const odd = forward53(signal);
    EXPECT_EQ(odd.low, (Signal{0, 0, 0, 200, 200, 0, 0, 0, 0}));
    EXPECT_EQ(odd.high, (Signal{0, 0, 0, 800, 0, 0, 0, 0}));
}

TEST(LeGall53Test, SingleSampleIsItsOwnLowBand) {
    Bands const bands = forward53({-77});
    EXPECT_EQ(bands.low, (Signal{-77}));
    EXPECT_TRUE(bands.high.empty());
    EXPECT_EQ(inverse53(bands), (Signal{-77}));
}

TEST(LeGall53Test, InverseRestoresSignalsOfEveryLength) {
    std::mt19937 random(53);
    for (size_t length = 1; length <= 70; ++length) {
        for (int round = 0; round < 50; ++round) {
            Signal const signal = randomSignal(random, length, round % 2 == 0 ? 255 : 16383);
            Bands const bands = forward53(signal);
            ASSERT_EQ(bands.low.size(), (length + 1) / 2);
            ASSERT_EQ(bands.high.size(), length / 2);
            ASSERT_EQ(inverse53(bands), signal) << "length " << length;
        }
    }
}

TEST(LeGall53Test, FilterWindowsRestoreTheirPartOfTheSignalAtEveryPosition) {
    std::mt19937 random(5);
    for (size_t length = 1; length <= 40; ++length) {
        Signal const signal = randomSignal(random, length, 4000);
        Bands const bands = forward53(signal);
        auto const n = static_cast<std::ptrdiff_t>(length);
        for (std::ptrdiff_t a = -3; 2 * a < n + 4; ++a) {
            for (size_t const m : {4u, 6u, 10u}) {
                Signal const out = inverseFilter53(filterWindow(bands, n, a, m));
                ASSERT_EQ(out.size(), 2 * m - 4);
                for (size_t i = 0; i < out.size(); ++i) {
                    auto const position = static_cast<size_t>(reflected(2 * a + static_cast<std::ptrdiff_t>(i), n));
                    ASSERT_EQ(out[i], signal[position]) << "length " << length << " a " << a << " i " << i;
                }
            }
        }
    }
}

TEST(LeGall53Test, ZeroHighBandDoublesSamplesWithFlooredMeans) {
    Signal const out = inverseFilter53({{-1, 0, 7, 10, 0, 0}, {0, 0, 0, 0, 0, 0}});
    EXPECT_EQ(out, (Signal{-1, -1, 0, 3, 7, 8, 10, 5}));
}

TEST(LeGall53Test, NegativeLowBandComesThroughAndLeavesAsTwosComplement) {
    Signal const out = inverseFilter53({{-300, -300, -300, -300}, {0, 0, 0, 0}});
    EXPECT_EQ(out, (Signal{-300, -300, -300, -300}));
    EXPECT_EQ(encodePair(out[0]), (std::array<std::uint8_t, 2>{212, 254}));
}

// H'[0] + H'[1] = -3: floor((-3 + 2)/4) = -1, so x[0] = 0 + 1. H'[1] + H'[2] = -2: floor(0/4) = 0, so x[2] = 0 and
// x[1] = -2 + floor((1 + 0)/2) = -2.
TEST(LeGall53Test, PredictionAddsTwoBeforeTheFlooredDivision) {
    Signal const out = inverseFilter53({{0, 0, 0}, {-1, -2, 0}});
    EXPECT_EQ(out, (Signal{1, -2}));
}

// Even samples read one low and two high samples, odd ones two low and three high samples.
TEST(LeGall53Test, EachOutputReadsExactlyItsNeighbourhood) {
    Bands const zero{Signal(6, 0), Signal(6, 0)};
    for (size_t i = 0; i < 6; ++i) {
        Bands low = zero;
        low.low[i] = 400;
        Bands high = zero;
        high.high[i] = 400;
        Signal const fromLow = inverseFilter53(low);
        Signal const fromHigh = inverseFilter53(high);
        for (size_t n = 0; n < 4; ++n) {
            EXPECT_EQ(fromLow[2 * n] != 0, i == n) << "L" << i << " x" << 2 * n;
            EXPECT_EQ(fromLow[2 * n + 1] != 0, i == n || i == n + 1) << "L" << i << " x" << 2 * n + 1;
            EXPECT_EQ(fromHigh[2 * n] != 0, i == n || i == n + 1) << "H" << i << " x" << 2 * n;
            EXPECT_EQ(fromHigh[2 * n + 1] != 0, i >= n && i <= n + 2) << "H" << i << " x" << 2 * n + 1;
        }
    }
}

// x[0] = 32767 - floor((-65536 + 2)/4) = 32767 + 16384 = 49151, x[1] = -32768 + 49151 = 16383.
TEST(LeGall53Test, LargestCoefficientsAreNotCutToSixteenBits) {
    Signal const out = inverseFilter53({Signal(4, 32767), Signal(4, -32768)});
    EXPECT_EQ(out, (Signal{49151, 16383, 49151, 16383}));
}

TEST(LeGall53Test, BandsOfDifferentLengthsAreRefused) {
    EXPECT_THROW(inverseFilter53({{1, 2, 3}, {1, 2}}), std::invalid_argument);
}

} // namespace
