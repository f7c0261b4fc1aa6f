#include "host/FilterDescriptions.h"
#include "reference/LeGall53Plane.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"

namespace {

using namespace filtertest;
using reference::inverseFilter53Horizontal;
using reference::packOneChannel16;
using reference::Plane;

class Gles3FilterFirIH53LeGall16GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult reconstructs(Plane const& low, Plane const& high) {
        return rig.gives(description::filterFirIH53LeGall16(), {rig.uploaded(low), rig.uploaded(high)},
                         packOneChannel16(inverseFilter53Horizontal(low, high)), Layout::kOneChannel16);
    }

    // Runs over a part of the bands; x and width in band samples.
    ::testing::AssertionResult reconstructsPart(size_t x, size_t width, std::array<size_t, 4> const& clip,
                                                std::array<size_t, 2> const& offset) {
        Plane const low = randomPlane(24, 9, 1);
        Plane const high = randomPlane(24, 9, 2);
        size_t const y = 2;
        size_t const height = 6;
        auto const part = [&](Plane const& band) {
            return cropped(band, static_cast<int>(x), static_cast<int>(y), static_cast<int>(width),
                           static_cast<int>(height));
        };
        Plane const whole = inverseFilter53Horizontal(part(low), part(high));
        Plane const kept = cropped(whole, static_cast<int>(clip[0]), static_cast<int>(clip[2]),
                                   whole.width - static_cast<int>(clip[0] + clip[1]),
                                   whole.height - static_cast<int>(clip[2] + clip[3]));
        FilterRun const run{{{rig.uploaded(low), x, y, false}, {rig.uploaded(high), x, y, false}},
                            width,
                            height,
                            clip[0],
                            clip[1],
                            clip[2],
                            clip[3],
                            offset};
        return rig.givesWithin(description::filterFirIH53LeGall16(), run, packOneChannel16(kept),
                               Layout::kOneChannel16);
    }
};

TEST_F(Gles3FilterFirIH53LeGall16GLTest, SamplesComeAndGoInPairs) {
    Filter const filter = rig.instantiated(description::filterFirIH53LeGall16());
    EXPECT_EQ(filter.alignXIn(), 2U);
    EXPECT_EQ(filter.alignXOut(), 2U);
    EXPECT_EQ(filter.effectiveAlignX(), 2U);
    EXPECT_EQ(filter.alignYIn(), 1U);
    EXPECT_EQ(filter.alignYOut(), 1U);
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, WiderInputStrideWinsOverTheAlignmentOfTwo) {
    Filter description("FilterFirIH53LeGall16", 0, 4, 0, 0, 0, 4, 0, 1, 2, 1, 1, 1, 2, RenderBackend::NEAREST);
    EXPECT_EQ(rig.instantiated(description).effectiveAlignX(), 4U);
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, EveryLowSampleIsExact) {
    EXPECT_TRUE(reconstructs(everySample(), randomPlane(256, 256, 3, -600, 600)));
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, EveryHighSampleIsExact) {
    EXPECT_TRUE(reconstructs(randomPlane(256, 256, 4, -600, 600), everySample()));
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, SumsBeyondSixteenBitsLeaveAsTheTargetClampsThem) {
    EXPECT_TRUE(reconstructs(randomPlane(64, 31, 5), randomPlane(64, 31, 6)));
    EXPECT_TRUE(reconstructs(boundaryPlane(64, 31, 7), boundaryPlane(64, 31, 8)));
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, ZeroHighBandDoublesTheSamplesAndRoundsDown) {
    Plane const low(6, 1, {-1, 0, 3, 4, -300, -301});
    size_t const destination = rig.target(Layout::kOneChannel16, 4, 1);
    FilterRun const run{{{rig.uploaded(low), 0, 0, false}, {rig.uploaded(Plane(6, 1)), 0, 0, false}}, 6, 1};
    rig.run(rig.instantiated(description::filterFirIH53LeGall16()), run, destination);
    Plane const expected(8, 1, {-1, -1, 0, 1, 3, 3, 4, -148});
    EXPECT_EQ(unpackOneChannel16(rig.read(destination)).samples, expected.samples);
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, NegativeSamplesLeaveAsTwosComplement) {
    Plane const low(4, 1, {-300, -300, -300, -300});
    size_t const destination = rig.target(Layout::kOneChannel16, 2, 1);
    FilterRun const run{{{rig.uploaded(low), 0, 0, false}, {rig.uploaded(Plane(4, 1)), 0, 0, false}}, 4, 1};
    rig.run(rig.instantiated(description::filterFirIH53LeGall16()), run, destination);
    EXPECT_EQ(rig.read(destination).bytes, (std::vector<std::uint8_t>{212, 254, 212, 254, 212, 254, 212, 254}));
}

// floor((-3 + 2) / 4) is -1, so one more is left of the low sample.
TEST_F(Gles3FilterFirIH53LeGall16GLTest, PredictionRoundsDown) {
    Plane const low(4, 1, {10, 10, 10, 10});
    Plane const high(4, 1, {-1, -2, -1, -2});
    size_t const destination = rig.target(Layout::kOneChannel16, 2, 1);
    FilterRun const run{{{rig.uploaded(low), 0, 0, false}, {rig.uploaded(high), 0, 0, false}}, 4, 1};
    rig.run(rig.instantiated(description::filterFirIH53LeGall16()), run, destination);
    EXPECT_EQ(unpackOneChannel16(rig.read(destination)).samples, (std::vector<std::int32_t>{11, 9, 11, 10}));
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, OddSourceColumnGoesWithAnOddOffset) {
    EXPECT_TRUE(reconstructsPart(0, 24, {0, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(reconstructsPart(1, 22, {0, 0, 0, 0}, {1, 0}));
    EXPECT_TRUE(reconstructsPart(3, 14, {0, 0, 0, 0}, {5, 3}));
    EXPECT_TRUE(reconstructsPart(2, 14, {0, 0, 0, 0}, {4, 1}));
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, OddNumberOfBandSamplesIsExactToo) {
    EXPECT_TRUE(reconstructsPart(0, 17, {0, 0, 0, 0}, {2, 0}));
    EXPECT_TRUE(reconstructsPart(5, 11, {0, 0, 0, 0}, {7, 2}));
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, ClipsOfAnOddNumberOfTexelsKeepTheColumnsInPlace) {
    EXPECT_TRUE(reconstructsPart(0, 20, {2, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(reconstructsPart(0, 20, {2, 4, 1, 3}, {2, 1}));
    EXPECT_TRUE(reconstructsPart(3, 20, {6, 2, 3, 0}, {1, 5}));
    EXPECT_TRUE(reconstructsPart(3, 20, {4, 6, 0, 1}, {3, 0}));
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, BandsMayLieAnywhereInTexturesOfDifferentSizes) {
    Plane const low = randomPlane(16, 5, 11);
    Plane const high = randomPlane(90, 7, 12);
    FilterRun const run{{{rig.uploaded(low), 2, 1, false}, {rig.uploaded(high), 50, 3, false}}, 12, 4};
    Plane const expected = inverseFilter53Horizontal(cropped(low, 2, 1, 12, 4), cropped(high, 50, 3, 12, 4));
    EXPECT_TRUE(
        rig.givesWithin(description::filterFirIH53LeGall16(), run, packOneChannel16(expected), Layout::kOneChannel16));
}

TEST_F(Gles3FilterFirIH53LeGall16GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(reconstructs(randomPlane(texels + 2, 2, 13), randomPlane(texels + 2, 2, 14))) << texels;
}

} // namespace
