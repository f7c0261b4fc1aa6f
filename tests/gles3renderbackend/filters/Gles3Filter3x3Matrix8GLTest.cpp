#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/ColourMatrix.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/LongRun.h"
#include "tests/support/PixelMatchers.h"

#include <random>

namespace {

using namespace filtertest;
using backendtest::failureOf;
using reference::Matrix3;
using reference::matrix8;

constexpr Matrix3 kIdentity = {1024, 0, 0, 0, 1024, 0, 0, 0, 1024};
constexpr Matrix3 kWarm = {1300, 20, -60, -200, 1050, 90, -76, -46, 994};

Filter3x3MatrixParams times(Matrix3 const& matrix, double strength = 1.0) {
    Filter3x3MatrixParams params;
    params.matrix = matrix;
    params.scale = strength;
    return params;
}

class Gles3Filter3x3Matrix8GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult multiplies(Texels const& image, Matrix3 const& matrix, double strength = 1.0) {
        return rig.gives(description::filter3x3Matrix8(), {rig.uploaded(image, Layout::kRgba8)},
                         matrix8(image, matrix, strength), Layout::kRgba8, times(matrix, strength));
    }
};

Texels opaque(Texels texels) {
    for (size_t i = 3; i < texels.bytes.size(); i += 4)
        texels.bytes[i] = 255;
    return texels;
}

TEST_F(Gles3Filter3x3Matrix8GLTest, IdentityLeavesColoursUnchangedAndMakesAlpha255) {
    Texels const image = randomColours(1);
    EXPECT_TRUE(rig.gives(description::filter3x3Matrix8(), {rig.uploaded(image, Layout::kRgba8)}, opaque(image),
                          Layout::kRgba8, times(kIdentity)));
}

TEST_F(Gles3Filter3x3Matrix8GLTest, IdentityIsWhatTheRecordStartsWith) {
    Texels const image = randomTexels(16, 16, 2);
    EXPECT_TRUE(rig.gives(description::filter3x3Matrix8(), {rig.uploaded(image, Layout::kRgba8)}, opaque(image),
                          Layout::kRgba8, Filter3x3MatrixParams()));
}

TEST_F(Gles3Filter3x3Matrix8GLTest, ColoursAreExactForAColourMatrix) {
    EXPECT_TRUE(multiplies(randomColours(3), kWarm));
    EXPECT_TRUE(multiplies(randomColours(4), kWarm, 0.37));
}

TEST_F(Gles3Filter3x3Matrix8GLTest, EveryColourIsExactForAColourMatrix) {
    if (!isLongRun()) GTEST_SKIP() << "all 2^24 colours: VELMORA_LONG is not set";
    Filter const filter = rig.instantiated(description::filter3x3Matrix8());
    size_t const destination = rig.target(Layout::kRgba8, 256, 256);
    for (std::uint32_t part = 0; part < kColourParts; ++part) {
        size_t const source = rig.uploaded(colours(part), Layout::kRgba8);
        rig.run(filter, {{{source, 0, 0, false}}, 256, 256}, destination, times(kWarm));
        ASSERT_TRUE(pixelsEqual(rig.read(destination).bytes, matrix8(colours(part), kWarm, 1.0).bytes, 256)) << part;
        rig.instance()->eraseTarget(source);
    }
}

// Odd colours at half strength end in one half, which is rounded up on every implementation.
TEST_F(Gles3Filter3x3Matrix8GLTest, TiesAreRoundedUp) {
    EXPECT_TRUE(multiplies(randomColours(5), {512, 0, 0, 0, 512, 0, 0, 0, 512}));
    EXPECT_TRUE(multiplies(randomColours(6), {512, 512, -512, 256, -256, 1536, 768, 256, 512}));
    EXPECT_TRUE(rig.gives(description::filter3x3Matrix8(),
                          {rig.uploaded(Texels(2, 1, {1, 3, 5, 7, 255, 253, 251, 0}), Layout::kRgba8)},
                          Texels(2, 1, {1, 2, 3, 255, 128, 127, 126, 255}), Layout::kRgba8, times(kIdentity, 0.5)));
}

