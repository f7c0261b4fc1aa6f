#include "host/display/AutomaticRange.h"

#include "host/display/Tone.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

void expectRange(std::vector<double> const& samples, double low, double high) {
    auto const range = automaticrange::of(samples);
    ASSERT_TRUE(range);
    EXPECT_NEAR(range->low, low, 1e-9);
    EXPECT_NEAR(range->high, high, 1e-9);
}

// Of 0 to 1000: place 0.005 * 1000 = 5, and 995.
TEST(AutomaticRangeTest, BothEndsArePercentiles) {
    std::vector<double> samples;
    for (int i = 1000; i >= 0; --i)
        samples.push_back(i);
    expectRange(samples, 5, 995);
}

// Of three samples: places 0.01 and 1.99.
TEST(AutomaticRangeTest, BetweenTwoSamplesInProportion) {
    expectRange({30, 10, 20}, 10.1, 29.9);
    expectRange({-1, 1}, -0.99, 0.99);
}

TEST(AutomaticRangeTest, SamplesThatAreNotFiniteDoNotCount) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    expectRange({kInfinity, 30, std::numeric_limits<double>::quiet_NaN(), 10, -kInfinity, 20, 1.7e308, -1.7e308}, 10.1,
                29.9);
    EXPECT_FALSE(automaticrange::of({}));
    EXPECT_FALSE(automaticrange::of({kInfinity, std::numeric_limits<double>::quiet_NaN()}));
}

TEST(AutomaticRangeTest, TheFarthestSamplesCount) {
    expectRange({Tone::kFarthest, Tone::kFarthest, -Tone::kFarthest, -Tone::kFarthest}, -Tone::kFarthest,
                Tone::kFarthest);
}

TEST(AutomaticRangeTest, EqualSamplesAreTheLowEnd) {
    expectRange({7}, 7, 14);
    expectRange({0, 0, 0}, 0, 1);
    expectRange({-5, -5}, -5, 0);
}

} // namespace
