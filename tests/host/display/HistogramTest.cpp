#include "host/display/Histogram.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>

namespace {

std::uint64_t sum(Histogram const& histogram) {
    return std::accumulate(histogram.counts.begin(), histogram.counts.end(), std::uint64_t{0});
}

} // namespace

TEST(HistogramTest, BinsAreEquallyWide) {
    std::vector<double> samples;
    for (int i = 0; i <= 1280; ++i)
        samples.push_back(100 + i);
    Histogram const histogram = Histogram::of(samples);
    EXPECT_EQ(histogram.low, 100);
    EXPECT_EQ(histogram.high, 1380);
    for (size_t bin = 0; bin + 1 < Histogram::kBins; ++bin)
        ASSERT_EQ(histogram.counts[bin], 10u) << bin;
    EXPECT_EQ(histogram.counts.back(), 11u) << "with the largest one";
}

TEST(HistogramTest, SamplesLieInTheBinsThatTheyBelongTo) {
    Histogram const histogram = Histogram::of({-1, -0.5, -0.5, 0.999, 1});
    EXPECT_EQ(histogram.counts[0], 1u);
    EXPECT_EQ(histogram.counts[32], 2u);
    EXPECT_EQ(histogram.counts[127], 2u);
    EXPECT_EQ(sum(histogram), 5u);
}

TEST(HistogramTest, EqualSamplesAreInOneBin) {
    Histogram const histogram = Histogram::of({7, 7, 7});
    EXPECT_EQ(histogram.low, 7);
    EXPECT_EQ(histogram.high, 7);
    EXPECT_EQ(histogram.counts[0], 3u);
    EXPECT_EQ(sum(histogram), 3u);
}

TEST(HistogramTest, WhatIsNotFiniteDoesNotCount) {
    double const none = std::numeric_limits<double>::quiet_NaN();
    double const infinity = std::numeric_limits<double>::infinity();
    Histogram const histogram = Histogram::of({none, 3, infinity, 5, -infinity, 1.1e300, -1.1e300});
    EXPECT_EQ(histogram.low, 3);
    EXPECT_EQ(histogram.high, 5);
    EXPECT_EQ(sum(histogram), 2u);
    Histogram const far = Histogram::of({-1e300, 1e300});
    EXPECT_EQ(far.counts.front() + far.counts.back(), 2u);
    Histogram const empty = Histogram::of({none});
    EXPECT_EQ(empty.low, 0);
    EXPECT_EQ(empty.high, 0);
    EXPECT_EQ(sum(empty), 0u);
}
