#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/ColourMatrix.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

#include <algorithm>
#include <random>

namespace {

using namespace filtertest;
using backendtest::failureOf;
using reference::matrix16;
using reference::Matrix3;
using reference::packThreeChannel16;
using reference::Plane;
using reference::Planes3;

constexpr Matrix3 kIdentity = {1024, 0, 0, 0, 1024, 0, 0, 0, 1024};
constexpr Matrix3 kWarm = {1300, 20, -60, -200, 1050, 90, -76, -46, 994};

Filter3x3MatrixParams times(Matrix3 const& matrix, double strength = 1.0) {
    Filter3x3MatrixParams params;
    params.matrix = matrix;
    params.scale = strength;
    return params;
}

class Gles3Filter3x3Matrix16GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult multiplies(Texels const& texels, Matrix3 const& matrix, double strength = 1.0) {
        return rig.gives(description::filter3x3Matrix16(), {rig.uploaded(texels, Layout::kThreeChannel16)},
                         matrix16(texels, matrix, strength), Layout::kThreeChannel16, times(matrix, strength));
    }

    ::testing::AssertionResult multiplies(Planes3 const& pixels, Matrix3 const& matrix, double strength = 1.0) {
        return multiplies(packThreeChannel16(pixels), matrix, strength);
    }
};

TEST_F(Gles3Filter3x3Matrix16GLTest, IdentityLeavesEverySampleUnchanged) {
    for (size_t channel = 0; channel < 3; ++channel) {
        Texels const texels = packThreeChannel16(everySampleOfChannel(channel, 1));
        EXPECT_TRUE(rig.gives(description::filter3x3Matrix16(), {rig.uploaded(texels, Layout::kThreeChannel16)}, texels,
                              Layout::kThreeChannel16, times(kIdentity)))
            << channel;
    }
    Texels const boundaries = packThreeChannel16(boundaryTriples());
    EXPECT_TRUE(rig.gives(description::filter3x3Matrix16(), {rig.uploaded(boundaries, Layout::kThreeChannel16)},
                          boundaries, Layout::kThreeChannel16, Filter3x3MatrixParams()));
}

// Rows of coefficients that keep every sum of three samples within 16384.
TEST_F(Gles3Filter3x3Matrix16GLTest, EverySampleIsExactForMatricesOfEitherSign) {
    Planes3 const pixels = everySampleThrice();
    for (Matrix3 const& matrix : {Matrix3{170, -1, 100, -171, 255, -200, 150, 256, 211},
                                  {-512, 0, 1, 0, 511, 0, 0, 1, -510},
                                  {1, 2, 3, 4, 5, 6, 7, 8, 9},
                                  {-1, -1, -1, -1, -1, -1, -1, -1, -1}}) {
        EXPECT_TRUE(multiplies(pixels, matrix)) << matrix[0];
    }
}

TEST_F(Gles3Filter3x3Matrix16GLTest, ColourMatrixIsExactForSamplesOfThirteenBitsAndASign) {
    Planes3 const pixels = randomPlanes(250, 120, 3, -8192, 8191);
    EXPECT_TRUE(multiplies(pixels, kWarm));
    EXPECT_TRUE(multiplies(pixels, kWarm, 0.37));
    EXPECT_TRUE(multiplies(pixels, kWarm, -1.0));
}

TEST_F(Gles3Filter3x3Matrix16GLTest, BoundariesAreExact) {
    EXPECT_TRUE(multiplies(boundaryTriples(), {170, -1, 100, -171, 255, -200, 150, 256, 211}));
    EXPECT_TRUE(multiplies(boundaryTriples(), {341, -300, 0, -341, 700, 340, 341, 20, -683}));
}

