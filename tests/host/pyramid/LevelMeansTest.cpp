// Means worked by hand.
#include "host/pyramid/LevelMeans.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

template <class Sample>
constexpr SampleType typeOf() {
    if constexpr (std::is_same_v<Sample, std::uint8_t>) return SampleType::Unsigned8;
    if constexpr (std::is_same_v<Sample, std::int8_t>) return SampleType::Signed8;
    if constexpr (std::is_same_v<Sample, std::uint16_t>) return SampleType::Unsigned16;
    if constexpr (std::is_same_v<Sample, std::int16_t>) return SampleType::Signed16;
    if constexpr (std::is_same_v<Sample, std::uint32_t>) return SampleType::Unsigned32;
    if constexpr (std::is_same_v<Sample, std::int32_t>) return SampleType::Signed32;
    if constexpr (std::is_same_v<Sample, float>) return SampleType::Float32;
    return SampleType::Float64;
}

// The mean of all pixels of one row.
template <class Sample>
std::vector<Sample> mean(std::vector<Sample> const& row, size_t bands = 1, bool alpha = false,
                         std::optional<double> nodata = {}) {
    SampleFormat layout;
    layout.type = typeOf<Sample>();
    layout.bands = bands;
    layout.colours = alpha ? bands - 1 : bands;
    layout.alpha = alpha;
    auto const means = LevelMeans::of(layout, alpha, nodata);
    means->start(1);
    means->add(reinterpret_cast<std::uint8_t const*>(row.data()), {{0, row.size() / bands}});
    std::vector<Sample> made(bands);
    means->finish(reinterpret_cast<std::uint8_t*>(made.data()));
    return made;
}

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

} // namespace

TEST(LevelMeansTest, WholeNumbersAreRoundedHalvesUp) {
    EXPECT_EQ(mean<std::uint8_t>({0, 1}), (std::vector<std::uint8_t>{1}));
    EXPECT_EQ(mean<std::uint8_t>({0, 0, 1}), (std::vector<std::uint8_t>{0}));
    EXPECT_EQ(mean<std::uint8_t>({255, 254}), (std::vector<std::uint8_t>{255}));
    EXPECT_EQ(mean<std::int8_t>({-1, 0}), (std::vector<std::int8_t>{0}));
    EXPECT_EQ(mean<std::int8_t>({-1, -2}), (std::vector<std::int8_t>{-1}));
    EXPECT_EQ(mean<std::int8_t>({-128, -128, -127}), (std::vector<std::int8_t>{-128}));
    EXPECT_EQ(mean<std::int16_t>({-32768, 32767, 0}), (std::vector<std::int16_t>{0}));
    EXPECT_EQ(mean<std::uint16_t>({65535, 65535}), (std::vector<std::uint16_t>{65535}));
    EXPECT_EQ(mean<std::uint32_t>({0xffffffffu, 0xfffffffeu}), (std::vector<std::uint32_t>{0xffffffffu}));
    EXPECT_EQ(mean<std::int32_t>({INT32_MIN, INT32_MIN, INT32_MAX}), (std::vector<std::int32_t>{-715827883}));
}

TEST(LevelMeansTest, FloatsAreSummedAsDoubles) {
    // As floats 16777217 and 33554434 do not exist.
    EXPECT_EQ(mean<float>({16777216, 1, 1}), (std::vector<float>{static_cast<float>(16777218.0 / 3)}));
    EXPECT_EQ(mean<double>({0.25, 0.5}), (std::vector<double>{0.375}));
    EXPECT_EQ(mean<float>({std::numeric_limits<float>::max(), std::numeric_limits<float>::max()}),
              (std::vector<float>{std::numeric_limits<float>::max()}));
}

TEST(LevelMeansTest, BandsAreApart) {
    EXPECT_EQ(mean<std::uint8_t>({1, 100, 3, 200}, 2), (std::vector<std::uint8_t>{2, 150}));
}

