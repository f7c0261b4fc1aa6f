#include "host/filter/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Clahe.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using backendtest::failureOf;
using reference::cropped;
using reference::packFourChannel16;
using reference::unpackFourChannel16;

FilterClaheParams clipLimit(double clip) {
    FilterClaheParams params;
    params.value = clip;
    return params;
}

Texels equalised(Texels const& texels, double clip) {
    int const width = texels.width / 2;
    return packFourChannel16(reference::clahe(unpackFourChannel16(texels), width, texels.height, clip, 0, 0), width,
                             texels.height);
}

using Gles3FilterCLAHEGLTest = FilterGLTest;

TEST_F(Gles3FilterCLAHEGLTest, TilesCutAtRegionsAgreeWithTheWholePicture) {
    Texels const texels = greySlope(240, 200, 20);
    Texels const whole = equalised(texels, 3.0);
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    FilterRun const run{{{source, 40, 40, false}}, {160, 120}};
    EXPECT_TRUE(rig.givesWithin(description::filterCLAHE({40, 40, 40, 40}), run, cropped(whole, 160, 80, 160, 40),
                                Layout::kThreeChannel16, clipLimit(3.0)));
}

TEST_F(Gles3FilterCLAHEGLTest, WholeTextureIsReadFromItsFirstPixel) {
    Texels const texels = greySlope(60, 50, 12);
    FilterRun const run{{{rig.uploaded(texels, Layout::kThreeChannel16), 13, 9, true}}, {60, 50}};
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
    rig.run(filter, {{{source, 0, 0, false}}, {60, 50}, {}, {4, 20}}, destination, clipLimit(3.0));
    blit(whole, 0, 0, 36, 10, expected, 4, 20);
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, expected.bytes, 40));
    for (std::array<size_t, 2> const& offset : {std::array<size_t, 2>{40, 0}, {0, 30}, {1000, 1000}}) {
        rig.run(filter, {{{source, 0, 0, false}}, {60, 50}, {}, offset}, destination, clipLimit(3.0));
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
        rig.run(filter, {{{source, 0, 0, false}}, {50, 50}, {clip[0], clip[1], clip[2], clip[3]}}, destination,
                clipLimit(3.0));
        EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 20));
    }
}

// A later draw into the destination works: its framebuffer is unchanged.
TEST_F(Gles3FilterCLAHEGLTest, DestinationCanBeDrawnIntoAfterwards) {
    Texels const texels = greySlope(50, 50, 17);
    size_t const source = rig.uploaded(texels, Layout::kThreeChannel16);
    size_t const destination = rig.target(Layout::kThreeChannel16, 100, 50);
    FilterRun const run{{{source, 0, 0, false}}, {50, 50}};
    rig.run(rig.instantiated(description::filterCLAHE()), run, destination, clipLimit(3.0));
    rig.run(rig.instantiated(description::blitFilter3x16()), run, destination);
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, texels.bytes, 100));
}

TEST_F(Gles3FilterCLAHEGLTest, TargetMayBeSourceAndDestination) {
    Texels const texels = greySlope(50, 45, 18);
    size_t const target = rig.uploaded(texels, Layout::kThreeChannel16);
    rig.run(rig.instantiated(description::filterCLAHE()), {{{target, 0, 0, false}}, {50, 45}}, target, clipLimit(3.0));
    EXPECT_TRUE(pixelsEqual(rig.read(target).bytes, equalised(texels, 3.0).bytes, 100));
}

TEST_F(Gles3FilterCLAHEGLTest, TargetsOfOtherLayoutsAreRefusedAsSourceAndAsDestination) {
    Texels const noise = greySlope(50, 50, 21);
    size_t const good = rig.uploaded(noise, Layout::kThreeChannel16);
    Filter const filter = rig.instantiated(description::filterCLAHE());
    for (size_t const wrong : {rig.target(Layout::kRgba8, 50, 50), rig.target(Layout::kRgb8, 50, 50),
                               rig.target(Layout::kOneChannel16, 50, 50), size_t{0}}) {
        for (auto const& [source, destination] : {std::pair{good, wrong}, {wrong, good}}) {
            std::string const failure = failureOf([&, from = source, to = destination] {
                rig.run(filter, {{{from, 0, 0, false}}, {50, 50}}, to, clipLimit(3.0));
            });
            EXPECT_EQ(failure.rfind("#Name:CLAHE needs targets of 48 or 64 bits per pixel in RGBA32#Location:", 0), 0U)
                << failure;
        }
    }
    EXPECT_TRUE(pixelsEqual(rig.read(good).bytes, noise.bytes, 100));
}

TEST_F(Gles3FilterCLAHEGLTest, RunWithoutASourceIsRefused) {
    size_t const destination = rig.target(Layout::kThreeChannel16, 20, 10);
    Filter const filter = rig.instantiated(description::filterCLAHE());
    std::string const failure = failureOf([&] { rig.run(filter, {{}, {10, 10}}, destination, clipLimit(3.0)); });
    EXPECT_EQ(failure.rfind("#Name:CLAHE needs one source#Location:", 0), 0U) << failure;
}

} // namespace