// Coefficients up to 8191 with samples as large as the result allows.
TEST_F(Gles3Filter3x3Matrix16GLTest, RandomMatricesAreExact) {
    std::mt19937 random(4);
    std::uint32_t randomStart = 400;
    for (std::int32_t const range : {255, 256, 700, 2047, 4096, 8191}) {
        for (int i = 0; i < 3; ++i) {
            Matrix3 matrix{};
            for (auto& coefficient : matrix)
                coefficient = static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(2 * range + 1)) - range;
            std::int32_t const samples = std::min(32767, 16383 * 1024 / (3 * range));
            EXPECT_TRUE(multiplies(randomPlanes(96, 32, randomStart++, -samples, samples), matrix))
                << range << ", " << i;
        }
    }
}

// Rows whose magnitudes add up to 65535, on samples of all 16 bits. Most results need more than those: they leave modulo
// 2^16 down to -65536 and up to 65535, clamped beyond.
TEST_F(Gles3Filter3x3Matrix16GLTest, CoefficientsAreExactWhileARowAddsUpToLessThan65536) {
    Planes3 const pixels = everySampleThrice();
    for (Matrix3 const& matrix : {Matrix3{21845, 65535, -1, 21845, 0, 65533, 21845, 0, 1},
                                  {-21845, 0, -32768, -21845, -65535, -32767, -21845, 0, 0},
                                  {65535, -40000, 1024, 0, 20000, -1024, 0, -5535, 63487}}) {
        EXPECT_TRUE(multiplies(pixels, matrix)) << matrix[0];
        EXPECT_TRUE(multiplies(boundaryTriples(), matrix)) << matrix[0];
    }
}

TEST_F(Gles3Filter3x3Matrix16GLTest, HalvesAreRoundedAwayFromZero) {
    Planes3 const pixels = {Plane(6, 1, {1, -1, 3, -3, 2, -2}), Plane(6, 1, {5, -5, 255, -255, 257, -257}),
                            Plane(6, 1, {16383, -16383, 511, -511, 0, 1})};
    size_t const destination = rig.target(Layout::kThreeChannel16, 12, 1);
    rig.run(rig.instantiated(description::filter3x3Matrix16()), {{{rig.uploaded(pixels), 0, 0, false}}, 6, 1},
            destination, times(kIdentity, 0.5));
    Planes3 const result = unpackThreeChannel16(rig.read(destination));
    EXPECT_EQ(result[0].samples, (std::vector<std::int32_t>{1, -1, 2, -2, 1, -1}));
    EXPECT_EQ(result[1].samples, (std::vector<std::int32_t>{3, -3, 128, -128, 129, -129}));
    EXPECT_EQ(result[2].samples, (std::vector<std::int32_t>{8192, -8192, 256, -256, 0, 1}));
}

// A quarter, one half less 1/1024, and so on: every remainder of the division, on both sides of zero.
TEST_F(Gles3Filter3x3Matrix16GLTest, EveryRemainderOfTheDivisionIsExact) {
    for (std::int32_t const coefficient : {1, -1, 3, 513, -511})
        EXPECT_TRUE(multiplies(everySampleOfChannel(0, 5), {coefficient, 0, 0, 0, 1, 0, 0, 0, 1})) << coefficient;
}

// Coefficients 0 to 2 are what the first channel adds to each of the three.
TEST_F(Gles3Filter3x3Matrix16GLTest, MatrixIsReadColumnByColumn) {
    Planes3 const pixels = {Plane(3, 1, {1000, 0, 0}), Plane(3, 1, {0, -1000, 0}), Plane(3, 1, {0, 0, 500})};
    size_t const destination = rig.target(Layout::kThreeChannel16, 6, 1);
    rig.run(rig.instantiated(description::filter3x3Matrix16()), {{{rig.uploaded(pixels), 0, 0, false}}, 3, 1},
            destination, times({1024, 512, 256, 0, 1024, -2048, 4096, 0, 1024}));
    Planes3 const result = unpackThreeChannel16(rig.read(destination));
    EXPECT_EQ(result[0].samples, (std::vector<std::int32_t>{1000, 0, 2000}));
    EXPECT_EQ(result[1].samples, (std::vector<std::int32_t>{500, -1000, 0}));
    EXPECT_EQ(result[2].samples, (std::vector<std::int32_t>{250, 2000, 500}));
}

