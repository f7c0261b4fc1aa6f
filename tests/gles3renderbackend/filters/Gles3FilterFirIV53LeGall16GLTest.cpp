#include "host/FilterDescriptions.h"
#include "reference/LeGall53Plane.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"

#include <set>

namespace {

using namespace filtertest;
using reference::inverseFilter53Vertical;
using reference::packOneChannel16;
using reference::Plane;

using Rows = std::set<int>;

// The step with its first rows declared invalid, as a host does that reads them elsewhere.
Filter withoutFirstRows(size_t rows) {
    return Filter("FilterFirIV53LeGall16", 0, 0, rows, 4, 0, 1, 0, 1, 1, 1, 2, 1, 2, 16, 16, 1, 1, 1, 1, 1, 1,
                  {true, true}, true, 16, RenderBackend::NEAREST);
}

class Gles3FilterFirIV53LeGall16GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult reconstructs(Plane const& low, Plane const& high) {
        return rig.gives(description::filterFirIV53LeGall16(), {rig.uploaded(low), rig.uploaded(high)},
                         packOneChannel16(inverseFilter53Vertical(low, high)), Layout::kOneChannel16);
    }

    // Runs over a part of the bands; y and height in band samples. The first `invalidTop` rows are left out.
    ::testing::AssertionResult reconstructsPart(size_t y, size_t height, size_t invalidTop,
                                                std::array<size_t, 4> const& clip,
                                                std::array<size_t, 2> const& offset) {
        Plane const low = randomPlane(20, 19, 1);
        Plane const high = randomPlane(20, 19, 2);
        size_t const x = 4;
        size_t const width = 14;
        auto const part = [&](Plane const& band) {
            return cropped(band, static_cast<int>(x), static_cast<int>(y), static_cast<int>(width),
                           static_cast<int>(height));
        };
        Plane const whole = inverseFilter53Vertical(part(low), part(high));
        int const top = static_cast<int>(invalidTop + clip[2]);
        Plane const kept =
            cropped(whole, static_cast<int>(clip[0]), top, whole.width - static_cast<int>(clip[0] + clip[1]),
                    whole.height - top - static_cast<int>(clip[3]));
        FilterRun const run{{{rig.uploaded(low), x, y, false}, {rig.uploaded(high), x, y, false}},
                            width,
                            height,
                            clip[0],
                            clip[1],
                            clip[2],
                            clip[3],
                            offset};
        return rig.givesWithin(withoutFirstRows(invalidTop), run, packOneChannel16(kept), Layout::kOneChannel16);
    }

    // The output rows that change when one row of one band does.
    Rows rowsThatFollow(bool lowBand, int row) {
        Plane low(2, 6);
        Plane high(2, 6);
        (lowBand ? low : high).at(0, row) = 1000;
        size_t const destination = rig.target(Layout::kOneChannel16, 1, 8);
        FilterRun const run{{{rig.uploaded(low), 0, 0, false}, {rig.uploaded(high), 0, 0, false}}, 2, 6};
        rig.run(rig.instantiated(description::filterFirIV53LeGall16()), run, destination);
        Plane const samples = unpackOneChannel16(rig.read(destination));
        Rows rows;
        for (int y = 0; y < samples.height; ++y) {
            if (samples.at(0, y) != 0) rows.insert(y);
            EXPECT_EQ(samples.at(1, y), 0) << "the column beside it";
        }
        return rows;
    }
};

TEST_F(Gles3FilterFirIV53LeGall16GLTest, SamplesComeAndGoInPairs) {
    Filter const filter = rig.instantiated(description::filterFirIV53LeGall16());
    EXPECT_EQ(filter.alignXIn(), 2U);
    EXPECT_EQ(filter.alignXOut(), 2U);
    EXPECT_EQ(filter.effectiveAlignX(), 2U);
    EXPECT_EQ(filter.alignYIn(), 1U);
    EXPECT_EQ(filter.alignYOut(), 1U);
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, EveryLowSampleIsExact) {
    EXPECT_TRUE(reconstructs(everySample(), randomPlane(256, 256, 3, -600, 600)));
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, EveryHighSampleIsExact) {
    EXPECT_TRUE(reconstructs(randomPlane(256, 256, 4, -600, 600), everySample()));
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, SumsBeyondSixteenBitsLeaveAsTheTargetClampsThem) {
    EXPECT_TRUE(reconstructs(randomPlane(64, 31, 5), randomPlane(64, 31, 6)));
    EXPECT_TRUE(reconstructs(boundaryPlane(64, 31, 7), boundaryPlane(64, 31, 8)));
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, ZeroHighBandDoublesTheRowsAndRoundsDown) {
    Plane const low(2, 4, {-1, 5, 0, 6, -300, 7, -301, 7});
    size_t const destination = rig.target(Layout::kOneChannel16, 1, 4);
    FilterRun const run{{{rig.uploaded(low), 0, 0, false}, {rig.uploaded(Plane(2, 4)), 0, 0, false}}, 2, 4};
    rig.run(rig.instantiated(description::filterFirIV53LeGall16()), run, destination);
    EXPECT_EQ(unpackOneChannel16(rig.read(destination)).samples,
              (std::vector<std::int32_t>{-1, 5, -1, 5, 0, 6, -150, 6}));
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, NegativeSamplesLeaveAsTwosComplement) {
    size_t const destination = rig.target(Layout::kOneChannel16, 1, 2);
    Plane const low(2, 3, {-300, -300, -300, -300, -300, -300});
    FilterRun const run{{{rig.uploaded(low), 0, 0, false}, {rig.uploaded(Plane(2, 3)), 0, 0, false}}, 2, 3};
    rig.run(rig.instantiated(description::filterFirIV53LeGall16()), run, destination);
    EXPECT_EQ(rig.read(destination).bytes, (std::vector<std::uint8_t>{212, 254, 212, 254, 212, 254, 212, 254}));
}