TEST(LevelMeansTest, AlphaWeighsColours) {
    EXPECT_EQ(mean<std::uint8_t>({200, 255, 10, 0}, 2, true), (std::vector<std::uint8_t>{200, 128}));
    // (200 * 100 + 100 * 50) / 150 = 166.7
    EXPECT_EQ(mean<std::uint8_t>({200, 100, 100, 50}, 2, true), (std::vector<std::uint8_t>{167, 75}));
    // 65535 * 65535 twice, which 32 bits do not hold.
    EXPECT_EQ(mean<std::uint16_t>({65535, 65535, 65535, 65535}, 2, true), (std::vector<std::uint16_t>{65535, 65535}));
    EXPECT_EQ(mean<float>({1, 0.5F, 0, 0.25F}, 2, true), (std::vector<float>{static_cast<float>(2.0 / 3), 0.375F}));
    EXPECT_EQ(mean<std::uint32_t>({4000000000u, 3, 0, 1}, 2, true), (std::vector<std::uint32_t>{3000000000u, 2}));
    // Not of full opacity anywhere: the plain mean.
    EXPECT_EQ(mean<std::uint8_t>({10, 0, 20, 0}, 2, true), (std::vector<std::uint8_t>{15, 0}));
    EXPECT_EQ(mean<std::uint8_t>({10, 1, 7, 255, 30, 5, 9, 0}, 4, true), (std::vector<std::uint8_t>{10, 1, 7, 128}));
}

TEST(LevelMeansTest, NodataDoesNotCount) {
    EXPECT_EQ(mean<std::uint8_t>({0, 0, 9, 10}, 1, false, 0), (std::vector<std::uint8_t>{10}));
    EXPECT_EQ(mean<std::uint8_t>({0, 0}, 1, false, 0), (std::vector<std::uint8_t>{0}));
    EXPECT_EQ(mean<std::int16_t>({-9999, 4, 6, -9999}, 1, false, -9999), (std::vector<std::int16_t>{5}));
    EXPECT_EQ(mean<std::int16_t>({-9999, -9999}, 1, false, -9999), (std::vector<std::int16_t>{-9999}));
    // Per band.
    EXPECT_EQ(mean<std::uint8_t>({7, 1, 3, 7}, 2, false, 7), (std::vector<std::uint8_t>{3, 1}));
    // A number that no sample can have excludes none.
    EXPECT_EQ(mean<std::uint8_t>({0, 255}, 1, false, -1), (std::vector<std::uint8_t>{128}));
    EXPECT_EQ(mean<std::uint8_t>({0, 255}, 1, false, 0.5), (std::vector<std::uint8_t>{128}));
    // Alpha is a weight, whatever its value.
    EXPECT_EQ(mean<std::uint8_t>({100, 0, 50, 10}, 2, true, 0), (std::vector<std::uint8_t>{50, 5}));
    EXPECT_EQ(mean<std::uint8_t>({0, 200, 50, 100}, 2, true, 0), (std::vector<std::uint8_t>{50, 150}));
}

TEST(LevelMeansTest, FloatsThatAreNoNumbersDoNotCount) {
    EXPECT_EQ(mean<float>({kNan, 2, 4}), (std::vector<float>{3}));
    EXPECT_TRUE(std::isnan(mean<float>({kNan, kNan})[0]));
    EXPECT_EQ(mean<float>({kNan, -1, kNan}, 1, false, -1), (std::vector<float>{-1}));
    EXPECT_TRUE(std::isnan(mean<float>({kNan, kNan}, 1, false, std::nan(""))[0]));
    EXPECT_EQ(mean<float>({kNan, 5}, 1, false, std::nan("")), (std::vector<float>{5}));
    // Neither a weight that is no number.
    EXPECT_EQ(mean<float>({8, kNan, 4, 1}, 2, true), (std::vector<float>{4, 1}));
}

TEST(LevelMeansTest, RowsAndPixelsAddUp) {
    SampleFormat layout;
    layout.bands = 1;
    auto const means = LevelMeans::of(layout, false, {});
    std::vector<std::uint8_t> const upper{1, 2, 3, 4};
    std::vector<std::uint8_t> const lower{5, 6, 7, 9};
    for (int i = 0; i < 2; ++i) {
        means->start(2);
        means->add(upper.data(), {{0, 2}, {1, 3}});
        means->add(lower.data(), {{0, 2}, {1, 3}});
        std::vector<std::uint8_t> made(2);
        means->finish(made.data());
        EXPECT_EQ(made, (std::vector<std::uint8_t>{4, 5})); // 14 / 4 = 3.5; 31 / 6 = 5.17
    }
}