TEST_F(Gles3Filter3x3Matrix16GLTest, HalfStrengthHalvesEveryCoefficientWithRounding) {
    Planes3 const pixels = randomPlanes(40, 20, 6, -9000, 9000);
    EXPECT_TRUE(rig.gives(description::filter3x3Matrix16(), {rig.uploaded(pixels)},
                          matrix16(packThreeChannel16(pixels), {512, 2, -1, 100, 512, 0, 1, -7, 600}, 1.0),
                          Layout::kThreeChannel16, times({1024, 3, -3, 200, 1023, 0, 1, -15, 1200}, 0.5)));
}

TEST_F(Gles3Filter3x3Matrix16GLTest, AlphaOfTheInputIsNotReadAndThatOfTheOutputIs255) {
    EXPECT_TRUE(multiplies(randomTexels(64, 12, 7), {100, 20, -30, 40, 150, 60, -70, 80, 200}));
}

TEST_F(Gles3Filter3x3Matrix16GLTest, PartsLandAtEvenTexelsWhole) {
    Planes3 const pixels = randomPlanes(27, 15, 8, -8000, 8000);
    size_t const source = rig.uploaded(pixels);
    struct Row {
        size_t x;
        std::array<size_t, 4> clip;
        std::array<size_t, 2> offset;
    };
    for (auto const& row :
         {Row{0, {0, 0, 0, 0}, {0, 0}}, Row{5, {1, 0, 0, 2}, {2, 3}}, Row{12, {4, 3, 5, 1}, {6, 1}}}) {
        FilterRun const run{
            {{source, row.x, 2, false}}, 15, 13, row.clip[0], row.clip[1], row.clip[2], row.clip[3], row.offset};
        Planes3 const kept =
            cropped(pixels, static_cast<int>(row.x + row.clip[0]), static_cast<int>(2 + row.clip[2]),
                    static_cast<int>(15 - row.clip[0] - row.clip[1]), static_cast<int>(13 - row.clip[2] - row.clip[3]));
        EXPECT_TRUE(rig.givesWithin(description::filter3x3Matrix16(), run,
                                    matrix16(packThreeChannel16(kept), kWarm, 1.0), Layout::kThreeChannel16,
                                    times(kWarm)));
    }
}

// A target of four bytes per pixel counts texels as logical pixels: a clip of one is one texel.
TEST_F(Gles3Filter3x3Matrix16GLTest, ColumnParityIsThatOfTheLayoutNotOfTheDestination) {
    Texels const texels = packThreeChannel16(randomPlanes(9, 4, 9, -8000, 8000));
    FilterRun const run{{{rig.uploaded(texels, Layout::kRgba8), 0, 0, false}}, 18, 4, 1, 0, 0, 0, {0, 0}};
    EXPECT_TRUE(rig.givesWithin(description::filter3x3Matrix16(), run,
                                reference::cropped(matrix16(texels, kWarm, 1.0), 1, 0, 17, 4), Layout::kRgba8,
                                times(kWarm)));
}

TEST_F(Gles3Filter3x3Matrix16GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(multiplies(randomPlanes(texels / 2, 2, 10, -8000, 8000), kWarm)) << texels;
}

TEST_F(Gles3Filter3x3Matrix16GLTest, RecordOfAnotherFilterIsRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(8, 4, 1);
    size_t const destination = rig.uploaded(noise, Layout::kThreeChannel16);
    FilterRun const run{{{rig.uploaded(randomPlanes(4, 4, 2)), 0, 0, false}}, 4, 4};
    Filter const filter = rig.instantiated(description::filter3x3Matrix16());
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, SingleFilterParameters()); }),
              "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 8));
}

} // namespace
