#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Sharpness16.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using backendtest::failureOf;
using reference::packThreeChannel16;
using reference::Plane;
using reference::Planes3;
using reference::sharpnessV16;

FilterSharpness16Params sharpening(double gain, std::int32_t shiftBits = 0) {
    FilterSharpness16Params params;
    params.gain = gain;
    params.shiftBits = shiftBits;
    return params;
}

class Gles3FilterSharpnessV16GLTest : public FilterGLTest {
protected:
    // Both inputs as they are; two rows at the top and the bottom are borders.
    ::testing::AssertionResult sharpens(Texels const& source, Texels const& blurred, double gain,
                                        std::int32_t shiftBits = 0) {
        Texels const whole = sharpnessV16(source, blurred, gain, shiftBits);
        return rig.gives(
            description::filterSharpnessV16(),
            {rig.uploaded(source, Layout::kThreeChannel16), rig.uploaded(blurred, Layout::kThreeChannel16)},
            reference::cropped(whole, 0, 2, whole.width, whole.height - 4), Layout::kThreeChannel16,
            sharpening(gain, shiftBits));
    }

    ::testing::AssertionResult sharpensUpToTheEdges(Texels const& source, Texels const& blurred, double gain) {
        return rig.gives(
            unbordered_,
            {rig.uploaded(source, Layout::kThreeChannel16), rig.uploaded(blurred, Layout::kThreeChannel16)},
            sharpnessV16(source, blurred, gain, 0), Layout::kThreeChannel16, sharpening(gain));
    }

    // Both passes, on the GPU alone; borders of two pixels all around are left out.
    Planes3 sharpenedByBothPasses(Planes3 const& pixels, double gain) {
        auto const width = static_cast<size_t>(pixels[0].width);
        auto const height = static_cast<size_t>(pixels[0].height);
        size_t const source = rig.uploaded(pixels);
        size_t const blur = rig.target(Layout::kThreeChannel16, 2 * pixels[0].width - 8, pixels[0].height);
        size_t const result = rig.target(Layout::kThreeChannel16, 2 * pixels[0].width - 8, pixels[0].height - 4);
        rig.run(rig.instantiated(description::filterSharpnessH16()), {{{source, 0, 0, false}}, width, height}, blur);
        rig.run(rig.instantiated(description::filterSharpnessV16()),
                {{{source, 2, 0, false}, {blur, 0, 0, false}}, width - 4, height}, result, sharpening(gain));
        return unpackThreeChannel16(rig.read(result));
    }

    Filter unbordered_{"FilterSharpnessV16", 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 2, RenderBackend::NEAREST};
};

/// Random bytes, every sample of both inputs possible.
Texels anyBlur(int width, int height, std::uint32_t randomStart) {
    return randomTexels(2 * width, height, randomStart);
}

TEST_F(Gles3FilterSharpnessV16GLTest, NoiseIsExactAtEveryGainWhoseResultHasSixteenBits) {
    Texels const source = packThreeChannel16(randomPlanes(33, 21, 1, -100, 1100));
    Texels const blurred = anyBlur(33, 21, 2);
    for (double const gain : {0.0, 1.0, 2.0, 3.0, 7.0, 15.0, 16.0, 31.0, -1.0, -2.0, -15.0, -31.0})
        EXPECT_TRUE(sharpens(source, blurred, gain)) << gain;
}

// A blur near the source leaves small differences, where the rounding shows.
TEST_F(Gles3FilterSharpnessV16GLTest, SmallDifferencesAreExact) {
    Planes3 const pixels = randomPlanes(48, 24, 3, 500, 503);
    Planes3 blurred = randomPlanes(48, 24, 4, 64 * 500 - 20, 64 * 500 + 220);
    for (double const gain : {1.0, 2.0, 5.0, -1.0, -4.0})
        EXPECT_TRUE(sharpens(packThreeChannel16(pixels), packThreeChannel16(blurred), gain)) << gain;
}

TEST_F(Gles3FilterSharpnessV16GLTest, EverySourceSampleIsExact) {
    Texels const blurred = anyBlur(256, 256, 5);
    for (size_t channel = 0; channel < 3; ++channel)
        EXPECT_TRUE(sharpens(packThreeChannel16(everySampleOfChannel(channel, 6)), blurred, 1.0)) << channel;
}

TEST_F(Gles3FilterSharpnessV16GLTest, EveryBlurSampleIsExact) {
    Texels const source = packThreeChannel16(randomPlanes(256, 256, 7, 0, 1023));
    for (size_t channel = 0; channel < 3; ++channel)
        EXPECT_TRUE(sharpens(source, packThreeChannel16(everySampleOfChannel(channel, 8)), 3.0)) << channel;
}

