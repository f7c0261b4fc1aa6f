#include "reference/Sharpness16.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace reference;

TEST(Sharpness16Test, OnlyWholeGainsCount) {
    EXPECT_EQ(sharpness16Gain(1.0, 0), 32);
    EXPECT_EQ(sharpness16Gain(1.9, 0), 32);
    EXPECT_EQ(sharpness16Gain(0.9, 0), 0);
    EXPECT_EQ(sharpness16Gain(-1.9, 0), -32);
    EXPECT_EQ(sharpness16Gain(3.0, 0), 96);
}

TEST(Sharpness16Test, EachShiftHalvesTheGainKeepingTheSign) {
    EXPECT_EQ(sharpness16Gain(1.0, 1), 16);
    EXPECT_EQ(sharpness16Gain(3.0, 6), 1);
    EXPECT_EQ(sharpness16Gain(-1.0, 6), -1);
}

TEST(Sharpness16Test, SourceIsReadAsTenBits) {
    EXPECT_EQ(clampTo10Bits(-1), 0);
    EXPECT_EQ(clampTo10Bits(-32768), 0);
    EXPECT_EQ(clampTo10Bits(1023), 1023);
    EXPECT_EQ(clampTo10Bits(1024), 1023);
    EXPECT_EQ(clampTo10Bits(2000), 1023);
}

TEST(Sharpness16Test, HorizontalBlurOfFullScaleIs65472) {
    Plane const white(8, 1, std::vector<std::int32_t>(8, 2000));
    Texels const out = sharpnessH16(packThreeChannel16({white, white, white}));
    Planes3 const blur = unpackThreeChannel16Unsigned(out);
    EXPECT_EQ(blur[0].at(3, 0), 65472);
    EXPECT_EQ(out.at(6, 0), (Texel{192, 255, 192, 255}));
}

TEST(Sharpness16Test, HorizontalWeightsAre1And13And36And13And1) {
    Plane spike(9, 1);
    spike.at(4, 0) = 100;
    Plane const black(9, 1);
    Planes3 const blur = unpackThreeChannel16Unsigned(sharpnessH16(packThreeChannel16({black, spike, black})));
    EXPECT_EQ(blur[1].samples, (std::vector<std::int32_t>{0, 0, 100, 1300, 3600, 1300, 100, 0, 0}));
    EXPECT_EQ(blur[0].samples, black.samples);
}

// One pixel (5, 7, 9): texels (5, 0, 7) and (0, 9, 0). Both taps on the left read texel 0 twice: 5, 7 + 256 * 5 and
// 256 * 7, the latter two clamped to 1023. Both on the right read texel 1 twice: 256 * 9 clamped, 0 and 9.
TEST(Sharpness16Test, TapsOutsideFindTheEdgeTexelInPlaceOfBothHalves) {
    Texels const pixel = packThreeChannel16({Plane(1, 1, {5}), Plane(1, 1, {7}), Plane(1, 1, {9})});
    Planes3 const blur = unpackThreeChannel16Unsigned(sharpnessH16(pixel));
    EXPECT_EQ(blur[0].at(0, 0), 14 * 5 + 36 * 5 + 14 * 1023);
    EXPECT_EQ(blur[1].at(0, 0), 14 * 1023 + 36 * 7 + 14 * 0);
    EXPECT_EQ(blur[2].at(0, 0), 14 * 1023 + 36 * 9 + 14 * 9);
}

// Spike of 100 over 500 at gain 1: centre 100 * (4096 - 36 * 36)/4096 = 68.4; beside it -13 * 36 * 100/4096 = -11.4;
// diagonal -13 * 13 * 100/4096 = -4.1; two away -36 * 100/4096 = -0.9; a knight's move away -13 * 100/4096 = -0.3.
TEST(Sharpness16Test, SpikeShowsTheProductOfTheWeights) {
    Plane image(9, 9, std::vector<std::int32_t>(81, 500));
    image.at(4, 4) = 600;
    Plane const out = sharpness16(image, 1.0, 0);
    EXPECT_EQ(out.at(4, 4), 668);
    EXPECT_EQ(out.at(3, 4), 489);
    EXPECT_EQ(out.at(4, 5), 489);
    EXPECT_EQ(out.at(3, 3), 496);
    EXPECT_EQ(out.at(2, 4), 499);
    EXPECT_EQ(out.at(2, 3), 500);
    EXPECT_EQ(out.at(0, 0), 500);
}

TEST(Sharpness16Test, ResultIsNotClamped) {
    Plane image(9, 9);
    image.at(4, 4) = 1023;
    Plane const out = sharpness16(image, 4.0, 0);
    // 1023 + floor(4 * 1023 * 2800/4096 + 0.5) = 1023 + 2797; beside it floor(-4 * 1023 * 468/4096 + 0.5) = -468
    EXPECT_EQ(out.at(4, 4), 3820);
    EXPECT_EQ(out.at(3, 4), -468);
}

TEST(Sharpness16Test, HalvesGoUp) {
    EXPECT_EQ(sharpened16(10, 4096 * 10 - 2048, 32), 11);
    EXPECT_EQ(sharpened16(10, 4096 * 10 + 2048, 32), 10);
    EXPECT_EQ(sharpened16(10, 4096 * 10 + 2049, 32), 9);
}

TEST(Sharpness16Test, GainBelowOneReturnsTheClampedSource) {
    Plane const image(6, 1, {-5, 2000, 3, 1023, 1024, -32768});
    EXPECT_EQ(sharpness16(image, 0.9, 0), Plane(6, 1, {0, 1023, 3, 1023, 1023, 0}));
    Texels const source = packThreeChannel16({image, image, image});
    Texels const out = sharpnessV16(source, sharpnessH16(source), 0.9, 0);
    EXPECT_EQ(unpackThreeChannel16(out)[1], Plane(6, 1, {0, 1023, 3, 1023, 1023, 0}));
}

TEST(Sharpness16Test, TwoPassesEqualTheTextbookFormInsideTheEdges) {
    std::mt19937 random(16);
    Planes3 channels{Plane(13, 7), Plane(13, 7), Plane(13, 7)};
    for (Plane& channel : channels) {
        for (std::int32_t& sample : channel.samples)
            sample = static_cast<std::int32_t>(random() % 1400) - 200;
    }
    Texels const source = packThreeChannel16(channels);
    for (double const gain : {1.9, 3.0, -2.0}) {
        Planes3 const out = unpackThreeChannel16(sharpnessV16(source, sharpnessH16(source), gain, 0));
        for (size_t c = 0; c < 3; ++c) {
            Plane const expected = sharpness16(channels[c], gain, 0);
            for (int y = 0; y < 7; ++y) {
                for (int x = 2; x < 11; ++x)
                    ASSERT_EQ(out[c].at(x, y), expected.at(x, y)) << x << ", " << y;
            }
        }
    }
}

} // namespace
