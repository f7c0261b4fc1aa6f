#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Clahe.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

#include <cmath>

namespace {

using namespace filtertest;
using backendtest::failureOf;
using description::Borders;
using reference::cropped;
using reference::packFourChannel16;
using reference::unpackFourChannel16;

FilterClaheParams clipLimit(double clip) {
    FilterClaheParams params;
    params.value = clip;
    return params;
}

/// What becomes of the rectangle as if it were an image of its own.
Texels equalised(Texels const& texels, double clip, int x0 = 0, int y0 = 0) {
    int const width = texels.width / 2;
    return packFourChannel16(reference::clahe(unpackFourChannel16(texels), width, texels.height, clip, x0, y0), width,
                             texels.height);
}

class Gles3FilterCLAHEGLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult equalises(Texels const& texels, double clip) {
        return rig.gives(description::filterCLAHE(), {rig.uploaded(texels, Layout::kThreeChannel16)},
                         equalised(texels, clip), Layout::kThreeChannel16, clipLimit(clip));
    }
};

TEST_F(Gles3FilterCLAHEGLTest, FortyByFortyPixelsPassThroughUnchanged) {
    Texels const texels = greySlope(40, 40, 1);
    EXPECT_TRUE(rig.gives(description::filterCLAHE(), {rig.uploaded(texels, Layout::kThreeChannel16)}, texels,
                          Layout::kThreeChannel16, clipLimit(3.0)));
}

TEST_F(Gles3FilterCLAHEGLTest, LessThan41PixelsInEitherDirectionPassThroughUnchanged) {
    for (auto const& [width, height] : {std::pair{40, 200}, {90, 40}, {1, 1}, {41, 39}}) {
        Texels const texels = greySlope(width, height, 2);
        EXPECT_TRUE(rig.gives(description::filterCLAHE(), {rig.uploaded(texels, Layout::kThreeChannel16)}, texels,
                              Layout::kThreeChannel16, clipLimit(3.0)))
            << width << " x " << height;
    }
}

TEST_F(Gles3FilterCLAHEGLTest, FortyOneByFortyOnePixelsUseTheTableOfTheOneFullRegion) {
    Texels const texels = greySlope(41, 41, 3);
    EXPECT_FALSE(equalised(texels, 3.0) == texels);
    EXPECT_TRUE(equalises(texels, 3.0));
}

TEST_F(Gles3FilterCLAHEGLTest, ManySizesAndClipLimitsAreExact) {
    std::uint32_t randomStart = 10;
    for (auto const& [width, height] : {std::pair{41, 97}, {79, 80}, {121, 43}, {150, 161}, {299, 283}}) {
        Texels const texels = greySlope(width, height, ++randomStart);
        for (double const clip : {0.5, 1.0, 3.0, 40.0})
            EXPECT_TRUE(equalises(texels, clip)) << width << " x " << height << ", clip limit " << clip;
    }
}

TEST_F(Gles3FilterCLAHEGLTest, ClipLimitOfOneHalfBehavesAsOne) {
    Texels const texels = greySlope(70, 60, 4);
    EXPECT_TRUE(rig.gives(description::filterCLAHE(), {rig.uploaded(texels, Layout::kThreeChannel16)},
                          equalised(texels, 1.0), Layout::kThreeChannel16, clipLimit(0.5)));
}

// Just below 4 in double precision, 4 in single precision: 25 of 1600 pixels a bin instead of 24.
TEST_F(Gles3FilterCLAHEGLTest, ClipLimitGoesThroughSinglePrecision) {
    Texels const texels = greySlope(80, 60, 5);
    ASSERT_FALSE(equalised(texels, 4.0) == equalised(texels, 3.99));
    EXPECT_TRUE(rig.gives(description::filterCLAHE(), {rig.uploaded(texels, Layout::kThreeChannel16)},
                          equalised(texels, 4.0), Layout::kThreeChannel16, clipLimit(std::nextafter(4.0, 0.0))));
}

