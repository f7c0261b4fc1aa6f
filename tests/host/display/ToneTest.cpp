#include "host/display/Tone.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

using Curve = Tone::Curve;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

TEST(ToneTest, SamplesBetweenTheEndsAreInProportionAndHalvesGoUp) {
    Tone const tone{100, 355};
    EXPECT_EQ(tone.byteOf(100), 0);
    EXPECT_EQ(tone.byteOf(100.499), 0);
    EXPECT_EQ(tone.byteOf(100.5), 1);
    EXPECT_EQ(tone.byteOf(227.5), 128);
    EXPECT_EQ(tone.byteOf(354.499), 254);
    EXPECT_EQ(tone.byteOf(355), 255);
}

TEST(ToneTest, SamplesBeyondTheEndsAreClipped) {
    for (Curve const curve : {Curve::Linear, Curve::Log, Curve::Asinh}) {
        Tone const tone{-10, 10, curve, 2.2};
        for (double const low : {-10.0, -11.0, -1e308, -kInfinity})
            EXPECT_EQ(tone.byteOf(low), 0) << low;
        for (double const high : {10.0, 11.0, 1e308, kInfinity})
            EXPECT_EQ(tone.byteOf(high), 255) << high;
    }
}

TEST(ToneTest, WhatIsNotANumberHasNoShareAndIsBlack) {
    Tone const tone{0, 1, Curve::Asinh, 2};
    EXPECT_TRUE(std::isnan(tone.share(kNotANumber)));
    EXPECT_EQ(tone.byteOf(kNotANumber), 0);
}

TEST(ToneTest, TheFarthestEndsHaveAMiddle) {
    Tone const tone{-Tone::kFarthest, Tone::kFarthest};
    EXPECT_EQ(tone.byteOf(0), 128);
    EXPECT_EQ(tone.byteOf(std::numeric_limits<double>::max()), 255);
    EXPECT_EQ(tone.byteOf(std::numeric_limits<double>::lowest()), 0);
}

// Worked by hand: ln 11 / ln 1001 = 0.347081, ln 501 / ln 1001 = 0.899812.
TEST(ToneTest, TheLogarithmLiftsDarkSamples) {
    Tone const tone{0, 100, Curve::Log};
    EXPECT_NEAR(tone.share(1), 0.347081, 1e-6);
    EXPECT_EQ(tone.byteOf(1), 89);
    EXPECT_NEAR(tone.share(50), 0.899812, 1e-5);
    EXPECT_EQ(tone.byteOf(50), 229);
}

// Worked by hand: asinh 1 / asinh 10 = 0.293965, asinh 5 / asinh 10 = 0.771270.
TEST(ToneTest, TheHyperbolicSineLiftsThemLess) {
    Tone const tone{0, 100, Curve::Asinh};
    EXPECT_NEAR(tone.share(10), 0.293965, 1e-6);
    EXPECT_EQ(tone.byteOf(10), 75);
    EXPECT_NEAR(tone.share(50), 0.771270, 1e-6);
    EXPECT_EQ(tone.byteOf(50), 197);
}

// Worked by hand: 0.25 ^ (1 / 2.2) = 0.532521; with the curve before it, 0.347081 ^ 0.5 = 0.589136.
TEST(ToneTest, GammaComesAfterTheCurve) {
    EXPECT_NEAR((Tone{0, 100, Curve::Linear, 2.2}).share(25), 0.532521, 1e-6);
    EXPECT_EQ((Tone{0, 100, Curve::Linear, 2.2}).byteOf(25), 136);
    EXPECT_NEAR((Tone{0, 100, Curve::Log, 2}).share(1), 0.589136, 1e-6);
}

TEST(ToneTest, TonesDifferInEachPart) {
    Tone const tone{0, 1, Curve::Log, 2};
    EXPECT_EQ(tone, tone);
    for (Tone const& other :
         {Tone{0.5, 1, Curve::Log, 2}, {0, 2, Curve::Log, 2}, {0, 1, Curve::Linear, 2}, {0, 1, Curve::Log, 1}})
        EXPECT_NE(tone, other);
}

TEST(ToneTest, CurvesHaveNames) {
    for (Curve const curve : {Curve::Linear, Curve::Log, Curve::Asinh})
        EXPECT_EQ(tone::parseCurve(tone::toText(curve)), curve);
    EXPECT_EQ(tone::parseCurve("asinh"), Curve::Asinh);
    for (char const* const text : {"", "Log", "sqrt", "log "})
        EXPECT_THROW(tone::parseCurve(text), std::invalid_argument) << text;
}

} // namespace
