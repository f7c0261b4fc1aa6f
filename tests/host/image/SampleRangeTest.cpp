#include "host/image/SampleRange.h"

#include "tests/support/reading/FileSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Floats in memory as a picture.
class FloatSource final : public SampleSource {
public:
    FloatSource(size_t width, std::vector<double> samples) : samples_(std::move(samples)) {
        facts_.layout.width = width;
        facts_.layout.height = samples_.size() / width;
        facts_.layout.bands = 1;
        facts_.layout.type = SampleType::Float64;
    }

    ImageFacts const& facts() const override { return facts_; }
    void read(Region const& region, std::uint8_t* samples) override {
        auto const* const from = reinterpret_cast<std::uint8_t const*>(&samples_[region.y * facts_.layout.width]);
        std::copy_n(from, region.height * facts_.layout.rowBytes(), samples);
    }

private:
    ImageFacts facts_;
    std::vector<double> samples_;
};

std::optional<SampleRange> extremes(std::vector<double> const& samples, size_t width = 1) {
    FloatSource source(width, samples);
    return samplerange::extremes(source, {0}, {});
}

} // namespace

TEST(SampleRangeTest, TheEndsAreBlackAndWhiteAndWhatLiesBeyondIsToo) {
    SampleRange const range{-2.5, 7.5};
    EXPECT_EQ(range.scaled(-2.5), 0);
    EXPECT_EQ(range.scaled(7.5), 65535);
    EXPECT_EQ(range.scaled(2.5), 32768) << "32767.5 rounds up";
    for (double const below : {-2.6, -1e300, -kInfinity})
        EXPECT_EQ(range.scaled(below), 0) << below;
    for (double const above : {7.6, 1e300, 1.7e308, kInfinity})
        EXPECT_EQ(range.scaled(above), 65535) << above;
    EXPECT_EQ(range.scaled(kNone), 0);
}

TEST(SampleRangeTest, NumbersAreRoundedToTheNearestAndHalvesUp) {
    SampleRange const same{0, 65535};
    for (int i = 0; i <= 65535; ++i)
        ASSERT_EQ(same.scaled(i), i);
    EXPECT_EQ(same.scaled(0.5), 1);
    EXPECT_EQ(same.scaled(1.5), 2);
    EXPECT_EQ(same.scaled(0.49999999999999994), 0) << "the largest number below a half";
    EXPECT_EQ(same.scaled(65534.5), 65535);
    EXPECT_EQ(same.scaled(65534.499), 65534);
}

TEST(SampleRangeTest, WholeNumbersOfAnyRangeAreAsExactAsIntegers) {
    std::mt19937_64 random(5);
    for (int i = 0; i < 200000; ++i) {
        auto const number = [&] { return static_cast<std::int64_t>(random() >> 31) - (std::int64_t{1} << 32); };
        std::int64_t low = number();
        std::int64_t high = number();
        if (low == high) continue;
        if (low > high) std::swap(low, high);
        // Near a half where there is one.
        std::int64_t const value =
            low + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(high - low + 1));
        __extension__ using Wide = __int128;
        Wide const span = high - low;
        auto const expected = static_cast<std::uint16_t>((Wide{2} * 65535 * (value - low) + span) / (2 * span));
        ASSERT_EQ((SampleRange{static_cast<double>(low), static_cast<double>(high)}.scaled(static_cast<double>(value))),
                  expected)
            << value << " in " << low << " to " << high;
    }
}

TEST(SampleRangeTest, TheRangeOfAllCodesKeepsWholeNumbers) {
    SampleRange const range{0, 65535};
    for (unsigned code = 0; code <= 65535; ++code)
        ASSERT_EQ(range.scaled(code), code);
}

TEST(SampleRangeTest, TheFarthestRangeHolds) {
    SampleRange const range{-SampleRange::kFarthest, SampleRange::kFarthest};
    EXPECT_EQ(range.scaled(-SampleRange::kFarthest), 0);
    EXPECT_EQ(range.scaled(0), 32768);
    EXPECT_EQ(range.scaled(SampleRange::kFarthest), 65535);
}

TEST(SampleRangeTest, ExtremesAreThoseOfFiniteSamples) {
    auto const found = extremes({3, -7, kInfinity, kNone, 5, -kInfinity});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->low, -7);
    EXPECT_EQ(found->high, 5);
    EXPECT_FALSE(extremes({kNone, kInfinity}));
    auto const one = extremes({4});
    ASSERT_TRUE(one);
    EXPECT_EQ(one->low, 4);
    EXPECT_EQ(one->high, 4);
}

// More than is read at once.
TEST(SampleRangeTest, ExtremesAreThoseOfTheWholePictureAndTheCheckMayStopIt) {
    size_t const rows = 1300;
    std::vector<double> samples(1000 * rows, 1.0);
    samples.front() = -3;
    samples.back() = 9;
    auto const found = extremes(samples, 1000);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->low, -3);
    EXPECT_EQ(found->high, 9);
    FloatSource source(1000, samples);
    int calls = 0;
    auto const stop = [&] {
        if (++calls == 2) throw std::runtime_error("stopped");
    };
    EXPECT_THROW(samplerange::extremes(source, {0}, stop), std::runtime_error);
    EXPECT_EQ(calls, 2);
}

TEST(SampleRangeTest, AnAutomaticRangeOfOneValueStartsThere) {
    EXPECT_EQ(samplerange::automatic({2, 3}).low, 2);
    EXPECT_EQ(samplerange::automatic({2, 3}).high, 3);
    for (double const value : {0.0, 0.25, -7.0, 1e20, -1e300, 1e300}) {
        SampleRange const range = samplerange::automatic({value, value});
        EXPECT_EQ(range.low, value);
        EXPECT_GT(range.high, value);
        EXPECT_EQ(range.scaled(value), 0);
        EXPECT_TRUE(std::isfinite(65535 * (range.high - range.low)));
    }
}