TEST_F(Gles3FilterCLAHEGLTest, SamplesOutsideTheGreyValuesAreExact) {
    Texels texels = randomTexels(2 * 83, 91, 6);
    EXPECT_TRUE(equalises(texels, 3.0));
}

TEST_F(Gles3FilterCLAHEGLTest, OtherComponentsKeepEveryBit) {
    Texels const texels = greySlope(64, 57, 7);
    size_t const destination = rig.target(Layout::kThreeChannel16, 128, 57);
    rig.run(rig.instantiated(description::filterCLAHE()),
            {{{rig.uploaded(texels, Layout::kThreeChannel16), 0, 0, false}}, 64, 57}, destination, clipLimit(2.0));
    auto const before = unpackFourChannel16(texels);
    auto const after = unpackFourChannel16(rig.read(destination));
    size_t changed = 0;
    for (size_t i = 0; i < before.size(); ++i) {
        if (i % 4 == 0)
            changed += after[i] != before[i] ? 1U : 0U;
        else
            ASSERT_EQ(after[i], before[i]) << i;
    }
    EXPECT_GT(changed, before.size() / 8);
}

TEST_F(Gles3FilterCLAHEGLTest, UniformImageGivesOneValue) {
    for (auto const grey : std::vector<std::int16_t>{-7, 0, 100, 255, 1000}) {
        std::vector<std::int16_t> samples(size_t{50} * 45 * 4, grey);
        Texels const texels = packFourChannel16(samples, 50, 45);
        EXPECT_TRUE(equalises(texels, 1.0)) << grey;
    }
}

// The pixels left out are read and counted all the same.
TEST_F(Gles3FilterCLAHEGLTest, BordersOfFortyAreCountedButNotWritten) {
    Texels const texels = greySlope(170, 130, 8);
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    for (Borders const& borders : {Borders{40, 0, 0, 0}, {0, 0, 40, 0}, {40, 40, 40, 40}, {80, 5, 47, 9}}) {
        Texels const whole = equalised(texels, 3.0, borders.left >= 40 ? 40 : 0, borders.top >= 40 ? 40 : 0);
        Texels const kept = cropped(whole, static_cast<int>(2 * borders.left), static_cast<int>(borders.top),
                                    static_cast<int>(2 * (170 - borders.left - borders.right)),
                                    static_cast<int>(130 - borders.top - borders.bottom));
        FilterRun const run{{{source, 0, 0, false}}, 170, 130};
        EXPECT_TRUE(
            rig.givesWithin(description::filterCLAHE(borders), run, kept, Layout::kThreeChannel16, clipLimit(3.0)))
            << borders.left << ", " << borders.top;
    }
}

TEST_F(Gles3FilterCLAHEGLTest, BordersBelowFortyAreEqualisedAndLeftOut) {
    Texels const texels = greySlope(95, 88, 9);
    Texels const kept = cropped(equalised(texels, 3.0), 2 * 39, 39, 2 * (95 - 39), 88 - 39);
    FilterRun const run{{{rig.uploaded(texels, Layout::kThreeChannel16), 0, 0, false}}, 95, 88};
    EXPECT_TRUE(
        rig.givesWithin(description::filterCLAHE({39, 0, 39, 0}), run, kept, Layout::kThreeChannel16, clipLimit(3.0)));
}

TEST_F(Gles3FilterCLAHEGLTest, TilesCutAtRegionsAgreeWithTheWholePicture) {
    Texels const texels = greySlope(240, 200, 20);
    Texels const whole = equalised(texels, 3.0);
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    FilterRun const run{{{source, 40, 40, false}}, 160, 120};
    EXPECT_TRUE(rig.givesWithin(description::filterCLAHE({40, 40, 40, 40}), run, cropped(whole, 160, 80, 160, 40),
                                Layout::kThreeChannel16, clipLimit(3.0)));
}

