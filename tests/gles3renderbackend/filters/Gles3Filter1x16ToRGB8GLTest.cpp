#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/SixteenToEight.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"

namespace {

using namespace filtertest;
using reference::oneChannel16ToRgb8;
using reference::packOneChannel16;
using reference::Plane;

class Gles3Filter1x16ToRGB8GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult shows(Plane const& samples, Layout layout) {
        return rig.gives(description::filter1x16ToRGB8(), {rig.uploaded(samples)},
                         oneChannel16ToRgb8(packOneChannel16(samples)), layout);
    }

    ::testing::AssertionResult showsPart(size_t x, std::array<size_t, 4> const& clip,
                                         std::array<size_t, 2> const& offset) {
        Plane const samples = randomPlane(24, 9, 6, -100, 400);
        FilterRun const run{{{rig.uploaded(samples), x, 2, false}}, 13, 6, clip[0], clip[1], clip[2], clip[3], offset};
        Texels const kept = reference::cropped(
            oneChannel16ToRgb8(packOneChannel16(samples)), static_cast<int>(x + clip[0]), static_cast<int>(2 + clip[2]),
            static_cast<int>(13 - clip[0] - clip[1]), static_cast<int>(6 - clip[2] - clip[3]));
        return rig.givesWithin(description::filter1x16ToRGB8(), run, kept, Layout::kRgba8);
    }
};

TEST_F(Gles3Filter1x16ToRGB8GLTest, SamplesComeInPairs) {
    Filter const filter = rig.instantiated(description::filter1x16ToRGB8());
    EXPECT_EQ(filter.alignXIn(), 2U);
    EXPECT_EQ(filter.effectiveAlignX(), 2U);
    EXPECT_EQ(filter.alignXOut(), 1U);
}

TEST_F(Gles3Filter1x16ToRGB8GLTest, ValuesAreShownAsGreyUnscaledAndClamped) {
    Plane const samples(4, 1, {300, -5, 17, 255});
    size_t const destination = rig.target(Layout::kRgba8, 4, 1);
    rig.run(rig.instantiated(description::filter1x16ToRGB8()), {{{rig.uploaded(samples), 0, 0, false}}, 4, 1},
            destination);
    EXPECT_EQ(rig.read(destination).bytes,
              (std::vector<std::uint8_t>{255, 255, 255, 255, 0, 0, 0, 255, 17, 17, 17, 255, 255, 255, 255, 255}));
}

TEST_F(Gles3Filter1x16ToRGB8GLTest, EverySampleIsExactInTargetsWithAndWithoutAlpha) {
    EXPECT_TRUE(shows(everySample(), Layout::kRgba8));
    EXPECT_TRUE(shows(everySample(), Layout::kRgb8));
}

TEST_F(Gles3Filter1x16ToRGB8GLTest, SourceColumnGoesWithTheOffsetModuloTwo) {
    EXPECT_TRUE(showsPart(0, {0, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(showsPart(7, {0, 0, 0, 0}, {1, 1}));
    EXPECT_TRUE(showsPart(3, {0, 0, 0, 0}, {5, 0}));
    EXPECT_TRUE(showsPart(4, {0, 0, 0, 0}, {6, 3}));
}

TEST_F(Gles3Filter1x16ToRGB8GLTest, ClipsOfOddPixelsKeepTheColumnsInPlace) {
    EXPECT_TRUE(showsPart(0, {1, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(showsPart(5, {3, 2, 1, 1}, {3, 2}));
    EXPECT_TRUE(showsPart(4, {2, 5, 0, 3}, {2, 1}));
}

TEST_F(Gles3Filter1x16ToRGB8GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(shows(randomPlane(texels, 2, 9, -300, 600), Layout::kRgba8)) << texels;
}

} // namespace
