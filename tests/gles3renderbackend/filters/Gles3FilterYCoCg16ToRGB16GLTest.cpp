#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/YCoCgR.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/LongRun.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using reference::packThreeChannel16;
using reference::Planes3;
using reference::yCoCg16ToRgb16;

class Gles3FilterYCoCg16ToRGB16GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult transforms(Texels const& yCoCg) {
        return rig.gives(description::filterYCoCg16ToRGB16(), {rig.uploaded(yCoCg, Layout::kThreeChannel16)},
                         yCoCg16ToRgb16(yCoCg), Layout::kThreeChannel16);
    }

    // Clips count pixels, the offset texels.
    ::testing::AssertionResult transformsPart(size_t x, std::array<size_t, 4> const& clip,
                                              std::array<size_t, 2> const& offset) {
        Planes3 const planes = randomPlanes(21, 9, 6, -1000, 1000);
        FilterRun const run{{{rig.uploaded(planes), x, 2, false}}, 11, 6, clip[0], clip[1], clip[2], clip[3], offset};
        Planes3 const kept = cropped(planes, static_cast<int>(x + clip[0]), static_cast<int>(2 + clip[2]),
                                     static_cast<int>(11 - clip[0] - clip[1]), static_cast<int>(6 - clip[2] - clip[3]));
        return rig.givesWithin(description::filterYCoCg16ToRGB16(), run, yCoCg16ToRgb16(packThreeChannel16(kept)),
                               Layout::kThreeChannel16);
    }

    // Colours through both transforms without leaving the GPU.
    ::testing::AssertionResult comesBack(Texels const& rgba) {
        size_t const source = rig.uploaded(rgba, Layout::kRgba8);
        size_t const between = rig.target(Layout::kThreeChannel16, 2 * rgba.width, rgba.height);
        size_t const destination = rig.target(Layout::kThreeChannel16, 2 * rgba.width, rgba.height);
        auto const width = static_cast<size_t>(rgba.width);
        auto const height = static_cast<size_t>(rgba.height);
        rig.run(forward_, {{{source, 0, 0, false}}, width, height}, between);
        rig.run(inverse_, {{{between, 0, 0, false}}, width, height}, destination);
        Texels expected(2 * rgba.width, rgba.height);
        for (size_t i = 0; i < rgba.bytes.size() / 4; ++i) {
            std::uint8_t const* const pixel = &rgba.bytes[4 * i];
            std::array<std::uint8_t, 8> const texels = {pixel[0], 0, pixel[1], 255, 0, pixel[2], 0, 255};
            std::copy(texels.begin(), texels.end(), expected.bytes.begin() + static_cast<std::ptrdiff_t>(8 * i));
        }
        auto const result = pixelsEqual(rig.read(destination).bytes, expected.bytes, 2 * width);
        for (size_t const used : {source, between, destination})
            rig.instance()->eraseTarget(used);
        return result;
    }

    Filter forward_ = rig.instantiated(description::filterRGBA8ToYCoCg16());
    Filter inverse_ = rig.instantiated(description::filterYCoCg16ToRGB16());
};

TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, RoundTripIsLosslessForASampleOfAllColours) {
    EXPECT_TRUE(comesBack(Texels(4, 1, {255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 255, 255, 255, 255})));
    EXPECT_TRUE(comesBack(randomColours(1)));
    EXPECT_TRUE(comesBack(randomColours(2)));
}

TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, RoundTripIsLosslessForEveryColour) {
    if (!isLongRun()) GTEST_SKIP() << "all 2^24 colours: VELMORA_LONG is not set";
    for (std::uint32_t part = 0; part < kColourParts; ++part)
        ASSERT_TRUE(comesBack(colours(part))) << part;
}

TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, EverySampleOfEveryChannelIsExact) {
    for (size_t channel = 0; channel < 3; ++channel)
        EXPECT_TRUE(transforms(packThreeChannel16(everySampleOfChannel(channel, 10)))) << channel;
}

TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, BoundariesAreExact) {
    EXPECT_TRUE(transforms(packThreeChannel16(boundaryTriples())));
}

TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, AlphaOfTheInputIsNotRead) {
    EXPECT_TRUE(transforms(randomTexels(64, 16, 5)));
}

TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, HalvesRoundDownAndResultsKeepTheirSign) {
    Planes3 const yCoCg = {reference::Plane(3, 1, {0, 0, -7}), reference::Plane(3, 1, {0, -3, 1}),
                           reference::Plane(3, 1, {-3, 0, -1})};
    size_t const destination = rig.target(Layout::kThreeChannel16, 6, 1);
    rig.run(inverse_, {{{rig.uploaded(yCoCg), 0, 0, false}}, 3, 1}, destination);
    Planes3 const rgb = unpackThreeChannel16(rig.read(destination));
    // Cg = -3: t = 2, G = -1, B = R = 2. Co = -3: t = 0, B = 2, R = -1.
    // Co = 1, Cg = -1: t = -6, G = -7, B = -6, R = -5.
    EXPECT_EQ(rgb[0].samples, (std::vector<std::int32_t>{2, -1, -5}));
    EXPECT_EQ(rgb[1].samples, (std::vector<std::int32_t>{-1, 0, -7}));
    EXPECT_EQ(rgb[2].samples, (std::vector<std::int32_t>{2, 2, -6}));
}

TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, PartsLandAtEvenTexelsWhole) {
    EXPECT_TRUE(transformsPart(0, {0, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(transformsPart(7, {0, 0, 0, 0}, {2, 1}));
    EXPECT_TRUE(transformsPart(4, {3, 2, 1, 1}, {6, 3}));
    EXPECT_TRUE(transformsPart(5, {1, 0, 0, 3}, {4, 2}));
}

// The parity counts from the clip, so a run that starts at the second texel of a pixel writes that half first.
TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, ColumnParityIsThatOfTheLayoutNotOfTheDestination) {
    Texels const yCoCg = packThreeChannel16(randomPlanes(8, 5, 3, -300, 300));
    Texels const whole = yCoCg16ToRgb16(yCoCg);
    // A target of four bytes per pixel counts texels as logical pixels: a clip of one is one texel.
    size_t const source = rig.uploaded(yCoCg, Layout::kRgba8);
    FilterRun const run{{{source, 0, 0, false}}, 16, 5, 1, 0, 0, 0, {0, 0}};
    EXPECT_TRUE(rig.givesWithin(description::filterYCoCg16ToRGB16(), run, cropped(whole, 1, 0, 15, 5), Layout::kRgba8));
    FilterRun const shifted{{{source, 0, 0, false}}, 16, 5, 3, 2, 1, 0, {2, 1}};
    EXPECT_TRUE(
        rig.givesWithin(description::filterYCoCg16ToRGB16(), shifted, cropped(whole, 3, 1, 11, 4), Layout::kRgba8));
}

TEST_F(Gles3FilterYCoCg16ToRGB16GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(transforms(packThreeChannel16(randomPlanes(texels / 2, 2, 9)))) << texels;
}

} // namespace
