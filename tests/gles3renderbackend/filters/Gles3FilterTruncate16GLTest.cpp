#include "host/FilterDescriptions.h"
#include "reference/Truncate16.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using backendtest::failureOf;
using reference::packOneChannel16;
using reference::Plane;

FilterTruncate16Params truncation(size_t bits, bool rounding) {
    FilterTruncate16Params params;
    params.shift = bits;
    params.rounding = rounding;
    return params;
}

class Gles3FilterTruncate16GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult truncates(size_t source, Plane const& samples, size_t bits, bool rounding) {
        if (everyDestination_ == 0)
            everyDestination_ = rig.target(Layout::kOneChannel16, samples.width / 2, samples.height);
        rig.run(filter_,
                {{{source, 0, 0, false}}, static_cast<size_t>(samples.width), static_cast<size_t>(samples.height)},
                everyDestination_, truncation(bits, rounding));
        Texels const expected = truncate16(packOneChannel16(samples), bits, rounding);
        return pixelsEqual(rig.read(everyDestination_).bytes, expected.bytes, static_cast<size_t>(expected.width));
    }

    std::vector<std::int32_t> truncated(std::vector<std::int32_t> const& samples, size_t bits, bool rounding) {
        auto const width = static_cast<int>(samples.size());
        size_t const destination = rig.target(Layout::kOneChannel16, width / 2, 1);
        rig.run(filter_, {{{rig.uploaded(Plane(width, 1, samples)), 0, 0, false}}, samples.size(), 1}, destination,
                truncation(bits, rounding));
        return unpackOneChannel16(rig.read(destination)).samples;
    }

    Filter filter_ = rig.instantiated(description::filterTruncate16());

private:
    size_t everyDestination_ = 0;
};

using Samples = std::vector<std::int32_t>;

TEST_F(Gles3FilterTruncate16GLTest, EverySampleIsExactAtEveryDepth) {
    size_t const source = rig.uploaded(everySample());
    for (size_t bits = 0; bits <= 16; ++bits) {
        EXPECT_TRUE(truncates(source, everySample(), bits, false)) << bits;
        EXPECT_TRUE(truncates(source, everySample(), bits, true)) << bits << ", rounding";
    }
}

TEST_F(Gles3FilterTruncate16GLTest, ShiftsBeyondTheSamplesLeaveNothing) {
    Samples const boundaries(kBoundaries.begin(), kBoundaries.end());
    for (size_t const bits : {17U, 31U, 32U, 33U, 47U, 63U, 17U + 64U}) {
        EXPECT_EQ(truncated(boundaries, bits, false), Samples(boundaries.size(), 0)) << bits;
        EXPECT_EQ(truncated(boundaries, bits, true), Samples(boundaries.size(), 0)) << bits;
    }
}

// The shift counts modulo 64; the constant of 68 bits is that of 4, for 68 is 4 modulo 32 as well.
TEST_F(Gles3FilterTruncate16GLTest, ShiftCountsModuloSixtyFour) {
    Samples const boundaries(kBoundaries.begin(), kBoundaries.end());
    EXPECT_EQ(truncated(boundaries, 64, false), boundaries);
    EXPECT_EQ(truncated(boundaries, 64, true), boundaries);
    EXPECT_EQ(truncated({37, -37}, 68, true), (Samples{39, -39}));
}

TEST_F(Gles3FilterTruncate16GLTest, MagnitudesGoTowardZeroAndTheConstantAwayFromIt) {
    EXPECT_EQ(truncated({37, -37, 5, -5, 0, 15, 16, -16}, 4, true), (Samples{39, -39, 0, 0, 0, 0, 23, -23}));
    EXPECT_EQ(truncated({37, -37, 5, -5, 0, 15, 16, -16}, 4, false), (Samples{32, -32, 0, 0, 0, 0, 16, -16}));
}

TEST_F(Gles3FilterTruncate16GLTest, NoBitsLeaveEveryValueUnchanged) {
    Samples const boundaries(kBoundaries.begin(), kBoundaries.end());
    EXPECT_EQ(truncated(boundaries, 0, true), boundaries);
    EXPECT_EQ(truncated(boundaries, 0, false), boundaries);
}

// -32768 keeps its magnitude and gets 16383 more: -49151, which is 16385 modulo 2^16.
TEST_F(Gles3FilterTruncate16GLTest, ResultBeyondSixteenBitsLeavesModuloTwoToTheSixteen) {
    EXPECT_EQ(truncated({-32768, 32767}, 15, true), (Samples{16385, 0}));
}

TEST_F(Gles3FilterTruncate16GLTest, PartsOfEvenColumnsLandAtAnyTexel) {
    Plane const samples = randomPlane(24, 9, 6);
    struct Row {
        size_t x;
        std::array<size_t, 4> clip;
        std::array<size_t, 2> offset;
    };
    for (auto const& row : {Row{0, {0, 0, 0, 0}, {1, 1}}, Row{6, {0, 0, 0, 0}, {3, 0}}, Row{2, {2, 4, 1, 2}, {0, 3}},
                            Row{10, {6, 0, 0, 1}, {5, 2}}}) {
        FilterRun const run{{{rig.uploaded(samples), row.x, 2, false}},
                            14,
                            6,
                            row.clip[0],
                            row.clip[1],
                            row.clip[2],
                            row.clip[3],
                            row.offset};
        Plane const kept =
            cropped(samples, static_cast<int>(row.x + row.clip[0]), static_cast<int>(2 + row.clip[2]),
                    static_cast<int>(14 - row.clip[0] - row.clip[1]), static_cast<int>(6 - row.clip[2] - row.clip[3]));
        EXPECT_TRUE(rig.givesWithin(description::filterTruncate16(), run, truncate16(packOneChannel16(kept), 5, true),
                                    Layout::kOneChannel16, truncation(5, true)));
    }
}

TEST_F(Gles3FilterTruncate16GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()}) {
        Plane const samples = randomPlane(2 * texels, 2, 9);
        EXPECT_TRUE(rig.gives(description::filterTruncate16(), {rig.uploaded(samples)},
                              truncate16(packOneChannel16(samples), 3, true), Layout::kOneChannel16,
                              truncation(3, true)))
            << texels;
    }
}

TEST_F(Gles3FilterTruncate16GLTest, RecordOfAnotherFilterIsRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(4, 2, 1);
    size_t const destination = rig.uploaded(noise, Layout::kOneChannel16);
    FilterRun const run{{{rig.uploaded(randomPlane(8, 2, 2)), 0, 0, false}}, 8, 2};
    for (auto const& params : {std::make_shared<SingleFilterParameters>(),
                               std::shared_ptr<SingleFilterParameters>(std::make_shared<FilterSharpness8Params>())}) {
        EXPECT_EQ(failureOf([&] { rig.run(filter_, run, destination, *params); }),
                  "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    }
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 4));
}

} // namespace