TEST_F(Gles3FilterCLAHEGLTest, PartsLandAtAnyTexelOfTheDestination) {
    Texels const texels = greySlope(90, 70, 11);
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    struct Row {
        size_t x;
        size_t y;
        std::array<size_t, 4> clip;
        std::array<size_t, 2> offset;
    };
    for (auto const& row : {Row{0, 0, {0, 0, 0, 0}, {2, 1}}, Row{7, 3, {0, 0, 0, 0}, {1, 0}},
                            Row{20, 11, {3, 4, 5, 6}, {4, 7}}, Row{1, 0, {0, 50, 0, 0}, {3, 3}}}) {
        FilterRun const run{
            {{source, row.x, row.y, false}}, 66, 54, row.clip[0], row.clip[1], row.clip[2], row.clip[3], row.offset};
        Texels const area = cropped(texels, static_cast<int>(2 * row.x), static_cast<int>(row.y), 132, 54);
        Texels const kept = cropped(
            equalised(area, 3.0), static_cast<int>(2 * row.clip[0]), static_cast<int>(row.clip[2]),
            static_cast<int>(2 * (66 - row.clip[0] - row.clip[1])), static_cast<int>(54 - row.clip[2] - row.clip[3]));
        EXPECT_TRUE(rig.givesWithin(description::filterCLAHE(), run, kept, Layout::kThreeChannel16, clipLimit(3.0)));
    }
}

TEST_F(Gles3FilterCLAHEGLTest, WholeTextureIsReadFromItsFirstPixel) {
    Texels const texels = greySlope(60, 50, 12);
    FilterRun const run{{{rig.uploaded(texels, Layout::kThreeChannel16), 13, 9, true}}, 60, 50};
    EXPECT_TRUE(rig.givesWithin(description::filterCLAHE(), run, equalised(texels, 3.0), Layout::kThreeChannel16,
                                clipLimit(3.0)));
}

TEST_F(Gles3FilterCLAHEGLTest, WhatFallsBeyondTheDestinationIsLeftOut) {
    Texels const texels = greySlope(60, 50, 13);
    Texels const whole = equalised(texels, 3.0);
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    Texels expected = randomTexels(40, 30, 14);
    size_t const destination = rig.uploaded(expected, Layout::kThreeChannel16);
    Filter const filter = rig.instantiated(description::filterCLAHE());
    rig.run(filter, {{{source, 0, 0, false}}, 60, 50, 0, 0, 0, 0, {4, 20}}, destination, clipLimit(3.0));
    blit(whole, 0, 0, 36, 10, expected, 4, 20);
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, expected.bytes, 40));
    for (std::array<size_t, 2> const& offset : {std::array<size_t, 2>{40, 0}, {0, 30}, {1000, 1000}}) {
        rig.run(filter, {{{source, 0, 0, false}}, 60, 50, 0, 0, 0, 0, offset}, destination, clipLimit(3.0));
        EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, expected.bytes, 40)) << offset[0];
    }
}

TEST_F(Gles3FilterCLAHEGLTest, ClipsThatLeaveNothingWriteNothing) {
    Texels const noise = randomTexels(20, 20, 15);
    size_t const source = rig.uploaded(greySlope(50, 50, 16), Layout::kThreeChannel16);
    size_t const destination = rig.uploaded(noise, Layout::kThreeChannel16);
    Filter const filter = rig.instantiated(description::filterCLAHE());
    for (std::array<size_t, 4> const& clip :
         {std::array<size_t, 4>{50, 0, 0, 0}, {30, 30, 0, 0}, {0, 0, 25, 25}, {0, 0, 0, 99}}) {
        rig.run(filter, {{{source, 0, 0, false}}, 50, 50, clip[0], clip[1], clip[2], clip[3]}, destination,
                clipLimit(3.0));
        EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 20));
    }
}

// The destination is drawn into afterwards: its framebuffer is as it was.
TEST_F(Gles3FilterCLAHEGLTest, DestinationCanBeDrawnIntoAfterwards) {
    Texels const texels = greySlope(50, 50, 17);
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    size_t const destination = rig.target(Layout::kThreeChannel16, 100, 50);
    FilterRun const run{{{source, 0, 0, false}}, 50, 50};
    rig.run(rig.instantiated(description::filterCLAHE()), run, destination, clipLimit(3.0));
    rig.run(rig.instantiated(description::blitFilter3x16()), run, destination);
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, texels.bytes, 100));
}

