#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "reference/Sharpness8.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using backendtest::failureOf;
using reference::cropped;

FilterSharpness8Params sharpening(double gain, std::int32_t shiftBits = 0) {
    FilterSharpness8Params params;
    params.gain = gain;
    params.shiftBits = shiftBits;
    return params;
}

class Gles3FilterSharpness8GLTest : public FilterGLTest {
protected:
    ::testing::AssertionResult sharpens(Texels const& image, double gain, std::int32_t shiftBits = 0) {
        return rig.gives(
            description::filterSharpness8(), {rig.uploaded(image, Layout::kRgba8)},
            cropped(reference::sharpness8(image, gain, shiftBits), 2, 2, image.width - 4, image.height - 4),
            Layout::kRgba8, sharpening(gain, shiftBits));
    }

    // Without borders: taps beyond the texture read its edge.
    ::testing::AssertionResult sharpensUpToTheEdges(Texels const& image, double gain) {
        return rig.gives(backendtest::namedFilter("FilterSharpness8"), {rig.uploaded(image, Layout::kRgba8)},
                         reference::sharpness8(image, gain, 0), Layout::kRgba8, sharpening(gain));
    }

    Texels sharpened(Texels const& image, double gain) {
        size_t const destination = rig.target(Layout::kRgba8, image.width, image.height);
        rig.run(rig.instantiated(backendtest::namedFilter("FilterSharpness8")),
                {{{rig.uploaded(image, Layout::kRgba8), 0, 0, false}},
                 static_cast<size_t>(image.width),
                 static_cast<size_t>(image.height)},
                destination, sharpening(gain));
        return rig.read(destination);
    }
};

Texels flat(int width, int height, reference::Texel const& texel) {
    Texels texels(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            texels.set(x, y, texel);
    }
    return texels;
}

TEST_F(Gles3FilterSharpness8GLTest, NoiseIsExactAtEveryGain) {
    Texels const image = randomTexels(53, 37, 1);
    for (double const gain :
         {0.0, 0.04, 0.25, 1.0, 1.7, 3.96875, 7.0, 24.0, 25.3, 700.0, 6e7, -0.04, -0.5, -1.0, -31.0, -6e7})
        EXPECT_TRUE(sharpens(image, gain)) << gain;
}

TEST_F(Gles3FilterSharpness8GLTest, GentleSlopesAreExactAtEveryStepOfTheGain) {
    // Differences too small for the clamp to hide a wrong rounding.
    Texels image = randomTexels(41, 29, 2);
    for (auto& byte : image.bytes)
        byte = static_cast<std::uint8_t>(120 + byte % 17);
    for (int steps = -40; steps <= 40; ++steps)
        ASSERT_TRUE(sharpens(image, steps / 32.0)) << steps;
}

// Lone pixels, 5 x 5 texels each, in surroundings of one value: every centre in 16 surroundings.
TEST_F(Gles3FilterSharpness8GLTest, EveryCentreInManySurroundingsIsExact) {
    Texels image(80, 1280);
    for (int cellY = 0; cellY < 256; ++cellY) {
        for (int cellX = 0; cellX < 16; ++cellX) {
            auto const around = static_cast<std::uint8_t>(17 * cellX);
            auto const centre = static_cast<std::uint8_t>(cellY);
            for (int y = 0; y < 5; ++y) {
                for (int x = 0; x < 5; ++x) {
                    std::uint8_t const value = x == 2 && y == 2 ? centre : around;
                    image.set(5 * cellX + x, 5 * cellY + y, {value, value, around, value});
                }
            }
        }
    }
    EXPECT_TRUE(sharpens(image, 1.0));
    EXPECT_TRUE(sharpens(image, 0.65));
}

TEST_F(Gles3FilterSharpness8GLTest, FlatImageIsUnchangedAtAnyGain) {
    for (reference::Texel const& texel : {reference::Texel{0, 1, 127, 128}, {254, 255, 3, 77}}) {
        for (double const gain : {0.5, 1.0, 1000.0, 6e7, -6e7})
            EXPECT_TRUE(pixelsEqual(sharpened(flat(9, 7, texel), gain).bytes, flat(9, 7, texel).bytes, 9)) << gain;
    }
}

