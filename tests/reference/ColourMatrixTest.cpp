#include "reference/ColourMatrix.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

using namespace reference;

constexpr Matrix3 kIdentity{1024, 0, 0, 0, 1024, 0, 0, 0, 1024};

TEST(ColourMatrixTest, StrengthHalvesEveryCoefficientWithRounding) {
    EXPECT_EQ(scaledMatrix({1024, 3, -3, 1, -1, 0, 2, -2, -1024}, 0.5), (Matrix3{512, 2, -1, 1, 0, 0, 1, -1, -512}));
}

TEST(ColourMatrixTest, StrengthItselfIsRoundedHalfAwayFromZero) {
    double const halfStep = 0.5 / 1024;
    EXPECT_EQ(scaledMatrix(kIdentity, halfStep)[0], 1);
    EXPECT_EQ(scaledMatrix(kIdentity, -halfStep)[0], -1);
    EXPECT_EQ(scaledMatrix(kIdentity, 0.49 / 1024)[0], 0);
}

TEST(ColourMatrixTest, ScalingWrapsIn32Bits) {
    EXPECT_EQ(scaledMatrix({1 << 22, 0, 0, 0, 0, 0, 0, 0, 0}, 1.0)[0], 0);
    // 2^21 * 1024 = 2^31 wraps to -2^31; (-2^31 + 512) >> 10 = -2^21
    EXPECT_EQ(scaledMatrix({1 << 21, 0, 0, 0, 0, 0, 0, 0, 0}, 1.0)[0], -(1 << 21));
}

TEST(ColourMatrixTest, IdentityLeavesBytesAndSetsAlpha) {
    Texels image(64, 4);
    std::iota(image.bytes.begin(), image.bytes.end(), std::uint8_t{0});
    Texels const out = matrix8(image, kIdentity, 1.0);
    for (size_t i = 0; i < image.bytes.size(); ++i) {
        ASSERT_EQ(out.bytes[i], i % 4 == 3 ? 255 : image.bytes[i]) << i;
    }
}

TEST(ColourMatrixTest, CoefficientsAreColumnByColumn) {
    Matrix3 const redToGreenToBlueToRed{0, 1024, 0, 0, 0, 1024, 1024, 0, 0};
    EXPECT_EQ(matrix8(Texels(1, 1, {10, 20, 30, 40}), redToGreenToBlueToRed, 1.0), Texels(1, 1, {30, 10, 20, 255}));
    EXPECT_EQ(matrixTimes(redToGreenToBlueToRed, {10, 20, 30}), (std::array<std::int64_t, 3>{30, 10, 20}));
}

// floor(1 * 0.5 + 0.5) = 1, floor(3 * -0.5 + 0.5) = -1 clamped, 255 + 128 clamped
TEST(ColourMatrixTest, TiesOfBytesGoUpAndResultsAreClamped) {
    EXPECT_EQ(matrix8(Texels(1, 1, {1, 3, 255, 0}), {512, -512, 0, 0, 0, 0, 0, 0, 1536}, 1.0),
              Texels(1, 1, {1, 0, 255, 255}));
    // -1.5 + 2 = 0.5 goes up as well: the sum is rounded, not its parts.
    EXPECT_EQ(matrix8(Texels(1, 1, {3, 2, 0, 0}), {-512, 0, 0, 1024, 0, 0, 0, 0, 0}, 1.0),
              Texels(1, 1, {1, 0, 0, 255}));
}

TEST(ColourMatrixTest, TiesOfSixteenBitsGoAwayFromZero) {
    Matrix3 const half{512, 0, 0, 0, 512, 0, 0, 0, 512};
    EXPECT_EQ(matrixTimes(half, {1, -1, 3}), (std::array<std::int64_t, 3>{1, -1, 2}));
    EXPECT_EQ(matrixTimes(half, {-3, 2, -2}), (std::array<std::int64_t, 3>{-2, 1, -1}));
    Matrix3 const below{511, 0, 0, 0, 511, 0, 0, 0, 511};
    EXPECT_EQ(matrixTimes(below, {1, -1, 0}), (std::array<std::int64_t, 3>{0, 0, 0}));
}

TEST(ColourMatrixTest, IdentityLeavesEverySixteenBitValue) {
    Plane plane(256, 256);
    std::iota(plane.samples.begin(), plane.samples.end(), -32768);
    Texels const image = packThreeChannel16({plane, plane, plane});
    EXPECT_EQ(matrix16(image, kIdentity, 1.0), image);
}

// 1000 * 2 - 300 * 0.5 + 7 * 0 = 1850; -1000 + 300 / 1024 (0.29) = -999.7; 7 * 7.999 = 55.99
TEST(ColourMatrixTest, SixteenBitSumsWorkedByHand) {
    Matrix3 const matrix{2048, -1024, 0, -512, 1, 0, 0, 0, 8191};
    Texels const image = packThreeChannel16({Plane(1, 1, {1000}), Plane(1, 1, {300}), Plane(1, 1, {7})});
    EXPECT_EQ(matrix16(image, matrix, 1.0),
              packThreeChannel16({Plane(1, 1, {1850}), Plane(1, 1, {-1000}), Plane(1, 1, {56})}));
}

} // namespace