// floor((-3 + 2) / 4) is -1, so one more is left of the low sample.
TEST_F(Gles3FilterFirIV53LeGall16GLTest, PredictionRoundsDown) {
    Plane const low(2, 3, {10, 0, 10, 0, 10, 0});
    Plane const high(2, 3, {-1, 0, -2, 0, -1, 0});
    size_t const destination = rig.target(Layout::kOneChannel16, 1, 2);
    FilterRun const run{{{rig.uploaded(low), 0, 0, false}, {rig.uploaded(high), 0, 0, false}}, 2, 3};
    rig.run(rig.instantiated(description::filterFirIV53LeGall16()), run, destination);
    EXPECT_EQ(unpackOneChannel16(rig.read(destination)).samples, (std::vector<std::int32_t>{11, 0, 9, 0}));
}

// Even rows read one low and two high rows, odd ones two low and three high rows.
TEST_F(Gles3FilterFirIV53LeGall16GLTest, OddRowsReadThreeHighRowsAndTwoLowRows) {
    EXPECT_EQ(rowsThatFollow(true, 2), (Rows{3, 4, 5}));
    EXPECT_EQ(rowsThatFollow(false, 2), (Rows{1, 2, 3, 4, 5}));
    EXPECT_EQ(rowsThatFollow(false, 5), (Rows{7})) << "the last row that the last output needs";
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, OutputStartsAtAnEvenRowWhateverTheSourceRow) {
    EXPECT_TRUE(reconstructsPart(0, 19, 0, {0, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(reconstructsPart(1, 18, 0, {0, 0, 0, 0}, {3, 2}));
    EXPECT_TRUE(reconstructsPart(6, 9, 0, {0, 0, 0, 0}, {0, 4}));
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, OddBorderAtTheTopGoesWithAnOddOffset) {
    EXPECT_TRUE(reconstructsPart(0, 12, 1, {0, 0, 0, 0}, {0, 1}));
    EXPECT_TRUE(reconstructsPart(3, 12, 3, {0, 0, 0, 0}, {1, 5}));
    EXPECT_TRUE(reconstructsPart(3, 12, 2, {0, 0, 0, 0}, {1, 0}));
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, ClipsOfAnOddNumberOfRowsKeepTheRowsInPlace) {
    EXPECT_TRUE(reconstructsPart(0, 12, 0, {0, 0, 1, 0}, {0, 0}));
    EXPECT_TRUE(reconstructsPart(2, 12, 0, {2, 4, 3, 1}, {1, 2}));
    EXPECT_TRUE(reconstructsPart(2, 12, 1, {4, 2, 1, 2}, {0, 3}));
}

// High rows that start one sample before the low ones may lie in one texture with the others, as another source row.
TEST_F(Gles3FilterFirIV53LeGall16GLTest, HighBandMayStartOneRowUpBySourceRow) {
    Plane const low = randomPlane(8, 12, 9);
    Plane const high = randomPlane(8, 12, 10);
    FilterRun const run{{{rig.uploaded(low), 0, 3, false}, {rig.uploaded(high), 0, 2, false}}, 8, 9};
    Plane const expected = inverseFilter53Vertical(cropped(low, 0, 3, 8, 9), cropped(high, 0, 2, 8, 9));
    EXPECT_TRUE(
        rig.givesWithin(description::filterFirIV53LeGall16(), run, packOneChannel16(expected), Layout::kOneChannel16));
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, BandsMayLieAnywhereInTexturesOfDifferentSizes) {
    Plane const low = randomPlane(8, 12, 11);
    Plane const high = randomPlane(22, 70, 12);
    FilterRun const run{{{rig.uploaded(low), 2, 3, false}, {rig.uploaded(high), 8, 41, false}}, 6, 9};
    Plane const expected = inverseFilter53Vertical(cropped(low, 2, 3, 6, 9), cropped(high, 8, 41, 6, 9));
    EXPECT_TRUE(
        rig.givesWithin(description::filterFirIV53LeGall16(), run, packOneChannel16(expected), Layout::kOneChannel16));
}

TEST_F(Gles3FilterFirIV53LeGall16GLTest, HighestAndWidestTargetsAreExact) {
    for (int const rows : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(reconstructs(randomPlane(4, rows / 2 + 2, 13), randomPlane(4, rows / 2 + 2, 14))) << rows;
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(reconstructs(randomPlane(2 * texels, 3, 15), randomPlane(2 * texels, 3, 16))) << texels;
}

} // namespace