// 64 more in the middle of 128: 192 + 84 * 64 / 128 = 234; 128 - 15/2 + 1/2 -> 121; 128 - 5/2 + 1/2 -> 126; 128 - 1/2 + 1/2.
TEST_F(Gles3FilterSharpness8GLTest, WeightsOfALonePixelAreThoseOfTheTaps) {
    Texels image = flat(7, 7, {128, 128, 128, 128});
    image.set(3, 3, {192, 128, 192, 192});
    Texels const result = sharpened(image, 1.0);
    std::array<std::array<int, 7>, 7> const expected = {{{128, 128, 128, 128, 128, 128, 128},
                                                         {128, 128, 128, 128, 128, 128, 128},
                                                         {128, 128, 126, 121, 126, 128, 128},
                                                         {128, 128, 121, 234, 121, 128, 128},
                                                         {128, 128, 126, 121, 126, 128, 128},
                                                         {128, 128, 128, 128, 128, 128, 128},
                                                         {128, 128, 128, 128, 128, 128, 128}}};
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 7; ++x) {
            auto const value = static_cast<std::uint8_t>(expected[static_cast<size_t>(y)][static_cast<size_t>(x)]);
            EXPECT_EQ(result.at(x, y), (reference::Texel{value, 128, value, value})) << x << ", " << y;
        }
    }
    // The outermost taps weigh 1/128 and show at twice the gain: 128 - 1 + 1/2.
    EXPECT_EQ(sharpened(image, 2.0).at(3, 1)[0], 127);
    EXPECT_EQ(sharpened(image, 2.0).at(5, 3)[0], 127);
    EXPECT_EQ(sharpened(image, 2.0).at(4, 1)[0], 128);
}

TEST_F(Gles3FilterSharpness8GLTest, GainMovesInStepsOfOneThirtySecondTowardZero) {
    Texels const image = randomTexels(23, 19, 5);
    Texels const oneStep = sharpened(image, 1.0 / 32.0);
    EXPECT_TRUE(pixelsEqual(sharpened(image, 0.04).bytes, oneStep.bytes, 23));
    EXPECT_TRUE(pixelsEqual(sharpened(image, -0.04).bytes, sharpened(image, -1.0 / 32.0).bytes, 23));
    EXPECT_TRUE(pixelsEqual(sharpened(image, 0.031).bytes, image.bytes, 23));
    EXPECT_TRUE(pixelsEqual(sharpened(image, -0.031).bytes, image.bytes, 23));
    EXPECT_FALSE(oneStep == image);
}

TEST_F(Gles3FilterSharpness8GLTest, EachShiftBitHalvesTheGainRoundedDown) {
    Texels const image = randomTexels(23, 19, 6);
    for (std::int32_t const bits : {1, 2, 5, 31}) {
        for (double const gain : {1.7, -1.7, 100.0})
            EXPECT_TRUE(sharpens(image, gain, bits)) << gain << " >> " << bits;
    }
}

TEST_F(Gles3FilterSharpness8GLTest, TapsBeyondTheTextureReadItsEdge) {
    for (auto const& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 3}, {3, 2}, {17, 13}})
        EXPECT_TRUE(sharpensUpToTheEdges(randomTexels(width, height, 7), 1.5)) << width << " x " << height;
}

TEST_F(Gles3FilterSharpness8GLTest, PartsLandAnywhere) {
    Texels const image = randomTexels(31, 23, 8);
    Texels const whole = reference::sharpness8(image, 1.25, 0);
    size_t const source = rig.uploaded(image, Layout::kRgba8);
    struct Row {
        size_t x;
        size_t y;
        std::array<size_t, 4> clip;
        std::array<size_t, 2> offset;
    };
    for (auto const& row : {Row{0, 0, {0, 0, 0, 0}, {1, 1}}, Row{3, 5, {1, 0, 0, 2}, {0, 3}},
                            Row{8, 2, {0, 3, 5, 1}, {7, 0}}, Row{11, 9, {4, 5, 2, 2}, {2, 5}}}) {
        FilterRun const run{
            {{source, row.x, row.y, false}}, 20, 14, row.clip[0], row.clip[1], row.clip[2], row.clip[3], row.offset};
        Texels const kept =
            cropped(whole, static_cast<int>(row.x + 2 + row.clip[0]), static_cast<int>(row.y + 2 + row.clip[2]),
                    static_cast<int>(16 - row.clip[0] - row.clip[1]), static_cast<int>(10 - row.clip[2] - row.clip[3]));
        EXPECT_TRUE(rig.givesWithin(description::filterSharpness8(), run, kept, Layout::kRgba8, sharpening(1.25)));
    }
}

TEST_F(Gles3FilterSharpness8GLTest, WidestTargetsAreExact) {
    for (int const texels : {8192, FilterRig::maxTextureSize()})
        EXPECT_TRUE(sharpensUpToTheEdges(randomTexels(texels, 3, 9), 1.0)) << texels;
}

TEST_F(Gles3FilterSharpness8GLTest, RecordOfTheSixteenBitFilterIsRefusedAndNothingIsDrawn) {
    Texels const noise = randomTexels(4, 4, 1);
    size_t const destination = rig.uploaded(noise, Layout::kRgba8);
    FilterRun const run{{{rig.uploaded(randomTexels(8, 8, 2), Layout::kRgba8), 0, 0, false}}, 8, 8};
    Filter const filter = rig.instantiated(description::filterSharpness8());
    EXPECT_EQ(failureOf([&] { rig.run(filter, run, destination, FilterSharpness16Params()); }),
              "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    EXPECT_TRUE(pixelsEqual(rig.read(destination).bytes, noise.bytes, 4));
}

} // namespace
