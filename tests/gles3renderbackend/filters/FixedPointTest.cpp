#include "gles3renderbackend/filters/FixedPoint.h"

#include "reference/ColourMatrix.h"
#include "renderbackend/FilterParameters.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

std::array<std::int32_t, 9> scaled(std::array<std::int32_t, 9> const& matrix, double strength) {
    Filter3x3MatrixParams params;
    params.matrix = matrix;
    params.scale = strength;
    return scaledCoefficients(params);
}

TEST(FixedPointTest, FractionsAreCutTowardZero) {
    EXPECT_EQ(toInteger(1.999), 1);
    EXPECT_EQ(toInteger(-1.999), -1);
    EXPECT_EQ(toInteger(0.9), 0);
    EXPECT_EQ(toInteger(-0.9), 0);
}

TEST(FixedPointTest, NumbersBeyondTheTypeGiveItsNearestEndAndNoNumberGivesZero) {
    EXPECT_EQ(toInteger(2147483647.5), kMax);
    EXPECT_EQ(toInteger(-2147483648.5), kMin);
    EXPECT_EQ(toInteger(1e300), kMax);
    EXPECT_EQ(toInteger(-std::numeric_limits<double>::infinity()), kMin);
    EXPECT_EQ(toInteger(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(FixedPointTest, ShiftsKeepTheSignAndRoundDown) {
    EXPECT_EQ(arithmeticShift(std::int32_t{-1}, 4), -1);
    EXPECT_EQ(arithmeticShift(std::int32_t{-33}, 4), -3);
    EXPECT_EQ(arithmeticShift(std::int32_t{33}, 4), 2);
    EXPECT_EQ(arithmeticShift(std::int64_t{-33}, 40), -1);
}

TEST(FixedPointTest, ShiftCountsWrapAtTheWidthOfTheType) {
    EXPECT_EQ(arithmeticShift(std::int32_t{64}, 33), 32);
    EXPECT_EQ(arithmeticShift(std::int32_t{64}, -31), 32);
    EXPECT_EQ(arithmeticShift(std::int64_t{64}, 65), 32);
    EXPECT_EQ(arithmeticShift(std::int64_t{64}, 33), 0);
}

TEST(FixedPointTest, HalfStrengthHalvesEveryCoefficientWithRounding) {
    EXPECT_EQ(scaled({1024, 3, -3, 1, -1, 2, -2, 0, 1023}, 0.5),
              (std::array<std::int32_t, 9>{512, 2, -1, 1, 0, 1, -1, 0, 512}));
}

TEST(FixedPointTest, StrengthIsRoundedHalfAwayFromZeroToAThousandAndTwentyFourth) {
    std::array<std::int32_t, 9> const large = {1024, -1024, 1 << 20, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(scaled(large, 1.5 / 1024.0), (std::array<std::int32_t, 9>{2, -2, 2048, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(scaled(large, -1.5 / 1024.0), (std::array<std::int32_t, 9>{-2, 2, -2048, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(scaled(large, 0.49 / 1024.0), (std::array<std::int32_t, 9>{}));
}

// 2^21 * 1024 + 512 is 512 modulo 2^32, and 2^21 - 1 times 1024 passes the largest number.
TEST(FixedPointTest, ProductsThatDoNotFitWrapAt32Bits) {
    std::array<std::int32_t, 9> const coefficients = {1 << 22, (1 << 21) - 1, -(1 << 22), kMax, kMin, 1, 2, 3, 1 << 21};
    EXPECT_EQ(scaled(coefficients, 1.0), reference::scaledMatrix(coefficients, 1.0));
    EXPECT_EQ(scaled(coefficients, 1.0)[0], 0);
}

TEST(FixedPointTest, RandomCoefficientsAndStrengthsAgreeWithTheIntegerModel) {
    std::mt19937 random(11);
    for (int i = 0; i < 2000; ++i) {
        std::array<std::int32_t, 9> coefficients{};
        for (auto& coefficient : coefficients)
            coefficient = static_cast<std::int32_t>(random()) >> (random() % 32U);
        double const strength = (static_cast<double>(random() % 400000U) - 200000.0) / 50000.0;
        ASSERT_EQ(scaled(coefficients, strength), reference::scaledMatrix(coefficients, strength)) << strength;
    }
}

} // namespace