TEST_F(Gles3FilterCLAHEGLTest, TargetMayBeSourceAndDestination) {
    Texels const texels = greySlope(50, 45, 18);
    size_t const target = rig.uploaded(texels, Layout::kThreeChannel16);
    rig.run(rig.instantiated(description::filterCLAHE()), {{{target, 0, 0, false}}, 50, 45}, target, clipLimit(3.0));
    EXPECT_TRUE(pixelsEqual(rig.read(target).bytes, equalised(texels, 3.0).bytes, 100));
}

TEST_F(Gles3FilterCLAHEGLTest, TargetsOf64BitsHoldTheSamePixels) {
    Texels const texels = greySlope(55, 47, 19);
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    auto const wide = [&] {
        return rig.instance()->createTarget({55, 47}, 64, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    };
    size_t const once = wide();
    size_t const twice = wide();
    Filter const filter = rig.instantiated(description::filterCLAHE());
    rig.run(filter, {{{source, 0, 0, false}}, 55, 47}, once, clipLimit(3.0));
    rig.run(filter, {{{once, 0, 0, false}}, 55, 47}, twice, clipLimit(2.0));
    EXPECT_TRUE(pixelsEqual(rig.instance()->getPixels(once, {0, 55, 0, 47}), equalised(texels, 3.0).bytes, 110));
    EXPECT_TRUE(pixelsEqual(rig.instance()->getPixels(twice, {0, 55, 0, 47}),
                            equalised(equalised(texels, 3.0), 2.0).bytes, 110));
}

TEST_F(Gles3FilterCLAHEGLTest, TargetsOfOtherLayoutsAreRefusedAsSourceAndAsDestination) {
    Texels const noise = greySlope(50, 50, 21);
    size_t const good = rig.uploaded(noise, Layout::kThreeChannel16);
    Filter const filter = rig.instantiated(description::filterCLAHE());
    for (size_t const wrong : {rig.target(Layout::kRgba8, 50, 50), rig.target(Layout::kRgb8, 50, 50),
                               rig.target(Layout::kOneChannel16, 50, 50), size_t{0}}) {
        for (auto const& [source, destination] : {std::pair{good, wrong}, {wrong, good}}) {
            std::string const failure = failureOf([&, from = source, to = destination] {
                rig.run(filter, {{{from, 0, 0, false}}, 50, 50}, to, clipLimit(3.0));
            });
            EXPECT_EQ(failure.rfind("#Name:CLAHE needs targets of 48 or 64 bits per pixel in RGBA32#Location:", 0), 0U)
                << failure;
        }
    }
    EXPECT_TRUE(pixelsEqual(rig.read(good).bytes, noise.bytes, 100));
}

TEST_F(Gles3FilterCLAHEGLTest, RecordOfAnotherFilterIsRefusedAndNothingIsWritten) {
    Texels const noise = greySlope(50, 50, 22);
    size_t const source = rig.uploaded(greySlope(50, 50, 23), Layout::kThreeChannel16);
    size_t const destination = rig.uploaded(noise, Layout::kThreeChannel16);
    Filter const filter = rig.instantiated(description::filterCLAHE());
    for (auto const& params : {std::make_shared<SingleFilterParameters>(),
                               std::shared_ptr<SingleFilterParameters>(std::make_shared<FilterSharpness8Params>())}) {
        EXPECT_EQ(failureOf([&] {
                      rig.run(filter, {{{source, 0, 0, false}}, 50, 50}, destination, *params);
                  }),
                  "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    }
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 100));
}

TEST_F(Gles3FilterCLAHEGLTest, RunWithoutASourceIsRefused) {
    size_t const destination = rig.target(Layout::kThreeChannel16, 20, 10);
    Filter const filter = rig.instantiated(description::filterCLAHE());
    std::string const failure = failureOf([&] { rig.run(filter, {{}, 10, 10}, destination, clipLimit(3.0)); });
    EXPECT_EQ(failure.rfind("#Name:CLAHE needs one source#Location:", 0), 0U) << failure;
}

} // namespace
