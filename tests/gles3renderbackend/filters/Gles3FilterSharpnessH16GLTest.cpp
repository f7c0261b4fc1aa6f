#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Sharpness16.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"

namespace {

using namespace filtertest;
using reference::cropped;
using reference::packThreeChannel16;
using reference::Plane;
using reference::Planes3;
using reference::sharpnessH16;

class Gles3FilterSharpnessH16GLTest : public FilterGLTest {
protected:
    // Two pixels at each end, four texels, are borders.
    ::testing::AssertionResult blurs(Planes3 const& pixels) {
        Texels const whole = sharpnessH16(packThreeChannel16(pixels));
        return rig.gives(description::filterSharpnessH16(), {rig.uploaded(pixels)},
                         cropped(whole, 4, 0, whole.width - 8, whole.height), Layout::kThreeChannel16);
    }

    ::testing::AssertionResult blursUpToTheEdges(Texels const& texels) {
        return rig.gives(unbordered_, {rig.uploaded(texels, Layout::kThreeChannel16)}, sharpnessH16(texels),
                         Layout::kThreeChannel16);
    }

    // The unsigned values of channel 0.
    std::vector<std::int32_t> blurred(std::vector<std::int32_t> const& samples) {
        Plane const row(static_cast<int>(samples.size()), 1, samples);
        size_t const destination = rig.target(Layout::kThreeChannel16, 2 * row.width - 8, 1);
        rig.run(rig.instantiated(description::filterSharpnessH16()),
                {{{rig.uploaded(Planes3{row, row, row}), 0, 0, false}}, samples.size(), 1}, destination);
        Planes3 const result = unpackThreeChannel16Unsigned(rig.read(destination));
        EXPECT_EQ(result[1].samples, result[0].samples);
        EXPECT_EQ(result[2].samples, result[0].samples);
        return result[0].samples;
    }

    Filter unbordered_ = backendtest::namedFilter("FilterSharpnessH16");
};

using Samples = std::vector<std::int32_t>;

TEST_F(Gles3FilterSharpnessH16GLTest, EverySampleOfEveryChannelIsExact) {
    for (size_t channel = 0; channel < 3; ++channel)
        EXPECT_TRUE(blurs(everySampleOfChannel(channel, 3))) << channel;
}

TEST_F(Gles3FilterSharpnessH16GLTest, TenBitNoiseIsExact) {
    EXPECT_TRUE(blurs(randomPlanes(61, 33, 4, 0, 1023)));
    EXPECT_TRUE(blurs(randomPlanes(60, 33, 5, -200, 1300)));
}

TEST_F(Gles3FilterSharpnessH16GLTest, BoundariesAreExact) {
    EXPECT_TRUE(blurs(boundaryTriples()));
    EXPECT_TRUE(blurs({boundaryPlane(45, 20, 1), boundaryPlane(45, 20, 2), boundaryPlane(45, 20, 3)}));
}

TEST_F(Gles3FilterSharpnessH16GLTest, WeightsOfALoneSampleAreThoseOfTheTaps) {
    EXPECT_EQ(blurred({0, 0, 0, 0, 1000, 0, 0, 0, 0}), (Samples{1000, 13000, 36000, 13000, 1000}));
}

TEST_F(Gles3FilterSharpnessH16GLTest, NegativeSamplesAreReadAsZeroAndLargeOnesAs1023) {
    EXPECT_EQ(blurred({-1, -1, -1, -1, -32768}), Samples{0});
    EXPECT_EQ(blurred({2000, 2000, 2000, 2000, 2000}), Samples{64 * 1023});
    EXPECT_EQ(blurred({1024, 32767, 1023, 1023, 1023}), Samples{64 * 1023});
    EXPECT_EQ(blurred({0, -5, 2000, 0, 0}), Samples{36 * 1023});
}

TEST_F(Gles3FilterSharpnessH16GLTest, AlphaOfTheInputIsNotRead) {
    EXPECT_TRUE(blursUpToTheEdges(randomTexels(40, 12, 6)));
}

TEST_F(Gles3FilterSharpnessH16GLTest, TapsBeyondTheTextureReadItsEdgeTexels) {
    for (int const pixels : {1, 2, 3, 7})
        EXPECT_TRUE(blursUpToTheEdges(packThreeChannel16(randomPlanes(pixels, 3, 7, 0, 1023)))) << pixels;
}

TEST_F(Gles3FilterSharpnessH16GLTest, PartsLandAtEvenTexelsWhole) {
    Planes3 const pixels = randomPlanes(27, 11, 8, -100, 1100);
    Texels const whole = sharpnessH16(packThreeChannel16(pixels));
    size_t const source = rig.uploaded(pixels);
    struct Row {
        size_t x;
        std::array<size_t, 4> clip;
        std::array<size_t, 2> offset;
    };
    for (auto const& row : {Row{0, {0, 0, 0, 0}, {0, 0}}, Row{5, {1, 0, 0, 2}, {2, 3}}, Row{8, {0, 3, 5, 1}, {6, 1}},
                            Row{11, {3, 2, 2, 2}, {4, 5}}}) {
        FilterRun const run{
            {{source, row.x, 1, false}}, 15, 9, row.clip[0], row.clip[1], row.clip[2], row.clip[3], row.offset};
        Texels const kept = cropped(
            whole, static_cast<int>(2 * (row.x + 2 + row.clip[0])), static_cast<int>(1 + row.clip[2]),
            static_cast<int>(2 * (11 - row.clip[0] - row.clip[1])), static_cast<int>(9 - row.clip[2] - row.clip[3]));
        EXPECT_TRUE(rig.givesWithin(description::filterSharpnessH16(), run, kept, Layout::kThreeChannel16));
    }
}

// A target of four bytes per pixel counts texels as logical pixels: a clip of one is one texel.
TEST_F(Gles3FilterSharpnessH16GLTest, ColumnParityIsThatOfTheLayoutNotOfTheDestination) {
    Texels const texels = packThreeChannel16(randomPlanes(10, 4, 9, 0, 1023));
    size_t const source = rig.uploaded(texels, Layout::kRgba8);
    FilterRun const run{{{source, 0, 0, false}}, 20, 4, 1, 0, 0, 0, {0, 0}};
    EXPECT_TRUE(rig.givesWithin(unbordered_, run, cropped(sharpnessH16(texels), 1, 0, 19, 4), Layout::kRgba8));
}

TEST_F(Gles3FilterSharpnessH16GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(blursUpToTheEdges(packThreeChannel16(randomPlanes(texels / 2, 2, 10, -50, 1100)))) << texels;
}

} // namespace
