#include "host/store/Wavelet53.h"
#include "tests/host/store/WaveletModel.h"

#include <gtest/gtest.h>

#include <algorithm>

using wavelet53::Sample;
using waveletmodel::Kind;
using waveletmodel::Plane;

namespace {

std::vector<Sample> toSamples(Plane const& plane) {
    std::vector<Sample> samples;
    for (std::int64_t const sample : plane.samples)
        samples.push_back(static_cast<Sample>(sample));
    return samples;
}

struct Bands {
    std::vector<Sample> low;
    std::vector<Sample> high;
    bool fit;
};

Bands split(std::vector<Sample> const& row) {
    size_t const bands = wavelet53::bandSamples(row.size());
    Bands out{std::vector<Sample>(bands), std::vector<Sample>(bands), true};
    out.fit = wavelet53::RowSplitter(row.size()).split(row.data(), out.low.data(), out.high.data());
    return out;
}

// The formulas once more, in a range without overflow.
bool modelFits(Plane const& plane) {
    auto const bands = waveletmodel::bandSamples(plane.width);
    for (std::int64_t n = -1; n < bands; ++n) {
        auto const high = [&](std::int64_t i) {
            return plane.at(2 * i + 1, 0) - ((plane.at(2 * i, 0) + plane.at(2 * i + 2, 0)) >> 1);
        };
        auto const low = plane.at(2 * n, 0) + ((high(n - 1) + high(n) + 2) >> 2);
        if (high(n) < -32768 || high(n) > 32767) return false;
        if (n >= 0 && (low < -32768 || low > 32767)) return false;
    }
    return true;
}

} // namespace

TEST(Wavelet53Test, ReflectedPositionsMirrorAboutTheFirstAndTheLastSample) {
    std::vector<size_t> positions;
    for (std::ptrdiff_t i = -5; i < 10; ++i)
        positions.push_back(wavelet53::reflected(i, 4));
    EXPECT_EQ(positions, (std::vector<size_t>{1, 2, 3, 2, 1, 0, 1, 2, 3, 2, 1, 0, 1, 2, 3}));
    for (std::ptrdiff_t i = -3; i < 4; ++i) {
        EXPECT_EQ(wavelet53::reflected(i, 1), 0u);
        EXPECT_EQ(wavelet53::reflected(i, 2), static_cast<size_t>(i & 1));
    }
}

TEST(Wavelet53Test, BandsHaveTheLeastEvenNumberOfSamplesThatRebuildsTheSignal) {
    for (size_t count = 1; count < 3000; ++count)
        EXPECT_EQ(wavelet53::bandSamples(count),
                  static_cast<size_t>(waveletmodel::bandSamples(static_cast<std::int64_t>(count))));
}

TEST(Wavelet53Test, BandsOfARowAreThoseOfTheMirroredSignal) {
    std::mt19937 random(53);
    for (int length = 1; length <= 40; ++length) {
        Plane const signal = waveletmodel::noise(length, 1, -8000, 8000, random);
        auto const bands = waveletmodel::bandSamples(length);
        Bands const actual = split(toSamples(signal));
        EXPECT_TRUE(actual.fit);
        // A plane of one row is constant along y: its LL is its L, and the high bands along y are 0.
        EXPECT_EQ(actual.low, toSamples(waveletmodel::band(signal, Kind::Low, Kind::Low, bands, 1))) << length;
        EXPECT_EQ(actual.high, toSamples(waveletmodel::band(signal, Kind::High, Kind::Low, bands, 1))) << length;
    }
}

TEST(Wavelet53Test, ARowIsRebuiltFromItsBands) {
    std::mt19937 random(35);
    for (int length = 1; length <= 40; ++length) {
        std::vector<Sample> const signal = toSamples(waveletmodel::noise(length, 1, -16384, 16383, random));
        Bands const bands = split(signal);
        ASSERT_TRUE(bands.fit);
        std::vector<Sample> rebuilt(signal.size());
        wavelet53::RowJoiner(signal.size()).join(bands.low.data(), bands.high.data(), rebuilt.data());
        EXPECT_EQ(rebuilt, signal) << length;
    }
}

TEST(Wavelet53Test, ACoefficientBeyond16BitsIsNoticedAndTheOutermostOnesAreNot) {
    // H = odd - even: 32767 and -32768 fit, one more does not.
    EXPECT_TRUE(split({0, 32767, 0, 0}).fit);
    EXPECT_FALSE(split({-1, 32767, -1, 0}).fit);
    EXPECT_TRUE(split({0, -32768, 0, 0}).fit);
    EXPECT_FALSE(split({1, -32768, 1, 0}).fit);
}

TEST(Wavelet53Test, WhetherARowFitsIsWhatTheModelSays) {
    std::mt19937 random(16);
    size_t beyond = 0;
    constexpr size_t kRows = 2000;
    for (size_t i = 0; i < kRows; ++i) {
        int const limit = 14000 + static_cast<int>(i) * 8;
        Plane const signal = waveletmodel::noise(6, 1, -limit, limit, random);
        bool const fits = modelFits(signal);
        EXPECT_EQ(split(toSamples(signal)).fit, fits) << testing::PrintToString(signal.samples);
        beyond += fits ? 0 : 1;
    }
    EXPECT_GT(beyond, kRows / 20);
    EXPECT_LT(beyond, kRows - kRows / 20);
}
