#include "apps/velmora/view/PixelText.h"

#include <gtest/gtest.h>

#include <limits>

TEST(PixelTextTest, SamplesAreThoseOfTheirType) {
    EXPECT_EQ(pixeltext::ofSamples({450, 7}, {203, 65535, 0}, SampleType::Unsigned16), "450, 7: 203 65535 0");
    EXPECT_EQ(pixeltext::ofSamples({0, 0}, {-4294967296.0 / 2}, SampleType::Signed32), "0, 0: -2147483648");
    EXPECT_EQ(pixeltext::ofSamples({0, 0}, {static_cast<double>(0.1F)}, SampleType::Float32), "0, 0: 0.1");
    EXPECT_EQ(pixeltext::ofSamples({0, 0}, {0.1}, SampleType::Float64), "0, 0: 0.1");
    EXPECT_EQ(pixeltext::ofSamples({0, 0}, {std::numeric_limits<double>::quiet_NaN()}, SampleType::Float32),
              "0, 0: nan");
}

TEST(PixelTextTest, ColoursAreThoseThatAreShown) {
    EXPECT_EQ(pixeltext::ofColour({1, 2}, {255, 0, 9}), "1, 2: 255 0 9");
}

TEST(PixelTextTest, DotsStandForWhatIsNotReadYet) {
    EXPECT_EQ(pixeltext::before({123456, 2}), "123456, 2: ...");
}