// Coefficients 0 to 2 are what red adds to red, green and blue.
TEST_F(Gles3Filter3x3Matrix8GLTest, MatrixIsReadColumnByColumn) {
    Matrix3 const matrix = {1024, 512, 256, 0, 1024, 0, 2048, 0, 1024};
    EXPECT_TRUE(rig.gives(description::filter3x3Matrix8(),
                          {rig.uploaded(Texels(3, 1, {100, 0, 0, 0, 0, 100, 0, 0, 0, 0, 100, 0}), Layout::kRgba8)},
                          Texels(3, 1, {100, 50, 25, 255, 0, 100, 0, 255, 200, 0, 100, 255}), Layout::kRgba8,
                          times(matrix)));
}

TEST_F(Gles3Filter3x3Matrix8GLTest, SumsAreClampedToBytes) {
    EXPECT_TRUE(multiplies(randomColours(7), {-1024, 0, 2048, 0, 3000, 2048, 1024, -5000, 2048}));
}

TEST_F(Gles3Filter3x3Matrix8GLTest, RandomMatricesAreExact) {
    std::mt19937 random(8);
    Texels const image = randomTexels(64, 48, 9);
    for (int i = 0; i < 24; ++i) {
        auto const range = static_cast<std::int32_t>(i < 12 ? 1200 : 20000);
        Matrix3 matrix{};
        for (auto& coefficient : matrix)
            coefficient = static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(2 * range)) - range;
        EXPECT_TRUE(multiplies(image, matrix)) << i;
        EXPECT_TRUE(multiplies(image, matrix, -0.77)) << i;
    }
}

TEST_F(Gles3Filter3x3Matrix8GLTest, HalfStrengthHalvesEveryCoefficientWithRounding) {
    Texels const image = randomTexels(64, 16, 10);
    Texels const expected = matrix8(image, {512, 2, -1, 100, 512, 0, 1, -7, 600}, 1.0);
    EXPECT_TRUE(rig.gives(description::filter3x3Matrix8(), {rig.uploaded(image, Layout::kRgba8)}, expected,
                          Layout::kRgba8, times({1024, 3, -3, 200, 1023, 0, 1, -15, 1200}, 0.5)));
}

TEST_F(Gles3Filter3x3Matrix8GLTest, PartsLandAnywhere) {
    Texels const image = randomTexels(31, 17, 11);
    size_t const source = rig.uploaded(image, Layout::kRgba8);
    struct Row {
        size_t x;
        std::array<size_t, 4> clip;
        std::array<size_t, 2> offset;
    };
    for (auto const& row :
         {Row{0, {0, 0, 0, 0}, {1, 1}}, Row{5, {1, 0, 0, 2}, {3, 0}}, Row{14, {4, 3, 5, 1}, {2, 5}}}) {
        FilterRun const run{
            {{source, row.x, 2, false}}, 15, 13, row.clip[0], row.clip[1], row.clip[2], row.clip[3], row.offset};
        Texels const kept = reference::cropped(
            image, static_cast<int>(row.x + row.clip[0]), static_cast<int>(2 + row.clip[2]),
            static_cast<int>(15 - row.clip[0] - row.clip[1]), static_cast<int>(13 - row.clip[2] - row.clip[3]));
        EXPECT_TRUE(rig.givesWithin(description::filter3x3Matrix8(), run, matrix8(kept, kWarm, 1.0), Layout::kRgba8,
                                    times(kWarm)));
    }
}

TEST_F(Gles3Filter3x3Matrix8GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(multiplies(randomTexels(texels, 2, 12), kWarm)) << texels;
}

TEST_F(Gles3Filter3x3Matrix8GLTest, RecordOfAnotherFilterIsRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(4, 4, 1);
    size_t const destination = rig.uploaded(noise, Layout::kRgba8);
    FilterRun const run{{{rig.uploaded(randomTexels(4, 4, 2), Layout::kRgba8), 0, 0, false}}, 4, 4};
    Filter const filter = rig.instantiated(description::filter3x3Matrix8());
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, FilterClaheParams()); }),
              "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 4));
}

} // namespace
