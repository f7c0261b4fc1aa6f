#include "host/view/Camera.h"

#include "tests/host/view/StoreInfoOf.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

Camera camera(size_t width, size_t height, Size const& frame = {800, 600}) {
    return {storeInfoOf(width, height), frame};
}

bool wholeIsSeen(Camera const& camera) {
    View const view = camera.view();
    Size const size = camera.size();
    return view.x <= 0 && view.y <= 0 && view.x + static_cast<std::int64_t>(view.width - size.width) >= 0 &&
           view.y + static_cast<std::int64_t>(view.height - size.height) >= 0 && size.width <= view.width &&
           size.height <= view.height;
}

void expectMiddleInPicture(Camera const& camera) {
    Camera const& c = camera;
    EXPECT_TRUE(c.pixelAt(c.middle())) << "zoom " << c.zoom().value() << " at " << c.view().x << ", " << c.view().y;
}

} // namespace

TEST(CameraTest, StartsWithTheWholePictureInTheMiddle) {
    for (auto const& size : {Size{16384, 16384}, Size{1, 5000}, Size{5000, 1}, Size{1, 1}, Size{799, 600},
                             Size{801, 600}, Size{100000, 333}}) {
        Camera const c = camera(size.width, size.height);
        EXPECT_TRUE(wholeIsSeen(c)) << size.width << " x " << size.height << ", zoom " << c.zoom().value();
        std::int64_t const left = -c.view().x;
        auto const right = static_cast<std::int64_t>(800 - c.size().width) - left;
        EXPECT_LE(std::abs(left - right), 1) << size.width << " x " << size.height;
    }
}

TEST(CameraTest, FitsAsLargeAsThereIsAZoom) {
    EXPECT_EQ(camera(1, 1).zoom().value(), Zoom::kLargest);
    EXPECT_EQ(camera(100, 100).zoom().value(), 6);
    EXPECT_EQ(camera(800, 600).zoom().value(), 1);
    EXPECT_LT(camera(801, 600).zoom().value(), 1);
    Camera const c = camera(16384, 12288);
    EXPECT_LE(c.size().width, 800u);
    EXPECT_GE(c.size().width, 775u) << "a step of the zoom is a 32nd at most";
}

TEST(CameraTest, PansByWholePixelsOfTheFrame) {
    Camera c = camera(5000, 4000);
    c.magnifyTo(1, c.middle());
    View const before = c.view();
    c.pan(7, -13);
    EXPECT_EQ(c.view().x, before.x - 7) << "the picture goes where the hand goes";
    EXPECT_EQ(c.view().y, before.y + 13);
    EXPECT_EQ(c.zoom(), before.zoom);
}

TEST(CameraTest, APlaceStaysUnderTheCursor) {
    Camera c = camera(16384, 16384);
    Place const cursor{123, 456};
    Place const before = c.pictureAt(cursor);
    for (int const quarters : {1, 1, 5, -2, 9, -3, 4, 2}) {
        c.zoomByQuarterOctaves(quarters, cursor);
        Place const now = c.frameAt(before);
        EXPECT_NEAR(now.x, cursor.x, 0.5 + 1e-6) << c.zoom().value();
        EXPECT_NEAR(now.y, cursor.y, 0.5 + 1e-6);
    }
}

TEST(CameraTest, ZoomsOfLessThanAStepAddUp) {
    Camera c = camera(5000, 5000);
    c.magnifyTo(1, c.middle());
    for (int i = 0; i < 100; ++i)
        c.magnify(1.01, c.middle());
    EXPECT_EQ(c.zoom().value(), std::round(std::pow(1.01, 100)));
}

TEST(CameraTest, EveryStepIsSeenUntilTheLimits) {
    Camera c = camera(5000, 5000);
    double before = c.zoom().value();
    while (before < Zoom::kLargest) {
        c.zoomByQuarterOctaves(1, c.middle());
        ASSERT_GT(c.zoom().value(), before);
        before = c.zoom().value();
    }
    c.zoomByQuarterOctaves(40, c.middle());
    EXPECT_EQ(c.zoom().value(), Zoom::kLargest);
    double const fitting = camera(5000, 5000).zoom().value();
    while (before > fitting * 0.51) {
        c.zoomByQuarterOctaves(-1, c.middle());
        ASSERT_LT(c.zoom().value(), before);
        before = c.zoom().value();
    }
    c.zoomByQuarterOctaves(-40, c.middle());
    EXPECT_NEAR(c.zoom().value(), fitting / 2, fitting / 64);
}

TEST(CameraTest, SmallPicturesAreShownPixelForPixelToo) {
    for (auto const& size : {Size{1, 1}, Size{50, 30}, Size{1, 5000}}) {
        Camera c = camera(size.width, size.height);
        c.magnifyTo(1, c.middle());
        EXPECT_EQ(c.zoom(), Zoom());
        EXPECT_EQ(c.size().width, size.width);
    }
}