TEST_F(Gles3FilterSharpnessV16GLTest, BoundariesAreExact) {
    Planes3 const source = {boundaryPlane(45, 20, 1), boundaryPlane(45, 20, 2), boundaryPlane(45, 20, 3)};
    Planes3 const blurred = {boundaryPlane(45, 20, 4), boundaryPlane(45, 20, 5), boundaryPlane(45, 20, 6)};
    EXPECT_TRUE(sharpens(packThreeChannel16(source), packThreeChannel16(blurred), 2.0));
}

// A step of 1 in the source: 4096 of the difference and nothing else. 32 * 4096 / 2^17 is 1.
TEST_F(Gles3FilterSharpnessV16GLTest, GainOfOneAddsTheDifferenceOnce) {
    Planes3 const source = {Plane(1, 1, {501}), Plane(1, 1, {499}), Plane(1, 1, {0})};
    Planes3 const blurred = {Plane(1, 1, {64 * 500}), Plane(1, 1, {64 * 500}), Plane(1, 1, {64 * 1023})};
    size_t const destination = rig.target(Layout::kThreeChannel16, 2, 1);
    rig.run(rig.instantiated(unbordered_),
            {{{rig.uploaded(source), 0, 0, false}, {rig.uploaded(blurred), 0, 0, false}}, 1, 1}, destination,
            sharpening(1.0));
    Planes3 const result = unpackThreeChannel16(rig.read(destination));
    EXPECT_EQ(result[0].samples.at(0), 502);
    EXPECT_EQ(result[1].samples.at(0), 498);
    // Not clamped: negative values leave as such.
    EXPECT_EQ(result[2].samples.at(0), -1023);
}

TEST_F(Gles3FilterSharpnessV16GLTest, FractionOfTheGainIsDropped) {
    Texels const source = packThreeChannel16(randomPlanes(12, 11, 9, -300, 1300));
    Texels const blurred = anyBlur(12, 11, 10);
    Texels const once = reference::cropped(sharpnessV16(source, blurred, 1.0, 0), 0, 2, 24, 7);
    std::vector<size_t> const sources = {rig.uploaded(source, Layout::kThreeChannel16),
                                         rig.uploaded(blurred, Layout::kThreeChannel16)};
    EXPECT_TRUE(rig.gives(description::filterSharpnessV16(), sources, once, Layout::kThreeChannel16, sharpening(1.9)));
    EXPECT_FALSE(rig.gives(description::filterSharpnessV16(), sources, once, Layout::kThreeChannel16, sharpening(2.0)));
}

TEST_F(Gles3FilterSharpnessV16GLTest, GainBelowOneReturnsTheSourceClampedToTenBits) {
    Planes3 pixels = randomPlanes(14, 9, 11, -2000, 3000);
    Texels const blurred = anyBlur(14, 9, 12);
    std::vector<size_t> const sources = {rig.uploaded(pixels), rig.uploaded(blurred, Layout::kThreeChannel16)};
    for (auto& plane : pixels) {
        for (auto& sample : plane.samples)
            sample = std::min(std::max(sample, 0), 1023);
    }
    Texels const clamped = reference::cropped(packThreeChannel16(pixels), 0, 2, 28, 5);
    for (double const gain : {0.9, -0.9, 0.0})
        EXPECT_TRUE(
            rig.gives(description::filterSharpnessV16(), sources, clamped, Layout::kThreeChannel16, sharpening(gain)))
            << gain;
}

TEST_F(Gles3FilterSharpnessV16GLTest, EachShiftBitHalvesTheGainRoundedDown) {
    Texels const source = packThreeChannel16(randomPlanes(20, 12, 13, 0, 1023));
    Texels const blurred = anyBlur(20, 12, 14);
    for (std::int32_t const bits : {1, 3, 5, 6, 31}) {
        for (double const gain : {3.0, 20.0, -3.0})
            EXPECT_TRUE(sharpens(source, blurred, gain, bits)) << gain << " >> " << bits;
    }
}

TEST_F(Gles3FilterSharpnessV16GLTest, BothPassesAreTheUnsharpMaskInBothDirections) {
    Planes3 const pixels = randomPlanes(39, 27, 15, -50, 1100);
    for (double const gain : {1.0, 3.0, -1.0}) {
        Planes3 const result = sharpenedByBothPasses(pixels, gain);
        for (size_t channel = 0; channel < 3; ++channel)
            EXPECT_TRUE(result[channel] == cropped(reference::sharpness16(pixels[channel], gain, 0), 2, 2, 35, 23))
                << "channel " << channel << ", gain " << gain;
    }
}

