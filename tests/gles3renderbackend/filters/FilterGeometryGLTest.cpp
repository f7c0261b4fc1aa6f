#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Clahe.h"
#include "reference/Sharpness16.h"
#include "reference/Sharpness8.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"

// The borders that the descriptions declare are those that make parts of a picture equal to the whole one.
namespace {

using namespace filtertest;
using reference::Plane;
using reference::Planes3;

class FilterGeometryGLTest : public FilterGLTest {};

TEST_F(FilterGeometryGLTest, EveryDescriptionIsInstantiated) {
    for (auto const& name : description::names())
        EXPECT_NE(rig.instantiated(description::byName(name)).instanceKey(), nullptr) << name;
}

struct Alignment {
    char const* filter;
    size_t columnsIn;
    size_t columnsOut;
};

// Two samples of 16 bits share a texel.
TEST_F(FilterGeometryGLTest, SamplesComeAndGoInPairs) {
    for (Alignment const& row : {Alignment{"FilterFirIH53LeGall16", 2, 2},
                                 {"FilterFirIV53LeGall16", 2, 2},
                                 {"Filter1x16ToRGB8", 2, 1},
                                 {"FilterInterleave16", 2, 1}}) {
        Filter const filter = rig.instantiated(description::byName(row.filter));
        EXPECT_EQ(filter.alignXIn(), row.columnsIn) << row.filter;
        EXPECT_EQ(filter.alignXOut(), row.columnsOut) << row.filter;
        EXPECT_EQ(filter.effectiveAlignX(), 2U) << row.filter;
        EXPECT_EQ(filter.alignYIn(), 1U) << row.filter;
        EXPECT_EQ(filter.alignYOut(), 1U) << row.filter;
    }
}

TEST_F(FilterGeometryGLTest, WiderInputStrideWinsOverTheAlignmentOfTwo) {
    Filter description("FilterFirIH53LeGall16", 0, 4, 0, 0, 0, 4, 0, 1, 2, 1, 1, 1, 2, RenderBackend::NEAREST);
    EXPECT_EQ(rig.instantiated(description).effectiveAlignX(), 4U);
}

// The taps reach out of the picture within two pixels of its edge only.
TEST_F(FilterGeometryGLTest, SharpeningEightBitsYieldsWhatTheTapsReach) {
    Texels const picture = randomTexels(23, 15, 1);
    FilterSharpness8Params params;
    params.gain = 1.5;
    FilterRun const run{{{rig.uploaded(picture, Layout::kRgba8), 0, 0, false}}, {23, 15}, {}, {1, 1}};
    Texels const sharp = cropped(sharpness8(picture, params.gain, 0), 2, 2, 19, 11);
    EXPECT_TRUE(rig.givesWithin(description::filterSharpness8(), run, sharp, Layout::kRgba8, params));
}

TEST_F(FilterGeometryGLTest, BothPassesOfSixteenBitSharpeningJoinAtTheirBorders) {
    constexpr int kWidth = 39;
    constexpr int kHeight = 27;
    auto const flat = [](std::int32_t value) {
        return Plane(kWidth, kHeight, std::vector<std::int32_t>(size_t{kWidth} * kHeight, value));
    };
    auto const expectSharp = [&](Planes3 const& picture, double gain) {
        size_t const source = rig.uploaded(picture);
        size_t const blur = rig.target(Layout::kThreeChannel16, 2 * (kWidth - 4), kHeight);
        rig.run(rig.instantiated(description::filterSharpnessH16()), {{{source, 0, 0, false}}, {kWidth, kHeight}},
                blur);
        FilterSharpness16Params params;
        params.gain = gain;
        FilterRun const run{{{source, 2, 0, false}, {blur, 0, 0, false}}, {kWidth - 4, kHeight}, {}, {2, 1}};
        Planes3 sharp;
        for (size_t c = 0; c < sharp.size(); ++c)
            sharp[c] = filtertest::cropped(sharpness16(picture[c], params.gain, 0), 2, 2, kWidth - 4, kHeight - 4);
        EXPECT_TRUE(rig.givesWithin(description::filterSharpnessV16(), run, packThreeChannel16(sharp),
                                    Layout::kThreeChannel16, params))
            << gain;
    };
    for (double const gain : {1.0, 2.0, 3.0, -1.0})
        expectSharp(randomPlanes(kWidth, kHeight, 15, -50, 1100), gain);
    expectSharp({flat(0), flat(777), flat(1023)}, 30.0);
}

// Tiles cut at multiples of a region and read with one region of their neighbours.
TEST_F(FilterGeometryGLTest, EqualisedTilesWithARegionOfBorderAgreeWithTheWholePicture) {
    constexpr int kWidth = 165;
    constexpr int kHeight = 122;
    std::vector<std::int16_t> samples;
    for (std::int32_t const sample : randomPlane(4 * kWidth, kHeight, 3, -20, 300).samples)
        samples.push_back(static_cast<std::int16_t>(sample));
    FilterClaheParams params;
    params.value = 3.0;
    size_t const source = rig.uploaded(reference::packFourChannel16(samples, kWidth, kHeight), Layout::kFourChannel16);
    Texels const whole =
        reference::packFourChannel16(reference::clahe(samples, kWidth, kHeight, params.value, 0, 0), kWidth, kHeight);

    FilterRun const amid{{{source, 40, 0, false}}, {120, 120}};
    EXPECT_TRUE(rig.givesWithin(description::filterCLAHE({40, 40, 40, 40}), amid,
                                cropped(whole, 2 * 80, 40, 2 * 40, 40), Layout::kFourChannel16, params));
    FilterRun const atTheRightEdge{{{source, 80, 0, false}}, {85, 80}};
    EXPECT_TRUE(rig.givesWithin(description::filterCLAHE({40, 0, 0, 40}), atTheRightEdge,
                                cropped(whole, 2 * 120, 0, 2 * 45, 40), Layout::kFourChannel16, params));
    FilterRun const all{{{source, 0, 0, false}}, {kWidth, kHeight}};
    EXPECT_TRUE(rig.givesWithin(description::filterCLAHE(), all, whole, Layout::kFourChannel16, params));
}

} // namespace