TEST(CameraTest, ThePictureCannotBeLost) {
    for (auto const& size : {Size{1, 1}, Size{1, 5000}, Size{5000, 1}, Size{300, 200}, Size{9000, 7000}})
        for (double const zoom : {0.01, 0.3, 1.0, 7.0, 32.0})
            for (auto const& [right, down] : {Place{1e9, 1e9}, Place{-1e9, 1e9}, Place{1e9, -1e9}, Place{-1e9, -1e9}}) {
                Camera c = camera(size.width, size.height);
                c.magnifyTo(zoom, {3, 590});
                expectMiddleInPicture(c);
                c.pan(static_cast<std::int64_t>(right), static_cast<std::int64_t>(down));
                expectMiddleInPicture(c);
                c.zoomByQuarterOctaves(-3, {0, 0});
                expectMiddleInPicture(c);
                c.zoomByQuarterOctaves(3, {800, 600});
                expectMiddleInPicture(c);
            }
}

TEST(CameraTest, WhatWasInTheMiddleStaysThereWhenTheWindowGrows) {
    Camera c = camera(5000, 4000);
    c.magnifyTo(2, {100, 100});
    Place const before = c.pictureAt(c.middle());
    for (auto const& size : {Size{1001, 333}, Size{64, 2000}, Size{800, 600}}) {
        c.resize(size);
        EXPECT_EQ(c.pictureAt(c.middle()).x, before.x);
        EXPECT_EQ(c.pictureAt(c.middle()).y, before.y);
        EXPECT_EQ(c.view().width, size.width);
        EXPECT_EQ(c.view().height, size.height);
    }
}

TEST(CameraTest, AWholePictureIsFittedAgainUntilItIsMoved) {
    Camera c = camera(5000, 4000);
    c.resize({400, 300});
    EXPECT_TRUE(wholeIsSeen(c));
    c.resize({1600, 1200});
    EXPECT_TRUE(wholeIsSeen(c));
    EXPECT_GT(c.size().height, 1100u);
    c.pan(1, 0);
    double const zoom = c.zoom().value();
    c.resize({400, 300});
    EXPECT_EQ(c.zoom().value(), zoom);
}

TEST(CameraTest, AMinimisedWindowComesBackAsItWas) {
    Camera c = camera(5000, 4000, {801, 601});
    for (bool const moved : {false, true}) {
        if (moved) c.zoomByQuarterOctaves(5, {17, 300});
        View const before = c.view();
        c.resize({0, 0});
        EXPECT_EQ(c.view().width, 0u);
        c.resize({801, 601});
        EXPECT_EQ(c.view().x, before.x);
        EXPECT_EQ(c.view().y, before.y);
        EXPECT_EQ(c.view().zoom, before.zoom);
    }
}

TEST(CameraTest, AnEmptyFrameDoesNoHarm) {
    Camera c = camera(5000, 4000, {0, 0});
    c.pan(5, 5);
    c.zoomByQuarterOctaves(3, {0, 0});
    c.fit();
    c.lookAt({2000, 1000});
    c.resize({800, 600});
    expectMiddleInPicture(c);
}

TEST(CameraTest, PixelsAreThoseOfThePicture) {
    Camera c = camera(5000, 4000);
    c.magnifyTo(3, c.middle());
    c.lookAt({1000, 2000});
    EXPECT_EQ(c.pixelAt(c.middle()), (PicturePixel{1000, 2000}));
    EXPECT_EQ(c.pixelAt({c.middle().x + 3, c.middle().y - 1}), (PicturePixel{1001, 1999}));
    // At a fourth every sample stands for four pixels along each axis.
    c.magnifyTo(0.25, c.middle());
    auto const pixel = c.pixelAt({c.middle().x + 5, c.middle().y});
    ASSERT_TRUE(pixel);
    EXPECT_EQ(pixel->x % 4, 0u);
    EXPECT_NEAR(static_cast<double>(pixel->x), 1020, 4);
}

TEST(CameraTest, BesideThePictureThereIsNoPixel) {
    Camera c = camera(10, 10);
    c.magnifyTo(1, c.middle());
    c.lookAt({5, 5});
    EXPECT_TRUE(c.pixelAt({395, 295}));
    EXPECT_FALSE(c.pixelAt({394, 295}));
    EXPECT_FALSE(c.pixelAt({395, 294}));
    EXPECT_TRUE(c.pixelAt({404, 304}));
    EXPECT_FALSE(c.pixelAt({405, 304}));
    EXPECT_FALSE(c.pixelAt({404, 305}));
}

TEST(CameraTest, TheLastPixelIsWithinThePicture) {
    for (size_t const width : {1u, 2u, 3u, 1021u, 1023u, 1025u}) {
        Camera c = camera(width, 77, {90, 90});
        c.fit();
        View const view = c.view();
        for (size_t x = 0; x < c.size().width; ++x) {
            auto const pixel = c.pixelAt({static_cast<double>(static_cast<std::int64_t>(x) - view.x), 45});
            ASSERT_TRUE(pixel);
            EXPECT_LT(pixel->x, width);
        }
    }
}

TEST(CameraTest, AFrameOfOnePixelShowsTheWholePictureToo) {
    for (Size const& frame : {Size{1, 200}, Size{200, 1}, Size{1, 1}}) {
        Camera c = camera(4000, 3000, {900, 700});
        c.resize(frame);
        Camera const fresh = camera(4000, 3000, frame);
        EXPECT_TRUE(c.zoom() == fresh.zoom()) << c.zoom().value();
        EXPECT_EQ(c.view().x, fresh.view().x);
        EXPECT_EQ(c.view().y, fresh.view().y);
    }
}

TEST(PicturePixelTest, WithoutANumberItIsTheFirst) {
    EXPECT_TRUE((PicturePixel{} == PicturePixel{0, 0}));
}
