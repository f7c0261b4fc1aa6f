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
using reference::Plane;
using reference::Planes3;
using reference::yCoCg16ToRgba8;

class Gles3FilterYCoCg16ToRGBA8GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult transforms(Texels const& yCoCg) {
        return rig.gives(description::filterYCoCg16ToRGBA8(), {rig.uploaded(yCoCg, Layout::kThreeChannel16)},
                         yCoCg16ToRgba8(yCoCg), Layout::kRgba8);
    }

    ::testing::AssertionResult transformsPart(size_t x, std::array<size_t, 4> const& clip,
                                              std::array<size_t, 2> const& offset) {
        Planes3 const planes = randomPlanes(21, 9, 6, -100, 300);
        FilterRun const run{{{rig.uploaded(planes), x, 2, false}}, 11, 6, clip[0], clip[1], clip[2], clip[3], offset};
        Planes3 const kept = cropped(planes, static_cast<int>(x + clip[0]), static_cast<int>(2 + clip[2]),
                                     static_cast<int>(11 - clip[0] - clip[1]), static_cast<int>(6 - clip[2] - clip[3]));
        return rig.givesWithin(description::filterYCoCg16ToRGBA8(), run, yCoCg16ToRgba8(packThreeChannel16(kept)),
                               Layout::kRgba8);
    }

    ::testing::AssertionResult comesBack(Texels rgba) {
        size_t const source = rig.uploaded(rgba, Layout::kRgba8);
        size_t const between = rig.target(Layout::kThreeChannel16, 2 * rgba.width, rgba.height);
        size_t const destination = rig.target(Layout::kRgba8, rgba.width, rgba.height);
        auto const width = static_cast<size_t>(rgba.width);
        auto const height = static_cast<size_t>(rgba.height);
        rig.run(forward_, {{{source, 0, 0, false}}, width, height}, between);
        rig.run(inverse_, {{{between, 0, 0, false}}, width, height}, destination);
        for (size_t i = 3; i < rgba.bytes.size(); i += 4)
            rgba.bytes[i] = 255;
        auto const result = pixelsEqual(rig.read(destination).bytes, rgba.bytes, width);
        for (size_t const used : {source, between, destination})
            rig.instance()->eraseTarget(used);
        return result;
    }

    std::vector<std::uint8_t> pixel(std::int32_t y, std::int32_t co, std::int32_t cg) {
        size_t const source = rig.uploaded(Planes3{Plane(1, 1, {y}), Plane(1, 1, {co}), Plane(1, 1, {cg})});
        size_t const destination = rig.target(Layout::kRgba8, 1, 1);
        rig.run(inverse_, {{{source, 0, 0, false}}, 1, 1}, destination);
        return rig.read(destination).bytes;
    }

    Filter forward_ = rig.instantiated(description::filterRGBA8ToYCoCg16());
    Filter inverse_ = rig.instantiated(description::filterYCoCg16ToRGBA8());
};

using Bytes = std::vector<std::uint8_t>;

TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, ResultsAreClampedNeverWrapped) {
    EXPECT_EQ(pixel(300, 0, 0), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(pixel(-1, 0, 0), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(pixel(32767, 32767, 32767), (Bytes{255, 255, 1, 255}));
    EXPECT_EQ(pixel(-32768, 32767, -32768), (Bytes{0, 0, 0, 255}));
}

// -3 halves to -2, -1 to -1, 3 to 1.
TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, HalvesRoundDown) {
    EXPECT_EQ(pixel(100, 0, -3), (Bytes{102, 99, 102, 255}));
    EXPECT_EQ(pixel(100, 0, -1), (Bytes{101, 100, 101, 255}));
    EXPECT_EQ(pixel(100, 0, 3), (Bytes{99, 102, 99, 255}));
    EXPECT_EQ(pixel(100, -3, 0), (Bytes{99, 100, 102, 255}));
    EXPECT_EQ(pixel(100, -1, 0), (Bytes{100, 100, 101, 255}));
    EXPECT_EQ(pixel(100, 3, 0), (Bytes{102, 100, 99, 255}));
}

TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, RoundTripIsLosslessForASampleOfAllColours) {
    EXPECT_TRUE(comesBack(randomColours(3)));
    EXPECT_TRUE(comesBack(randomColours(4)));
}

TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, RoundTripIsLosslessForEveryColour) {
    if (!isLongRun()) GTEST_SKIP() << "all 2^24 colours: VELMORA_LONG is not set";
    for (std::uint32_t part = 0; part < kColourParts; ++part)
        ASSERT_TRUE(comesBack(colours(part))) << part;
}

// High bytes are neither 0 nor 255 here: values far outside of what the forward transform yields.
TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, EverySampleOfEveryChannelIsExact) {
    for (size_t channel = 0; channel < 3; ++channel) {
        Planes3 planes = randomPlanes(256, 256, 10, -300, 300);
        planes[channel] = everySample();
        EXPECT_TRUE(transforms(packThreeChannel16(planes))) << channel;
    }
    EXPECT_TRUE(transforms(packThreeChannel16(randomPlanes(200, 100, 11))));
}

// Large coefficients that meet in the range of a byte, where every unit shows.
TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, LargeCoefficientsThatCancelAreExact) {
    Planes3 const rgb = randomPlanes(256, 128, 12, -20, 275);
    Planes3 yCoCg = randomPlanes(256, 128, 13, -16000, 16000);
    for (size_t i = 0; i < rgb[0].samples.size(); ++i) {
        // Y so that green, or blue in every other pixel, becomes what rgb says.
        std::int32_t const halfCg = (yCoCg[2].samples[i] + 32768) / 2 - 16384;
        std::int32_t const halfCo = (yCoCg[1].samples[i] + 32768) / 2 - 16384;
        std::int32_t const y =
            i % 2 == 0 ? rgb[1].samples[i] - yCoCg[2].samples[i] + halfCg : rgb[2].samples[i] + halfCo + halfCg;
        yCoCg[0].samples[i] = y;
    }
    EXPECT_TRUE(transforms(packThreeChannel16(yCoCg)));
}

TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, BoundariesAreExact) {
    EXPECT_TRUE(transforms(packThreeChannel16(boundaryTriples())));
}

TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, AlphaOfTheInputIsNotRead) {
    EXPECT_TRUE(transforms(randomTexels(64, 16, 5)));
}

TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, PartsLandAtAnyPixel) {
    EXPECT_TRUE(transformsPart(0, {0, 0, 0, 0}, {0, 0}));
    EXPECT_TRUE(transformsPart(7, {0, 0, 0, 0}, {1, 1}));
    EXPECT_TRUE(transformsPart(4, {3, 2, 1, 1}, {6, 3}));
    EXPECT_TRUE(transformsPart(5, {1, 0, 0, 3}, {5, 2}));
}

TEST_F(Gles3FilterYCoCg16ToRGBA8GLTest, WidestInputsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(transforms(packThreeChannel16(randomPlanes(texels / 2, 2, 9, -300, 300)))) << texels;
}

} // namespace