TEST_F(Gles3FilterSharpnessV16GLTest, FlatImageIsUnchangedAtAnyGain) {
    Planes3 const flat = {Plane(9, 9, std::vector<std::int32_t>(81, 0)),
                          Plane(9, 9, std::vector<std::int32_t>(81, 777)),
                          Plane(9, 9, std::vector<std::int32_t>(81, 1023))};
    Planes3 const result = sharpenedByBothPasses(flat, 30.0);
    for (size_t channel = 0; channel < 3; ++channel)
        EXPECT_TRUE(result[channel] == cropped(flat[channel], 2, 2, 5, 5)) << channel;
}

TEST_F(Gles3FilterSharpnessV16GLTest, AlphaOfTheInputsIsNotRead) {
    EXPECT_TRUE(sharpens(randomTexels(26, 9, 16), randomTexels(26, 9, 17), 1.0));
}

TEST_F(Gles3FilterSharpnessV16GLTest, RowsBeyondTheTextureReadItsEdge) {
    for (int const rows : {1, 2, 3, 6})
        EXPECT_TRUE(sharpensUpToTheEdges(packThreeChannel16(randomPlanes(5, rows, 18)), anyBlur(5, rows, 19), 2.0))
            << rows;
}

TEST_F(Gles3FilterSharpnessV16GLTest, PartsOfInputsThatStandApartLandAtEvenTexelsWhole) {
    Planes3 const pixels = randomPlanes(29, 17, 20, -100, 1100);
    Texels const blurred = anyBlur(25, 17, 21);
    size_t const source = rig.uploaded(pixels);
    size_t const blur = rig.uploaded(blurred, Layout::kThreeChannel16);
    struct Row {
        size_t x;
        size_t y;
        std::array<size_t, 4> clip;
        std::array<size_t, 2> offset;
    };
    for (auto const& row : {Row{0, 0, {0, 0, 0, 0}, {0, 0}}, Row{3, 1, {1, 0, 0, 2}, {2, 3}},
                            Row{6, 3, {0, 3, 4, 1}, {6, 1}}, Row{9, 2, {2, 5, 1, 2}, {4, 5}}}) {
        FilterRun const run{{{source, row.x + 3, row.y, false}, {blur, row.x, row.y, false}},
                            15,
                            13,
                            row.clip[0],
                            row.clip[1],
                            row.clip[2],
                            row.clip[3],
                            row.offset};
        auto const x = static_cast<int>(row.x);
        // What lies side by side in the run, as two images of one size.
        Texels const whole = sharpnessV16(packThreeChannel16(cropped(pixels, x + 3, 0, 15, 17)),
                                          reference::cropped(blurred, 2 * x, 0, 30, 17), 2.0, 0);
        Texels const kept = reference::cropped(
            whole, static_cast<int>(2 * row.clip[0]), static_cast<int>(row.y + 2 + row.clip[2]),
            static_cast<int>(2 * (15 - row.clip[0] - row.clip[1])), static_cast<int>(9 - row.clip[2] - row.clip[3]));
        EXPECT_TRUE(
            rig.givesWithin(description::filterSharpnessV16(), run, kept, Layout::kThreeChannel16, sharpening(2.0)));
    }
}

// Targets of four bytes per pixel count texels as logical pixels: a clip of one is one texel.
TEST_F(Gles3FilterSharpnessV16GLTest, ColumnParityIsThatOfTheLayoutNotOfTheDestination) {
    Texels const source = packThreeChannel16(randomPlanes(10, 4, 22, 0, 1023));
    Texels const blurred = anyBlur(10, 4, 23);
    FilterRun const run{
        {{rig.uploaded(source, Layout::kRgba8), 0, 0, false}, {rig.uploaded(blurred, Layout::kRgba8), 0, 0, false}},
        20,
        4,
        1,
        0,
        0,
        0,
        {0, 0}};
    EXPECT_TRUE(rig.givesWithin(unbordered_, run,
                                reference::cropped(sharpnessV16(source, blurred, 1.0, 0), 1, 0, 19, 4), Layout::kRgba8,
                                sharpening(1.0)));
}

TEST_F(Gles3FilterSharpnessV16GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(sharpensUpToTheEdges(packThreeChannel16(randomPlanes(texels / 2, 2, 24, -50, 1100)),
                                         anyBlur(texels / 2, 2, 25), 2.0))
            << texels;
}

TEST_F(Gles3FilterSharpnessV16GLTest, RecordOfTheEightBitFilterIsRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(8, 1, 1);
    size_t const destination = rig.uploaded(noise, Layout::kThreeChannel16);
    FilterRun const run{
        {{rig.uploaded(randomPlanes(4, 5, 2)), 0, 0, false}, {rig.uploaded(randomPlanes(4, 5, 3)), 0, 0, false}}, 4, 5};
    Filter const filter = rig.instantiated(description::filterSharpnessV16());
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, FilterSharpness8Params()); }),
              "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 8));
}

} // namespace
