#include "host/view/Zoom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace {

constexpr size_t kLevels = 7;

// Every magnification of a store of kLevels levels.
std::vector<Zoom> allZooms() {
    std::vector<Zoom> zooms;
    for (size_t pixels = 1; pixels <= Zoom::kLargest; ++pixels)
        zooms.push_back(Zoom::nearest(static_cast<double>(pixels), kLevels));
    for (size_t level = 0; level <= kLevels; ++level) {
        for (double samples = 32; samples < 64; ++samples)
            zooms.push_back(Zoom::nearest(std::ldexp(32 / samples, -static_cast<int>(level)), kLevels));
    }
    return zooms;
}

} // namespace

TEST(ZoomTest, WholeNumbersShowThePicturesOwnSamples) {
    Zoom const zoom = Zoom::nearest(3.2, kLevels);
    EXPECT_EQ(zoom.level(), 0U);
    EXPECT_EQ(zoom.pixels(), 3U);
    EXPECT_EQ(zoom.samples(), 1U);
    EXPECT_EQ(zoom.value(), 3.0);
}

TEST(ZoomTest, HalvingsShowALevelAsItIs) {
    for (size_t level = 0; level <= kLevels; ++level) {
        Zoom const zoom = Zoom::nearest(std::ldexp(1.0, -static_cast<int>(level)), kLevels);
        EXPECT_EQ(zoom.level(), level);
        EXPECT_TRUE(zoom.isWhole());
        EXPECT_EQ(zoom.value(), std::ldexp(1.0, -static_cast<int>(level)));
    }
}

TEST(ZoomTest, BetweenHalvingsTheFinerLevelIsShownSmaller) {
    Zoom const zoom = Zoom::nearest(0.4, kLevels);
    EXPECT_EQ(zoom.level(), 1U);
    EXPECT_EQ(zoom.value(), 0.4); // 32 pixels to 40 samples of half the size
}

TEST(ZoomTest, NearestIsWithinTwoPerCentBelowOne) {
    for (double wanted = 1.0; wanted > 0.005; wanted *= 0.997) {
        double const got = Zoom::nearest(wanted, kLevels).value();
        EXPECT_NEAR(got / wanted, 1.0, 0.017) << wanted;
    }
}

TEST(ZoomTest, TooLargeAndTooSmallEndAtTheLimits) {
    EXPECT_EQ(Zoom::nearest(1e9, kLevels).value(), 32.0);
    EXPECT_EQ(Zoom::nearest(1e-9, kLevels).value(), 32.0 / 63 / 128);
    EXPECT_EQ(Zoom::nearest(1e-9, 1).level(), 1U);
}

// The reason for these ratios.
TEST(ZoomTest, NoPixelsMiddleIsNearerToABorderOfSamplesThanA64th) {
    for (Zoom const& zoom : allZooms()) {
        for (size_t pixel = 0; pixel < 256; ++pixel) {
            double const place = (static_cast<double>(pixel) + 0.5) * static_cast<double>(zoom.samples()) /
                                 static_cast<double>(zoom.pixels());
            EXPECT_GE(std::abs(place - std::round(place)), 1.0 / 64) << zoom.value() << ", pixel " << pixel;
            EXPECT_EQ(zoom.sampleAt(pixel), static_cast<size_t>(place)) << zoom.value() << ", pixel " << pixel;
        }
    }
}

TEST(ZoomTest, PixelsOfCountsThePixelsThatShowTheFirstSamples) {
    for (Zoom const& zoom : allZooms()) {
        size_t pixel = 0;
        for (size_t samples = 0; samples < 300; ++samples) {
            while (zoom.sampleAt(pixel) < samples)
                ++pixel;
            ASSERT_EQ(zoom.pixelsOf(samples), pixel) << zoom.value() << ", " << samples << " samples";
        }
    }
}

TEST(ZoomTest, APictureOfOneSampleHasAPixelAtAnyZoom) {
    for (Zoom const& zoom : allZooms())
        EXPECT_GE(zoom.pixelsOf(1), 1U) << zoom.value();
}

TEST(ZoomTest, AStepThatWasNotAskedForIsNamed) {
    EXPECT_EQ(Zoom::nearest(0.75, 4).noteFor(0.75), "zoom 0.744186, the nearest step to 0.75");
    EXPECT_EQ(Zoom::nearest(2.4, 4).noteFor(2.4), "zoom 2, the nearest step to 2.4");
    EXPECT_EQ(Zoom::nearest(100, 4).noteFor(100), "zoom 32, the nearest step to 100");
    for (double const asked : {1.0, 2.0, 0.5, 0.25, 0.4, 0.744186, 32.0 / 43})
        EXPECT_EQ(Zoom::nearest(asked, 4).noteFor(asked), "") << asked;
}
